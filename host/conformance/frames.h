// What is looked at in a frame.
#pragma once

#include <host/frame.h>

#include <cstddef>
#include <string>
#include <vector>

#include "apart.h"

namespace conformance {

struct Declared;
struct FrameKind;

/// Whether a frame has to be drawn.
enum class Drawing { Whole, WholeOrNone, NotAsked };

/// What an effect owes for a kind of frame.
Drawing due(const FrameKind& kind, const Declared& declared);

/// Finds what is wrong with a frame for which nothing failed, told behind `where`, and says how it
/// came back. What it broke stands with its session.
void inspect(const host::Frame& frame, Drawing drawing, Notes& notes,
             const std::string& where = {});

/// The bytes of all pixels, row by row, without padding.
std::vector<std::byte> pixels(const host::Frame& frame);

/// "status 516: its message".
std::string status_text(const host::Frame& frame);

}  // namespace conformance
