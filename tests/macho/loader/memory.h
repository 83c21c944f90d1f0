// Pages of the process, given back when their owner goes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace loader {

class Memory {
public:
    /// Zeros, to be read and written. Throws `std::system_error`.
    explicit Memory(std::size_t size);
    ~Memory();
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    std::uint8_t* begin() const { return begin_; }
    std::size_t size() const { return size_; }
    /// `protection` as for mmap; an executable range may be called from now on.
    void protect(std::size_t offset, std::size_t size, int protection);

private:
    std::uint8_t* begin_;
    std::size_t size_;
};

}  // namespace loader
