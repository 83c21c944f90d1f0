// Suggestions for mistyped names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The candidate with the fewest letters to change, upper and lower case alike; nothing when more
/// than half of the name would have to change: that is no typing error.
std::optional<std::string> nearest(std::string_view name,
                                   const std::vector<std::string>& candidates);

}  // namespace host
