// Allocators of C and C++ that refuse on request.
//
// Works under the sanitizers too: the linker leads the calls of `malloc`, `calloc`, `realloc` and
// `operator new` in the test program's own objects and static libraries here (shared libraries keep
// theirs, so that of `operator new` itself is not touched), and granted requests go on to the real
// allocator.
#pragma once

#include <cstddef>
#include <vector>

/// While it lives, requests to the C allocator are recorded and those beyond a limit get null;
/// those of `operator new` throw. One at a time.
class FailingAllocator {
public:
    /// Refuses nothing yet.
    FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;
    /// Everything is granted again.
    ~FailingAllocator();

    /// Refuses requests of more than `largest` bytes from now on, but for the first `granted` ones.
    void refuse_above(std::size_t largest, unsigned int granted = 0);
    /// Grants `count` more requests within the limit and refuses those that follow.
    void refuse_after(unsigned int count);
    /// Lets `count` more calls of `operator new` pass and throws `std::bad_alloc` from those that
    /// follow. The C allocator is not touched.
    void refuse_new_after(unsigned int count);
    /// Grants everything from now on.
    void grant_all();

    /// The sizes requested since construction, refused ones included, at most the first 256.
    std::vector<std::size_t> requests() const;
};
