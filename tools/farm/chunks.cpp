#include "chunks.h"

#include <algorithm>

namespace lumivar {

std::vector<std::vector<int>> chunks_of(const std::vector<int>& frames, std::size_t size) {
    std::vector<std::vector<int>> chunks;
    chunks.reserve(frames.size() / size + 1);
    for (std::size_t at = 0; at < frames.size(); at += size) {
        const auto first = frames.begin() + static_cast<std::ptrdiff_t>(at);
        const std::size_t count = std::min(size, frames.size() - at);
        chunks.emplace_back(first, first + static_cast<std::ptrdiff_t>(count));
    }
    return chunks;
}

}  // namespace lumivar
