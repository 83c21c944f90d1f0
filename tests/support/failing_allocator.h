// A C allocator that refuses on request.
//
// Works under the sanitizers too: the linker leads the calls of `malloc`, `calloc` and `realloc` in
// the test program's own objects and static libraries here (shared libraries keep theirs, so
// `operator new` is not touched), and granted requests go on to the real allocator.
#pragma once

#include <cstddef>
#include <vector>

/// While it lives, requests are recorded and those beyond a limit get null. One at a time.
class FailingAllocator {
public:
    /// Refuses nothing yet.
    FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;
    /// Everything is granted again.
    ~FailingAllocator();

    /// Refuses requests of more than `largest` bytes from now on.
    void refuse_above(std::size_t largest);
    /// Grants `count` more requests within the limit and refuses those that follow.
    void refuse_after(unsigned int count);
    /// Grants everything from now on.
    void grant_all();

    /// The sizes requested since construction, refused ones included, at most the first 256.
    std::vector<std::size_t> requests() const;
};
