#include "handle_pool.h"

#include <algorithm>
#include <limits>
#include <new>

namespace host {

void HandlePool::allocate(Block& block, A_HandleSize size) {
    if (size > static_cast<A_HandleSize>(std::numeric_limits<std::ptrdiff_t>::max())) {
        throw std::bad_alloc();
    }
    const std::size_t bytes = static_cast<std::size_t>(size);
    auto grown = std::make_unique<char[]>(std::max<std::size_t>(bytes, 1));
    std::copy_n(block.data, std::min(block.size, bytes), grown.get());
    block.bytes = std::move(grown);
    block.data = block.bytes.get();
    block.size = bytes;
}

PF_Handle HandlePool::create(A_HandleSize size) {
    auto block = std::make_unique<Block>();
    allocate(*block, size);
    const PF_Handle handle = &block->data;
    blocks_.emplace(handle, std::move(block));
    return handle;
}

void HandlePool::resize(PF_Handle handle, A_HandleSize size) {
    allocate(*blocks_.at(handle), size);
}

}  // namespace host
