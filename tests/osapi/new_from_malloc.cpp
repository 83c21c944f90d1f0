// `new` takes from the C allocator, so that a failing one reaches it too. In a file of its own: the
// compiler must not see both halves of a pair at once, as it would take them for a mismatch.
#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
    void* block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
