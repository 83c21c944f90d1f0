// Findings that come again and again, told once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apart.h"

namespace conformance {

/// What was found, and where: in a row's frames, with a fault.
struct Placed {
    Finding finding;
    std::string place;  ///< empty: none is told
};

/// The same finding of several places once, in the order of the first ones, with their number and
/// the first place: "text (once, in PLACE)", "text (3 times, first in PLACE)".
std::vector<Finding> counted(const std::vector<Placed>& found, std::string_view preposition);

}  // namespace conformance
