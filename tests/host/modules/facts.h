// What the test effect was told by its host, for its float frames to tell.
#pragma once

#include <host_api/effect_interface.h>

#include <array>

#include "test_effect.h"

namespace test_effect {

using Facts = std::array<double, kFactEnd>;

/// Time, sizes and scales, and what of the host's tables is null.
void tell_in_data(const PF_InData* in, Facts& facts);
/// The camera and the shutter, where the host has the suites for them.
PF_Err read_camera(PF_InData* in, Facts& facts);

}  // namespace test_effect
