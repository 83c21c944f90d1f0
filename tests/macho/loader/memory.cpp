#include "memory.h"

#include <sys/mman.h>

#include <cerrno>
#include <system_error>

namespace loader {

Memory::Memory(std::size_t size) : begin_(nullptr), size_(size) {
    void* const mapped =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category(), "no memory for the image");
    }
    begin_ = static_cast<std::uint8_t*>(mapped);
}

Memory::~Memory() { munmap(begin_, size_); }

void Memory::protect(std::size_t offset, std::size_t size, int protection) {
    if (mprotect(begin_ + offset, size, protection) != 0) {
        throw std::system_error(errno, std::generic_category(), "no protection of the image");
    }
    if ((protection & PROT_EXEC) != 0) {
        __builtin___clear_cache(reinterpret_cast<char*>(begin_ + offset),
                                reinterpret_cast<char*>(begin_ + offset + size));
    }
}

}  // namespace loader
