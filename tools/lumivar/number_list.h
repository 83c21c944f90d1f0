// Numbers that belong together in one argument: "83.6,22.0,5".
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace lumivar {

/// The numbers of `text`, `count` of them, between commas. `names` is what they are, as the usage
/// shows it: "RA,DEC,RADIUS". Throws `UsageError`, which names `option`.
std::vector<double> parse_number_list(const std::string& option, const std::string& text,
                                      std::size_t count, const std::string& names);

}  // namespace lumivar
