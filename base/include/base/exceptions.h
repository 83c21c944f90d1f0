// The exceptions that every room throws, and the diagnostic lines on standard error.
//
// There are no error codes below the host shell: a failure is a thrown object that carries a whole,
// readable message with the function, the source file and the line of the raise.
#pragma once

#include <base/printf_format.h>
#include <base/string.h>

/// Root of all exceptions of the system. Thrown by value, caught by reference at the host boundary.
class Xception {
public:
    Xception() = default;
    Xception(const Xception&) = default;
    Xception& operator=(const Xception&) = default;
    virtual ~Xception() = default;

    /// Reports the exception on standard error through `display_error`.
    virtual void print() const = 0;

    /// Writes "TITLE: MESSAGE" and a line feed to standard error.
    static void display_error(const char* title, const char* message);

    /// Writes "warning: ", the formatted text and " in <FUNCTION>" as one line to standard error:
    /// for what is wrong but harmless. Does not throw. `function` is the full signature.
    static void warning(const char* function, const char* format, ...) PRINTF_FORMAT(2, 3);
};

/// A run-time failure: the printf-formatted message followed by " in <FUNCTION> (FILE:LINE)".
class StrXception : public Xception {
public:
    /// Formats the message, of any length. Throws the formatter's own "out of memory" in its place
    /// when there is no memory for it.
    StrXception(const char* file, const char* function, int line, const char* format, ...)
        PRINTF_FORMAT(5, 6);

    /// Takes over a complete message, for when there is no memory to format one. The null string
    /// means that there was none for the message either.
    explicit StrXception(String&& message) noexcept;

    /// "Error: MESSAGE" on standard error.
    void print() const override;

    /// The complete text, place of the raise included.
    const String& message() const { return message_; }

private:
    String message_;
};

/// A broken precondition or invariant. Checked in every build.
class AssertXception : public Xception {
public:
    /// Stores the three texts without copying them: they must be literals.
    AssertXception(const char* expression, const char* file, const char* function, int line);

    /// "Assertion Failed: 'EXPRESSION' in <FUNCTION> (FILE:LINE)" on standard error, the part after
    /// the title cut to 4095 characters.
    void print() const override;

    /// The condition's source text.
    const char* expression() const { return expression_; }
    const char* file() const { return file_; }
    /// The full signature of the function that checked the condition.
    const char* function() const { return function_; }
    int line() const { return line_; }

private:
    const char* expression_;
    const char* file_;
    const char* function_;
    int line_;
};

/// Throws `AssertXception` with the condition's own text unless the condition holds; never compiled
/// out.
#define XASSERT(condition)                                                             \
    do {                                                                               \
        if (!(condition)) {                                                            \
            throw AssertXception(#condition, __FILE__, __PRETTY_FUNCTION__, __LINE__); \
        }                                                                              \
    } while (false)

/// Throws `StrXception` with a printf-style message and the place of the raise.
#define XTHROW(...) throw StrXception(__FILE__, __PRETTY_FUNCTION__, __LINE__, __VA_ARGS__)
