#include <base/array.h>
#include <base/exceptions.h>

#include <cinttypes>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uword kFirstCapacity = 32;

}  // namespace

ByteArray::ByteArray(const ByteArray& other) {
    if (other.length_ != 0) {
        realloc(other.length_);
        length_ = other.length_;
        std::memcpy(data_, other.data_, length_);
    }
}

ByteArray::~ByteArray() { std::free(data_); }

void ByteArray::init() {
    data_ = nullptr;
    capacity_ = 0;
    length_ = 0;
}

void ByteArray::grow_to_ool(uword n) {
    uword capacity = capacity_;
    if (capacity == 0) {
        capacity = n > kFirstCapacity ? n : kFirstCapacity;
    } else {
        while (capacity < n) {
            // Past the last power of two the doubling would wrap to 0 and never end.
            capacity = capacity > static_cast<uword>(-1) / 2 ? n : capacity * 2;
        }
    }
    realloc(capacity);
}

void ByteArray::trim() {
    if (length_ < capacity_) {
        realloc(length_);
    }
}

void ByteArray::realloc(uword n) {
    if (n == capacity_) {
        Xception::warning("void ByteArray::realloc(uword)", "spurious realloc");
        return;
    }
    if (n == 0) {
        std::free(data_);
        data_ = nullptr;
        capacity_ = 0;
        return;
    }
    char* block = static_cast<char*>(std::realloc(data_, n));
    if (block == nullptr) {
        XTHROW("out of memory (current size %" PRIuPTR " bytes, failed allocation of %" PRIuPTR
               " bytes)",
               capacity_, n);
    }
    data_ = block;
    capacity_ = n;
}
