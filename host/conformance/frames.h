// What is looked at in a frame.
#pragma once

#include <host/frame.h>

#include "apart.h"

namespace conformance {

/// Whether a frame has to be drawn.
enum class Drawing { Whole, WholeOrNone, NotAsked };

/// Finds what is wrong with a frame for which nothing failed, and says how it came back. What it
/// broke stands with its session.
void inspect(const host::Frame& frame, Drawing drawing, Notes& notes);

/// "status 516: its message".
std::string status_text(const host::Frame& frame);

}  // namespace conformance
