// A shot's frames in pieces for the machines of a farm.
#pragma once

#include <cstddef>
#include <vector>

namespace lumivar {

/// Frames in their order, `size` in each chunk but the last, which has the rest. `size` is 1 or
/// more.
std::vector<std::vector<int>> chunks_of(const std::vector<int>& frames, std::size_t size);

}  // namespace lumivar
