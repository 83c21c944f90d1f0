#include "number_list.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "failure.h"

namespace lumivar {

std::vector<double> parse_number_list(const std::string& option, const std::string& text,
                                      std::size_t count, const std::string& names) {
    std::vector<double> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    bool whole = false;
    while (!whole && numbers.size() < count) {
        double number = 0.0;
        const auto [behind, error] = std::from_chars(at, end, number);
        if (error != std::errc() || !std::isfinite(number)) {
            break;
        }
        numbers.push_back(number);
        whole = behind == end;
        if (!whole && *behind != ',') {
            break;
        }
        at = behind + 1;
    }
    if (!whole || numbers.size() != count) {
        throw UsageError(option + " takes " + std::to_string(count) + " numbers, " + names +
                         ", not \"" + text + "\"");
    }
    return numbers;
}

}  // namespace lumivar
