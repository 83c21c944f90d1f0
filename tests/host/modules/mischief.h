// What the environment asks of the test effect built with CONFORMING, and the losses that it makes.
#pragma once

#include <host_api/effect_interface.h>

#include "test_effect.h"

namespace test_effect {

#ifdef CONFORMING
inline constexpr bool kConforming = true;
#else
inline constexpr bool kConforming = false;
#endif

/// For all commands; `kNone` unless it conforms but for this.
Mischief asked_mischief();

/// The first error is passed on; unless it conforms, the effect does not care.
void pass_on(PF_Err& err, PF_Err next);

// For good, and so that the compiler keeps them.
void lose_memory();
void lose_descriptor();
void lose_mapping();
void stay_loaded();
/// Makes a process that does not end for a while, in a session of its own if wished.
void leave_process(bool own_session);

}  // namespace test_effect
