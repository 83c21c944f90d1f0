// Which kernels run on this machine.
#pragma once

#include "kernels.h"

namespace star_kernels {

/// The sets in this build, the widest first, a null after the last. On processors that no set is
/// for there is none, and the plain path draws everything.
const Kernels* const* built();
/// Whether this machine has the instructions.
bool runs_here(const Kernels& kernels);

/// The set in use: the widest that runs here, unless `use` chose another. Null if there is none.
const Kernels* in_use();
/// The set that draws and converts: `in_use` on the fast path, null on the plain one.
const Kernels* of_draw_path();
/// Chooses a set that runs here, for tests and benchmarks; null goes back to the widest. All give
/// the same bits. Not while a frame is drawn.
void use(const Kernels* kernels);

}  // namespace star_kernels
