// The pixel format of a frame.
#pragma once

#include <host/pixel_format.h>

#include "host_state.h"

namespace host {

/// The format of a frame's worlds at a depth. Throws `FrameError` when effect or application draw
/// no such frames.
PixelFormat asked_format(const HostState& state, const EffectInfo& info, bool smart, Depth depth);

}  // namespace host
