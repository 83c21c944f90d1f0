// The smallest sky with something to see: one star straight ahead of the effect's own camera.
#pragma once

#include <support/catalogue.h>

#include <string>
#include <vector>

using Log = std::vector<std::string>;

inline constexpr int kWidth = 33;
inline constexpr int kHeight = 17;
inline const std::string kHeader = support::catalogue_header(support::kVersion1);
// That camera stands at the origin and looks along +z, where lon is 90 degrees.
inline const std::string kAhead = support::catalogue_record({.lon = 90, .lat = 0});
