#include "star_file_check.h"

#include <host/star_file.h>

#include "failure.h"

namespace lumivar {

int star_file_version(const std::filesystem::path& path) {
    const host::StarFile found = host::look_at_star_file(path);
    if (found.version == 0) {
        throw Failure(found.problem);
    }
    return found.version;
}

}  // namespace lumivar
