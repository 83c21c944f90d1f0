#include "star_resolver.h"

#include <host/nearest.h>

#include <optional>
#include <vector>

#include "astronomy/star_names.h"

namespace lumivar {

host::StarAnswer resolve_star(const std::string& name) {
    host::StarAnswer answer;
    if (const NamedStar* const star = find_star(name)) {
        answer.place = {star->ra, star->dec, std::nullopt};
        if (star->distance > 0.0) {
            answer.place->distance = star->distance;
        }
        return answer;
    }
    std::vector<std::string> names;
    for (const NamedStar& star : named_stars()) {
        if (*star.name != '\0') {
            names.emplace_back(star.name);
        }
    }
    answer.nearest = host::nearest(name, names);
    return answer;
}

}  // namespace lumivar
