// Which pointers of an image the system's loader sets, and what the image exports.
#pragma once

#include "macho_file.h"

namespace macho {

/// Reads what the load command points to into `rebases`, `binds`, `lazy_binds` and `exports`. The
/// segments must be known.
void read_dyld_info(const Bytes& command, Image& image);

}  // namespace macho
