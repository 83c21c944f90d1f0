// Named, typed values that travel with an image, and the one-line text that carries them in a
// file's header:
//
//     KELVMETA1 float:gain=0.5 string:title="Winter sky" m44f:camera="1.000000000e+00 0.0000..."
//
// A value is a `float`, a `String` or a `Matrix4<float>`; its type word is "float", "string" or
// "m44f". Names are interned, so the order of a record is that of its names' addresses: it differs
// from one run to the next, and so does the text.
//
// The calls hand the type word over beside the value, as it stands in files; a word that is not the
// value's own is an `AssertXception`.
#pragma once

#include <base/instring.h>
#include <base/newmatrix.h>
#include <base/scoped_ptr.h>
#include <base/string.h>
#include <base/words.h>
#include <libkelvimage/image.h>

namespace Kelv {

/// One value of a record, of any type. The order of the virtual functions is fixed.
class MetaInfo {
public:
    /// The type word.
    virtual const char* type_str() const = 0;
    /// The type code.
    virtual int type() const = 0;
    /// A copy, position included, that the caller owns.
    virtual MetaInfo* copy() const = 0;
    /// The text form of the value.
    virtual String stringify() const = 0;
    virtual ~MetaInfo() = default;

    /// Where in its file the value was written; 0: never written.
    s64 position = 0;

protected:
    MetaInfo() = default;
    MetaInfo(const MetaInfo&) = default;
    MetaInfo& operator=(const MetaInfo&) = default;
};

/// Type code, type word and text form of the three types.
template <class T>
struct MetaTraits;

template <>
struct MetaTraits<float> {
    static constexpr int code = 0;
    static constexpr const char* word = "float";
    /// Six significant digits.
    static String text(const float& value);
};

template <>
struct MetaTraits<String> {
    static constexpr int code = 1;
    static constexpr const char* word = "string";
    /// As it is; with a blank in it, in double quotes with a backslash before each inner one.
    static String text(const String& value);
};

template <>
struct MetaTraits<Matrix4<float>> {
    static constexpr int code = 2;
    static constexpr const char* word = "m44f";
    /// Sixteen numbers in double quotes, row 0 first, with every digit of a float.
    static String text(const Matrix4<float>& value);
};

/// A value of type `T`.
template <MetaValue T>
class TypedInfo : public MetaInfo {
public:
    explicit TypedInfo(const T& v) : value(v) {}

    const char* type_str() const override { return MetaTraits<T>::word; }
    int type() const override { return MetaTraits<T>::code; }
    MetaInfo* copy() const override { return new TypedInfo(*this); }
    String stringify() const override { return MetaTraits<T>::text(value); }

    T value;
};

/// A new value that the caller owns. Asserts that `type` is the type word of `T`.
template <MetaValue T>
TypedInfo<T>* new_MetaInfo(const char* type, const T& value);

/// Owns one value; a copy owns a copy of it.
class MetaInfoRef {
public:
    /// Takes ownership of `info`, which must not be null.
    explicit MetaInfoRef(MetaInfo* info) : info_(info) {}
    MetaInfoRef(const MetaInfoRef& other) : info_(other->copy()) {}
    // The copy is made before the old value goes.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    MetaInfoRef& operator=(const MetaInfoRef& other) {
        info_.reset(other->copy());
        return *this;
    }

    MetaInfo* get() const { return info_.get(); }
    MetaInfo* operator->() const { return info_.get(); }
    MetaInfo& operator*() const { return *info_; }

private:
    scoped_ptr<MetaInfo> info_;
};

/// What a walk over a record calls, by the type of each value. `position` is the value's own, for a
/// writer to note where in the file the value went. The order of the functions is fixed.
class ImageSpec::MetaVisitor {
public:
    virtual void float_meta(const char* type, const char* name, float value, s64& position) = 0;
    virtual void string_meta(const char* type, const char* name, const String& value,
                             s64& position) = 0;
    virtual void matrix_meta(const char* type, const char* name, const Matrix4<float>& value,
                             s64& position) = 0;

protected:
    // Not virtual, since the table holds the three functions alone. Nobody deletes a visitor by a
    // pointer to this class.
    ~MetaVisitor() = default;
};

/// The record of an image. Each name is in it at most once.
class ImageSpec::MetaData : public StringMap<MetaInfoRef> {
public:
    MetaData();
    /// Copies every value, position included.
    MetaData(const MetaData& other);
    MetaData& operator=(const MetaData&) = delete;

    /// Adds a value or replaces that of the same name. Throws `StrXception` when the name is there
    /// with another type ("metadata tag 'NAME' already present ...") or when its value has been
    /// written to a file, where it would go stale ("no updates allowed after writing to file, use
    /// update_meta").
    template <MetaValue T>
    void set_meta(const char* type, const char* name, const T& value);
    /// Replaces a value that has been written to a file and returns its position there, for the
    /// caller to write it again in place. Throws `StrXception` when there is no such name, when it
    /// was never written, or when its type is another.
    template <MetaValue T>
    s64 update_meta(const char* type, const char* name, const T& value);
    /// 0 and the value; or 1 when there is no such name; or 2, with a warning on standard error,
    /// when its type is another. `value` is untouched unless the result is 0.
    template <MetaValue T>
    int get_meta(const char* type, const char* name, T& value) const;

    /// Calls `visitor` for each value in the order of the record. Throws `StrXception` "unhandled
    /// type 'WORD'" for a type code other than the three.
    void for_each_meta(MetaVisitor& visitor) const;

    /// The record as one line without a line feed. Throws `StrXception` "can't handle quoting yet"
    /// for a name with a blank or "=" in it.
    ///
    /// `from_string` reads the record back, save for what the form does not carry. It stays as it
    /// is, since files have it:
    /// - a float keeps six significant digits; a NaN of any kind becomes just a NaN;
    /// - a string with a blank loses its backslashes, each of which also shields the character
    ///   after it: at the end of the string that is the closing quote;
    /// - a string without a blank that begins with a double quote is taken for a quoted one;
    /// - an empty string at the end of the line counts as missing.
    ///
    /// The decimal point is that of the C library's locale, which is not touched.
    String stringify() const;
    /// Sets the values of a text that `stringify` made. Those in front of a fault are kept. A text
    /// that ends within a name is taken for truncated: a warning on standard error, no exception.
    /// Throws as `set_meta`; `StrXception` for a text without the magic word, and for values that
    /// are missing, unterminated, incomplete or of unknown type; `AssertXception` where a delimiter
    /// is not in its place.
    void from_string(const char* text);
    /// Whether `text` begins as a record's text does.
    static bool string_valid(const char* text);

    /// Same names with the same types and values, in any order. Positions do not count: they belong
    /// to a file. A NaN equals a NaN, so that a copy always equals its source.
    bool operator==(const MetaData& other) const;
    bool operator!=(const MetaData& other) const { return !(*this == other); }

private:
    MetaInfo* find(const char* name) const;
};

}  // namespace Kelv
