#include <base/array.h>
#include <base/exceptions.h>
#include <base/printf_format.h>
#include <base/string.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

const char kEmptyText[] = "";

// First guess of a formatted text's size; longer texts take a second pass.
constexpr std::size_t kFirstFormatSize = 100;

/// A copy of `text` from the C allocator; null for a null or empty text.
char* my_strdup(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    if (size == 1) {
        return nullptr;
    }
    // Not tested for failure: only formatting reports a want of memory.
    char* block = static_cast<char*>(std::malloc(size));
    std::strncpy(block, text, size);
    return block;
}

/// Throws "out of memory" with the place of the raise, without the growing formatter: that is the
/// one which has just failed, and would be called again without end.
[[noreturn]] void throw_out_of_memory(const char* function, int line) {
    static const char kFormat[] = "out of memory in <%s> (%s:%d)";
    String message;
    const int length = std::snprintf(nullptr, 0, kFormat, function, __FILE__, line);
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    char* block = static_cast<char*>(std::malloc(size));
    if (block != nullptr) {
        std::snprintf(block, size, kFormat, function, __FILE__, line);
        message.set_buf(block);
    }
    throw StrXception(static_cast<String&&>(message));
}

/// The formatted text in a block of the C allocator that the caller owns. The block is as large as
/// the last size tried, not trimmed. Throws `StrXception` "out of memory".
PRINTF_FORMAT(1, 0) char* my_vsnprintf(const char* format, va_list arguments) {
    std::size_t size = kFirstFormatSize;
    char* block = static_cast<char*>(std::malloc(size));
    if (block == nullptr) {
        throw_out_of_memory(__PRETTY_FUNCTION__, __LINE__);
    }
    for (;;) {
        va_list pass;
        va_copy(pass, arguments);
        const int result = std::vsnprintf(block, size, format, pass);
        va_end(pass);
        if (result >= 0 && static_cast<std::size_t>(result) < size) {
            return block;
        }
        // A C library that reports only truncation gives a negative result. A text that can never
        // be formatted gives one too: the growth then ends with the allocator's refusal.
        size = result >= 0 ? static_cast<std::size_t>(result) + 1 : size * 2;
        char* larger = static_cast<char*>(std::realloc(block, size));
        if (larger == nullptr) {
            std::free(block);
            throw_out_of_memory(__PRETTY_FUNCTION__, __LINE__);
        }
        block = larger;
    }
}

}  // namespace

String::String(const char* text) : buffer_(my_strdup(text)) {}

String::String(const char* text, unsigned int count) {
    if (count == 0) {
        return;
    }
    buffer_ = static_cast<char*>(std::malloc(static_cast<std::size_t>(count) + 1));
    std::strncpy(buffer_, text, count);
    buffer_[count] = '\0';
}

String::String(char character) : buffer_(static_cast<char*>(std::malloc(2))) {
    buffer_[0] = character;
    buffer_[1] = '\0';
}

String::String(const String& other) : buffer_(my_strdup(other.buffer_)) {}

String::String(String&& other) noexcept : buffer_(other.buffer_) { other.buffer_ = nullptr; }

String::~String() { std::free(buffer_); }

String& String::operator=(const char* text) {
    set_buf(my_strdup(text));
    return *this;
}

// The copy is made before the old text goes, so that a string may be assigned to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
String& String::operator=(const String& other) {
    set_buf(my_strdup(other.buffer_));
    return *this;
}

String& String::operator=(String&& other) noexcept {
    char* taken = other.buffer_;
    other.buffer_ = nullptr;
    // Assignment never leaves an empty block, whichever way the text comes.
    if (taken != nullptr && *taken == '\0') {
        std::free(taken);
        taken = nullptr;
    }
    set_buf(taken);
    return *this;
}

const char* String::c_str() const { return buffer_ != nullptr ? buffer_ : kEmptyText; }

unsigned int String::len() const {
    return buffer_ != nullptr ? static_cast<unsigned int>(std::strlen(buffer_)) : 0;
}

void String::clear() { set_buf(nullptr); }

void String::set_buf(char* buffer) {
    std::free(buffer_);
    buffer_ = buffer;
}

String& String::operator+=(char character) {
    const std::size_t length = buffer_ != nullptr ? std::strlen(buffer_) : 0;
    buffer_ = static_cast<char*>(std::realloc(buffer_, length + 2));
    buffer_[length] = character;
    buffer_[length + 1] = '\0';
    return *this;
}

String& String::operator+=(const char* text) {
    if (buffer_ == nullptr) {
        return *this = text;
    }
    if (text == nullptr) {
        return *this;
    }
    const std::size_t length = std::strlen(buffer_);
    const std::size_t added = std::strlen(text);
    // `text` may lie in this very buffer, which realloc moves.
    const bool own_text = std::less_equal<const char*>()(buffer_, text) &&
                          std::less_equal<const char*>()(text, buffer_ + length);
    const std::size_t own_offset = own_text ? static_cast<std::size_t>(text - buffer_) : 0;
    buffer_ = static_cast<char*>(std::realloc(buffer_, length + added + 1));
    std::memcpy(buffer_ + length, own_text ? buffer_ + own_offset : text, added);
    buffer_[length + added] = '\0';
    return *this;
}

String& String::operator+=(const String& text) { return *this += text.c_str(); }

unsigned int String::hash() const {
    unsigned int h = 0;
    if (buffer_ == nullptr) {
        return h;
    }
    for (const char* p = buffer_; *p != '\0'; ++p) {
        // Signed on every target: bytes from 0x80 on contribute negative amounts.
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): the sign is wanted
        const int c = static_cast<signed char>(*p);
        h += static_cast<unsigned int>(c * 16);
        h += static_cast<unsigned int>(c >> 4);
        h *= 11;
    }
    return h;
}

unsigned int String::find(const char* text) const {
    const char* found = buffer_ != nullptr ? std::strstr(buffer_, text) : nullptr;
    return found != nullptr ? static_cast<unsigned int>(found - buffer_) : kNotFound;
}

unsigned int String::find(char character) const {
    const char* found = buffer_ != nullptr ? std::strchr(buffer_, character) : nullptr;
    return found != nullptr ? static_cast<unsigned int>(found - buffer_) : kNotFound;
}

unsigned int String::findr(char character) const {
    const char* found = buffer_ != nullptr ? std::strrchr(buffer_, character) : nullptr;
    return found != nullptr ? static_cast<unsigned int>(found - buffer_) : kNotFound;
}

int String::atoi() const { return buffer_ != nullptr ? std::atoi(buffer_) : 0; }

double String::atof() const { return buffer_ != nullptr ? std::atof(buffer_) : 0.0; }

String String::chop(const char* text) {
    String result;
    for (const char* p = text; *p != '\0' && *p != '\n' && *p != '\r'; ++p) {
        result += *p;
    }
    return result;
}

String String::chop(const String& text) { return chop(text.c_str()); }

void String::split(const char* text, Array<String>& out) { split_by(text, " \t\n\r", out); }

void String::split(const String& text, Array<String>& out) { split(text.c_str(), out); }

void String::split_by(const char* text, const char* delimiters, Array<String>& out) {
    String token;
    for (const char* p = text;; ++p) {
        // strchr finds the terminating NUL too, which ends the last token.
        if (std::strchr(delimiters, *p) == nullptr) {
            token += *p;
        } else if (token.len() != 0) {
            out.append(token);
            token.clear();
        }
        if (*p == '\0') {
            return;
        }
    }
}

void String::split_by(const String& text, const char* delimiters, Array<String>& out) {
    split_by(text.c_str(), delimiters, out);
}

String String::fmt(const char* format, ...) {
    String result;
    va_list arguments;
    va_start(arguments, format);
    try {
        result.vsprintf(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return result;
}

String String::vfmt(const char* format, va_list arguments) {
    String result;
    result.vsprintf(format, arguments);
    return result;
}

void String::sprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        vsprintf(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
}

void String::vsprintf(const char* format, va_list arguments) {
    set_buf(my_vsnprintf(format, arguments));
}

bool operator==(const String& a, const String& b) {
    if (a.buffer_ == nullptr || b.buffer_ == nullptr) {
        return a.buffer_ == b.buffer_;
    }
    return std::strcmp(a.buffer_, b.buffer_) == 0;
}

bool operator!=(const String& a, const String& b) {
    if (a.buffer_ == nullptr || b.buffer_ == nullptr) {
        return a.buffer_ != b.buffer_;
    }
    return std::strcmp(a.buffer_, b.buffer_) != 0;
}

bool operator<=(const String& a, const String& b) {
    if (a.buffer_ == nullptr || b.buffer_ == nullptr) {
        return a.buffer_ != b.buffer_;
    }
    return std::strcmp(a.buffer_, b.buffer_) <= 0;
}

String operator+(const String& a, const char* b) {
    String result(a);
    result += b;
    return result;
}

String operator+(const String& a, const String& b) { return a + b.c_str(); }
