// The text type: one owned heap buffer, printf-style construction that never truncates.
//
// One pointer a string: no small-string buffer, no shared buffers, no stored length. Every append
// reallocates. It serves names, paths and messages, never per-pixel or per-star loops.
#pragma once

#include <base/printf_format.h>

#include <cstdarg>

template <class T>
class Array;

/// Owned, NUL-terminated text. The null pointer is the canonical empty string.
///
/// A non-null but empty buffer can arise from `String('\0')`, from appending NUL and from
/// formatting that produces nothing. Such a string does not equal the null string (see
/// `operator==`): a contract, kept as it is.
class String {
public:
    /// What `find` and `findr` return when there is nothing to find.
    static constexpr unsigned int kNotFound = 0xFFFFFFFFU;

    String() = default;
    /// Copies `text`; null and "" both give the null string.
    String(const char* text);  // NOLINT(google-explicit-constructor): texts convert freely
    /// Copies at most `count` characters of `text`; a count of 0 gives the null string, and
    /// `text` may then be null.
    String(const char* text, unsigned int count);
    /// A two-byte block with the character and NUL, also for NUL itself.
    explicit String(char character);
    String(const String& other);
    /// Takes the buffer over as it is, even an empty one (a formatted result is handed out this
    /// way); `other` becomes the null string.
    String(String&& other) noexcept;
    ~String();

    /// Assignment of an empty text, however it is held, gives the null string. `text` may lie in
    /// this very string.
    String& operator=(const char* text);
    String& operator=(const String& other);
    /// Takes the buffer over unless it is empty; `other` becomes the null string.
    String& operator=(String&& other) noexcept;

    /// The text; an empty text for the null string. Never null. Valid until the string changes.
    const char* c_str() const;
    /// Characters before the NUL, counted anew at each call, truncated to 32 bits.
    unsigned int len() const;
    /// Frees the buffer: the null string.
    void clear();
    /// Frees the buffer and takes ownership of `buffer`, a block of the C allocator or null.
    void set_buf(char* buffer);

    /// Appends; `text` may lie in this very string. On a null string a text is assigned.
    String& operator+=(char character);
    String& operator+=(const char* text);
    String& operator+=(const String& text);

    /// Hash of the text modulo 2^32, bytes taken as signed; 0 for the null string. The constants
    /// are part of the design: they decide the chain that `InString::dump` shows a text in.
    unsigned int hash() const;

    /// Byte index of the first occurrence of a text or character, or `kNotFound`.
    unsigned int find(const char* text) const;
    unsigned int find(char character) const;
    /// Byte index of the last occurrence of a character, or `kNotFound`.
    unsigned int findr(char character) const;

    /// The C library's conversions of the text; 0 for the null string.
    int atoi() const;
    double atof() const;

    /// The characters before the first NUL, line feed or carriage return.
    static String chop(const char* text);
    static String chop(const String& text);

    /// Appends the non-empty pieces of `text` between blanks, tabs and line ends to `out`.
    static void split(const char* text, Array<String>& out);
    static void split(const String& text, Array<String>& out);
    /// The same with any set of delimiter characters. `out` is appended to, never cleared.
    static void split_by(const char* text, const char* delimiters, Array<String>& out);
    static void split_by(const String& text, const char* delimiters, Array<String>& out);

    /// Formatted text of any length; never null, even when nothing is produced. Throws
    /// `StrXception` "out of memory".
    static String fmt(const char* format, ...) PRINTF_FORMAT(1, 2);
    static String vfmt(const char* format, va_list arguments) PRINTF_FORMAT(1, 0);
    /// Replaces the content by the formatted text; unchanged when there is no memory for it.
    void sprintf(const char* format, ...) PRINTF_FORMAT(2, 3);
    void vsprintf(const char* format, va_list arguments) PRINTF_FORMAT(2, 0);

private:
    friend bool operator==(const String& a, const String& b);
    friend bool operator!=(const String& a, const String& b);
    friend bool operator<=(const String& a, const String& b);

    char* buffer_ = nullptr;
};

/// Equal texts, or two null strings. With one null string the pointers are compared, so a null
/// string never equals a non-null empty one.
bool operator==(const String& a, const String& b);
/// Different texts; with a null string on either side, different pointers.
bool operator!=(const String& a, const String& b);
/// `strcmp` order; with a null string on either side it is pointer inequality: two null strings are
/// not `<=` each other, and a null string is `<=` every non-null one and the other way round.
bool operator<=(const String& a, const String& b);

String operator+(const String& a, const char* b);
String operator+(const String& a, const String& b);
