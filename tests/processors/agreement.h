// Whether two processors draw the same frames. Their mathematics libraries may round last bits
// differently, and a short segment magnifies that: two error functions nearly cancel there.
#pragma once

#include <string>
#include <vector>

#include "frame_file.h"

namespace processors {

/// Largest difference of a light value, as a share of the frame's largest: never below the first;
/// for short segments the second divided by the length in pixels.
inline constexpr double kLightShare = 1e-6;
inline constexpr double kShortSegmentShare = 6e-7;
/// The share of all codes, of both depths, that may be another, by one at most.
inline constexpr double kOtherCodes = 1e-5;
/// Codes between black and full of each depth that there must be for the share to mean something.
inline constexpr int kTellingCodes = 200'000;

struct NamedFrame {
    std::string name;
    FrameFile frame;
};

struct Agreement {
    bool passed = false;
    std::vector<std::string> report;  ///< a line for each frame, the others for the codes
};

/// Judges the frames one by one for their light, and together for the codes of both depths.
/// Names must be the same in the same order, and there must be some.
Agreement compare_frames(const std::vector<NamedFrame>& actual,
                         const std::vector<NamedFrame>& expected);

}  // namespace processors
