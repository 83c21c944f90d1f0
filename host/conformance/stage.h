// The small project that the effect is played.
#pragma once

#include <host/frame.h>
#include <host/project.h>
#include <host/scene.h>

#include <cstddef>
#include <vector>

namespace conformance {

/// A few thousand pixels under a camera that pans, motion blur on: a frame asks for all that an
/// effect may want to know.
host::Scene pan_scene();

/// Any frame of it but the first.
inline constexpr int kFrame = 5;

/// The bytes of all pixels, row by row, without padding.
std::vector<std::byte> pixels(const host::Frame& frame);

}  // namespace conformance
