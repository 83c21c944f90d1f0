// The rows of the rules that hold in every frame.
#pragma once

#include <vector>

#include "apart.h"
#include "frame_plays.h"

namespace conformance {

class Examination;
struct Rule;

// What a row's probe keeps for them: at the end, where all that its frames broke is told, and how
// many layers its frames left to the host.
inline constexpr char kCameToItsEnd[] = "came to its end";
inline constexpr char kLayersLeft[] = "layers left";

/// A frames' row and what was heard of it.
struct Played {
    FrameRow row;
    Heard heard;
};

/// Enters the row of a rule, with all that broke it in these rows, or leaves it out.
void enter_rule(Examination& run, const Rule& rule, const std::vector<Played>& frames);

}  // namespace conformance
