// The growable byte buffer and the typed array over it.
#pragma once

#include <base/words.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

/// Untyped growable bytes from the C allocator. Grows by doubling, from 32 bytes on, so that
/// appending is amortised constant time.
class ByteArray {
public:
    ByteArray() = default;
    /// Copies the bytes in use; the copy's capacity is its length.
    ByteArray(const ByteArray& other);
    ByteArray& operator=(const ByteArray&) = delete;
    ~ByteArray();

    /// Sets all three members to zero without freeing anything.
    void init();

    /// Address of byte `index`; no bounds check.
    char* operator[](sword index) const { return data_ + index; }
    /// Bytes in use.
    uword len() const { return length_; }
    /// Bytes allocated.
    uword capacity() const { return capacity_; }

    /// Makes the length `n`, growing the block when it is too small. New bytes are not cleared.
    /// Throws `StrXception` "out of memory (...)" and leaves the array as it was.
    void grow_to(uword n) {
        if (capacity_ < n) {
            grow_to_ool(n);
        }
        length_ = n;
    }
    void grow_by(uword n) { grow_to(length_ + n); }
    /// The growth step itself: at least 32 bytes, then doubling until `n` fits. Keeps the length.
    void grow_to_ool(uword n);
    /// Drops the last `n` bytes; the caller sees to it that there are as many.
    void shrink_by(uword n) { length_ -= n; }
    /// Gives back what is allocated beyond the length.
    void trim();
    /// Makes the capacity `n` (0 frees the block). The present capacity is a warning and no change.
    /// Throws `StrXception` "out of memory (...)" and leaves the array as it was.
    void realloc(uword n);

private:
    char* data_ = nullptr;
    uword capacity_ = 0;
    uword length_ = 0;
};

/// Typed elements back to back in one `ByteArray`.
///
/// Elements are moved bitwise when the block grows: only types that survive that may be stored
/// (`String`, plain records, matrices). Not copyable.
template <class T>
class Array {
public:
    Array() = default;
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() noexcept(std::is_nothrow_destructible_v<T>) { clear(); }

    /// Elements stored.
    uword len() const { return bytes_.len() / sizeof(T); }
    bool empty() const { return bytes_.len() == 0; }

    /// Element `index`; no bounds check.
    T& operator[](uword index) { return *at(index); }
    const T& operator[](uword index) const { return *at(index); }
    /// The last element; there must be one.
    T* last() { return at(len() - 1); }
    const T* last() const { return at(len() - 1); }

    /// Makes room for `n` elements more, as raw bytes that the caller constructs in place, and
    /// returns the address of the last one (null when there is none). The length grows at once.
    T* reserve(uword n) {
        bytes_.grow_by(n * sizeof(T));
        return empty() ? nullptr : last();
    }
    /// One raw element more.
    T* _append() { return reserve(1); }
    /// One default-constructed element more; the fields of a plain record are 0.
    T* append() {
        return append_made([](void* place) { return new (place) T(); });
    }
    /// A copy of `value` more, made in its place; `value` may be an element of this array. When the
    /// copy throws, the array stays as it was.
    T* append(const T& value) {
        // An element of this array moves with the block when that grows; its offset stays.
        const auto offset =
            reinterpret_cast<std::uintptr_t>(&value) - reinterpret_cast<std::uintptr_t>(bytes_[0]);
        const bool own = offset < bytes_.len();
        return append_made([&](void* place) {
            const void* source =
                own ? bytes_[static_cast<sword>(offset)] : static_cast<const void*>(&value);
            return new (place) T(*static_cast<const T*>(source));
        });
    }

    /// Destroys the last element; there must be one. Memory is kept.
    void shrink() {
        T* element = last();
        // Out of the array before its destructor runs, which may throw.
        bytes_.shrink_by(sizeof(T));
        element->~T();
    }
    /// Destroys all elements, the last one first. The capacity is kept.
    void clear() {
        while (!empty()) {
            shrink();
        }
    }
    /// Bytes allocated.
    uword capacity() const { return bytes_.capacity(); }

private:
    T* at(uword index) const {
        static_assert(alignof(T) <= alignof(std::max_align_t), "the C allocator's alignment");
        return static_cast<T*>(static_cast<void*>(bytes_[static_cast<sword>(index * sizeof(T))]));
    }

    template <class Make>
    T* append_made(Make make) {
        void* place = _append();
        try {
            return make(place);
        } catch (...) {
            bytes_.shrink_by(sizeof(T));
            throw;
        }
    }

    ByteArray bytes_;
};
