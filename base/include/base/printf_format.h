// Functions that take a format text as `printf` does, for the compiler to check their arguments.
#pragma once

/// `format` is the number of the format text among the parameters (a member's object counts), and
/// `first` that of its first argument, or 0 for a list of arguments.
///
/// On Windows g++ means the system's own dialect by `printf`, which does not know "%zu"; what
/// formats there is the compiler's library, in the standard's dialect.
#if defined(__MINGW32__) && !defined(__clang__)
#define PRINTF_FORMAT(format, first) __attribute__((__format__(gnu_printf, format, first)))
#else
#define PRINTF_FORMAT(format, first) __attribute__((__format__(printf, format, first)))
#endif
