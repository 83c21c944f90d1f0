#include "tables/number.h"

#include <algorithm>
#include <array>

namespace lumivar {

bool is_missing(std::string_view text) {
    constexpr std::array<std::string_view, 10> kWords = {"",    "null", "NULL", "nan", "NaN",
                                                         "NAN", "--",   "\\N",  "N/A", "None"};
    return std::find(kWords.begin(), kWords.end(), text) != kWords.end();
}

}  // namespace lumivar
