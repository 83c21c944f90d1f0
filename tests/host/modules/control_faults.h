// What the test effect breaks in its controls when asked to, and those that it declares besides.
#pragma once

#include <host_api/effect_interface.h>

#include <vector>

namespace test_effect {

/// Breaks the one thing, if it is this control's.
void spoil_control(PF_ParamDef& control);

/// To be declared behind the others.
std::vector<PF_ParamDef> further_controls();

}  // namespace test_effect
