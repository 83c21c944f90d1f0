#include "bytes.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace macho {
namespace {

// Both processors of the files that are read here write numbers the way this reads them.
static_assert(std::endian::native == std::endian::little);

template <class Number>
Number number(const std::uint8_t* from) {
    Number value = 0;
    std::memcpy(&value, from, sizeof value);
    return value;
}

}  // namespace

const std::uint8_t* Bytes::at(std::uint64_t offset, std::uint64_t size) const {
    if (offset > size_ || size > size_ - offset) {
        fail(std::to_string(size) + " bytes at " + std::to_string(offset) + " of " +
             std::to_string(size_) + " are beyond the end");
    }
    return data_ + offset;
}

Bytes Bytes::part(std::uint64_t offset, std::uint64_t size, const std::string& what) const {
    const std::string place = place_ + ": " + what;
    return {Bytes(data_, size_, place).at(offset, size), size, place};
}

std::uint16_t Bytes::u16(std::uint64_t offset) const {
    return number<std::uint16_t>(at(offset, 2));
}
std::uint32_t Bytes::u32(std::uint64_t offset) const {
    return number<std::uint32_t>(at(offset, 4));
}
std::uint64_t Bytes::u64(std::uint64_t offset) const {
    return number<std::uint64_t>(at(offset, 8));
}

std::uint32_t Bytes::big_u32(std::uint64_t offset) const { return __builtin_bswap32(u32(offset)); }

std::string Bytes::text(std::uint64_t offset) const {
    at(offset, 1);
    const auto* end = std::find(data_ + offset, data_ + size_, 0);
    if (end == data_ + size_) {
        fail("the text at " + std::to_string(offset) + " has no end");
    }
    return {data_ + offset, end};
}

std::string Bytes::name(std::uint64_t offset, std::uint64_t length) const {
    const std::uint8_t* const begin = at(offset, length);
    return {begin, std::find(begin, begin + length, 0)};
}

std::uint32_t Cursor::u32() {
    const std::uint32_t value = bytes_.u32(next_);
    next_ += 4;
    return value;
}

std::uint64_t Cursor::u64() {
    const std::uint64_t value = bytes_.u64(next_);
    next_ += 8;
    return value;
}

std::uint64_t Cursor::uleb() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        if (shift > 63) {
            fail("a number has more than 64 bits");
        }
        const std::uint64_t byte = u8();
        value |= (byte & 0x7F) << shift;
        if ((byte & 0x80) == 0) {
            return value;
        }
    }
}

std::int64_t Cursor::sleb() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;;) {
        if (shift > 63) {
            fail("a number has more than 64 bits");
        }
        const std::uint64_t byte = u8();
        value |= (byte & 0x7F) << shift;
        shift += 7;
        if ((byte & 0x80) == 0) {
            if ((byte & 0x40) != 0 && shift < 64) {
                value |= ~std::uint64_t{0} << shift;
            }
            return static_cast<std::int64_t>(value);
        }
    }
}

std::string Cursor::text() {
    std::string text = bytes_.text(next_);
    next_ += text.size() + 1;
    return text;
}

void Cursor::fail(const std::string& why) const {
    bytes_.fail("at " + std::to_string(next_) + " " + why);
}

}  // namespace macho
