#include <base/exceptions.h>

#include <cstdarg>
#include <cstdio>

namespace {

// Room for an assertion's text on standard error, NUL included.
constexpr int kAssertTextSize = 4096;

}  // namespace

void Xception::display_error(const char* title, const char* message) {
    std::fprintf(stderr, "%s: %s\n", title, message);
}

void Xception::warning(const char* function, const char* format, ...) {
    std::fputs("warning: ", stderr);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, " in <%s>\n", function);
}

StrXception::StrXception(const char* file, const char* function, int line, const char* format,
                         ...) {
    String text;
    va_list arguments;
    va_start(arguments, format);
    try {
        text.vsprintf(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    // One formatted text, since formatting reports a want of memory and appending does not.
    message_.sprintf("%s in <%s> (%s:%d)", text.c_str(), function, file, line);
}

StrXception::StrXception(String&& message) noexcept : message_(static_cast<String&&>(message)) {}

void StrXception::print() const {
    display_error("Error", message_.len() != 0 ? message_.c_str() : "out of memory");
}

AssertXception::AssertXception(const char* expression, const char* file, const char* function,
                               int line)
    : expression_(expression), file_(file), function_(function), line_(line) {}

void AssertXception::print() const {
    char text[kAssertTextSize];
    // The function stands in the angle brackets and the file in the parentheses, although the
    // constructor takes the file first: log readers know the line in this form.
    std::snprintf(text, sizeof text, "'%s' in <%s> (%s:%d)", expression_, function_, file_, line_);
    display_error("Assertion Failed", text);
}
