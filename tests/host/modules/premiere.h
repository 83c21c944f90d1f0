// What the test effect does in Premiere Pro alone.
#pragma once

#include <host_api/effect_interface.h>

namespace test_effect {

void declare_premiere_formats(PF_InData* in);

/// Fills the output, or does what the mischief has for its pixels.
PF_Err premiere_render(PF_InData* in, PF_EffectWorld* output, const PF_Pixel& colour);

}  // namespace test_effect
