// Single-owner holders: one object, one owner, freed on every way out.
#pragma once

#include <base/words.h>

/// Owns one object made with `new`, or nothing. Not copyable: ownership is single.
///
/// The destructor lets the object's own destructor throw: mappings and descriptors report a failed
/// release that way.
template <class T>
class scoped_ptr {
public:
    scoped_ptr() = default;
    /// Takes ownership of `object` (which may be null).
    explicit scoped_ptr(T* object) : object_(object) {}
    scoped_ptr(const scoped_ptr&) = delete;
    scoped_ptr& operator=(const scoped_ptr&) = delete;
    ~scoped_ptr() noexcept(false) { delete object_; }

    /// Deletes the object held and takes ownership of `object`. The new object is in place before
    /// the old one dies, so a throwing destructor leaves the holder sound.
    void reset(T* object = nullptr) {
        if (object == object_) {
            return;
        }
        T* old = object_;
        object_ = object;
        delete old;
    }

    /// The object, still owned by the holder; null when there is none.
    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

/// Owns one array made with `new[]`, or nothing. Not copyable: ownership is single. The destructor
/// lets those of the elements throw.
template <class T>
class scoped_array {
public:
    scoped_array() = default;
    /// Takes ownership of `array` (which may be null).
    explicit scoped_array(T* array) : array_(array) {}
    scoped_array(const scoped_array&) = delete;
    scoped_array& operator=(const scoped_array&) = delete;
    ~scoped_array() noexcept(false) { delete[] array_; }

    /// Deletes the array held and takes ownership of `array`.
    void reset(T* array = nullptr) {
        if (array == array_) {
            return;
        }
        T* old = array_;
        array_ = array;
        delete[] old;
    }

    /// The first element, still owned by the holder; null when there is no array.
    T* get() const { return array_; }
    T* operator->() const { return array_; }
    T& operator*() const { return *array_; }
    /// Element `index`; no bounds check.
    T& operator[](uword index) const { return array_[index]; }
    explicit operator bool() const { return array_ != nullptr; }

private:
    T* array_ = nullptr;
};
