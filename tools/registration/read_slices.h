// The processors that the code of a module is for.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "processors.h"

namespace bundle {

/// A module holds its list of processors within so many bytes from its beginning.
inline constexpr std::size_t kModuleHead = 4096;

/// From the beginning of a module, `kModuleHead` bytes or all that there are: of each slice of a
/// Mach-O file for several processors, in the order of `kProcessors`, or the one of a plain Mach-O
/// or ELF file. Processors of other kinds are left out. Nothing when the bytes begin no such file.
std::optional<std::vector<const Processor*>> slices_of(std::string_view head);

}  // namespace bundle
