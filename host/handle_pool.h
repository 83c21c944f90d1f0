// Host handles: blocks of memory that the host owns and the plug-in holds by a double pointer.
#pragma once

#include <host_api/effect_interface.h>

#include <cstddef>
#include <map>
#include <memory>

namespace host {

class HandlePool {
public:
    /// A block of zeroes. Throws `std::bad_alloc`.
    PF_Handle create(A_HandleSize size);
    bool owns(PF_Handle handle) const { return blocks_.count(handle) != 0; }
    /// Of a handle that the pool owns.
    std::size_t size_of(PF_Handle handle) const { return blocks_.at(handle)->size; }
    /// Of a handle that the pool owns. The handle stays, the block may move. Throws
    /// `std::bad_alloc`.
    void resize(PF_Handle handle, A_HandleSize size);
    /// False when the pool does not own the handle.
    bool dispose(PF_Handle handle) { return blocks_.erase(handle) != 0; }
    std::size_t live() const { return blocks_.size(); }

private:
    struct Block {
        char* data = nullptr;  ///< a handle is this member's address
        std::size_t size = 0;
        std::unique_ptr<char[]> bytes;
    };
    static void allocate(Block& block, A_HandleSize size);

    std::map<PF_Handle, std::unique_ptr<Block>> blocks_;
};

}  // namespace host
