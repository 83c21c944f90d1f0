// Pages that go back to the system while their block is still in use.
#include <osapi/discarding.h>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace OSAPI {

#if defined(__linux__)
void discard(void* bytes, uword count) noexcept {
    const auto page = static_cast<std::uintptr_t>(getpagesize());
    // The pages at both ends may hold something else too: what the allocator notes, for one.
    const auto address = reinterpret_cast<std::uintptr_t>(bytes);
    const std::uintptr_t first = (address + page - 1) / page * page;
    const std::uintptr_t end = (address + count) / page * page;
    if (first < end) {
        // Advice alone: where it is refused, the pages go back when the block is freed.
        madvise(static_cast<char*>(bytes) + (first - address), end - first, MADV_DONTNEED);
    }
}
#else
void discard(void* /*bytes*/, uword /*count*/) noexcept {}
#endif

}  // namespace OSAPI
