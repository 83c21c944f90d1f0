// The small project that the effect is played.
#pragma once

#include <host/scene.h>

namespace conformance {

/// A few thousand pixels under a camera that pans, motion blur on: a frame asks for all that an
/// effect may want to know.
host::Scene pan_scene();

/// Any frame of it but the first.
inline constexpr int kFrame = 5;

}  // namespace conformance
