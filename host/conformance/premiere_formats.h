// What an effect declares to Premiere Pro to draw, and this host does not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace conformance {

/// "16-bit ARGB and float ARGB": those of the formats that are not drawn here, in their order;
/// empty when all are.
std::string formats_not_drawn(const std::vector<std::int32_t>& declared);

}  // namespace conformance
