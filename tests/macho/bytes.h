// Bytes of a file that may be malformed: every read is checked against their end.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace macho {

/// The file is not what it claims to be; the text names the file, the place in it and what is
/// wrong.
class FileError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A view; whoever made it keeps the bytes.
class Bytes {
public:
    /// `place` begins the text of every error.
    Bytes(const std::uint8_t* data, std::uint64_t size, std::string place)
        : data_(data), size_(size), place_(std::move(place)) {}

    std::uint64_t size() const { return size_; }
    /// `size` bytes from `offset` on, which errors call `what`.
    Bytes part(std::uint64_t offset, std::uint64_t size, const std::string& what) const;
    /// The address of `size` bytes from `offset` on.
    const std::uint8_t* at(std::uint64_t offset, std::uint64_t size) const;

    std::uint8_t u8(std::uint64_t offset) const { return *at(offset, 1); }
    std::uint16_t u16(std::uint64_t offset) const;
    std::uint32_t u32(std::uint64_t offset) const;
    std::uint64_t u64(std::uint64_t offset) const;
    std::uint32_t big_u32(std::uint64_t offset) const;
    /// Up to the zero byte, which must be there.
    std::string text(std::uint64_t offset) const;
    /// A name in a field of `length` bytes, filled up with zeros.
    std::string name(std::uint64_t offset, std::uint64_t length) const;

    [[noreturn]] void fail(const std::string& why) const { throw FileError(place_ + ": " + why); }

private:
    const std::uint8_t* data_;
    std::uint64_t size_;
    std::string place_;
};

/// Reads one value after the other.
class Cursor {
public:
    explicit Cursor(Bytes bytes, std::uint64_t from = 0) : bytes_(std::move(bytes)), next_(from) {}

    bool done() const { return next_ >= bytes_.size(); }
    std::uint64_t position() const { return next_; }
    std::uint8_t u8() { return bytes_.u8(next_++); }
    std::uint32_t u32();
    std::uint64_t u64();
    /// Numbers of seven bits a byte (LEB128).
    std::uint64_t uleb();
    std::int64_t sleb();
    std::string text();
    [[noreturn]] void fail(const std::string& why) const;

private:
    Bytes bytes_;
    std::uint64_t next_;
};

}  // namespace macho
