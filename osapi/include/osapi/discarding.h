// Giving memory back before the block it belongs to is freed.
#pragma once

#include <base/words.h>

namespace OSAPI {

/// Tells the system that nobody needs what is in these bytes of the heap: the whole pages among
/// them go back, and the bytes may be anything from now on. They stay the caller's and may be
/// written again; the block that they are part of is freed as ever.
///
/// Does nothing on systems other than Linux, whose advice on memory has another meaning or would
/// be one more thing that the plug-in asks of the system.
void discard(void* bytes, uword count) noexcept;

}  // namespace OSAPI
