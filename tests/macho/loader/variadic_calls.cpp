#include "variadic_calls.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "system_files.h"

#if defined(__x86_64__)

namespace loader {

// Both systems pass arguments alike here; the mode is read whether it was given or not.
Symbols variadic_calls() {
    return {
        {"_open", address(&open_file)},           {"_snprintf", address(&std::snprintf)},
        {"_vsnprintf", address(&std::vsnprintf)}, {"_fprintf", address(&std::fprintf)},
        {"_vfprintf", address(&std::vfprintf)},
    };
}

}  // namespace loader

#else

// The image puts all of them on the stack, eight bytes each, and its list of them is a pointer to
// the first. These hand the pointer on as one argument more.
asm(R"(
    .text
    .hidden macho_open, macho_snprintf, macho_fprintf
    .globl macho_open, macho_snprintf, macho_fprintf
macho_open:
    mov x2, sp
    b macho_open_from
macho_snprintf:
    mov x3, sp
    b macho_snprintf_from
macho_fprintf:
    mov x2, sp
    b macho_fprintf_from
)");

extern "C" {
void macho_open();
void macho_snprintf();
void macho_fprintf();
}

namespace loader {
namespace {

/// What a list of arguments is on this system (procedure call standard of the processor). Compilers
/// keep its members to themselves.
struct ArgumentList {
    void* stack;
    void* general_top = nullptr;
    void* vector_top = nullptr;
    int general_offset = 0;  ///< none is in registers
    int vector_offset = 0;
};

void begin_list(std::va_list& list, void* first) {
    const ArgumentList on_stack = {first};
    static_assert(sizeof list == sizeof on_stack);
    std::memcpy(&list, &on_stack, sizeof on_stack);
}

}  // namespace

extern "C" {

__attribute__((used)) int macho_open_from(const char* path, int flags, const int* mode) {
    return open_file(path, flags, *mode);
}

__attribute__((used)) int macho_snprintf_from(char* to, std::size_t size, const char* format,
                                              void* first) {
    std::va_list list;
    begin_list(list, first);
    return std::vsnprintf(to, size, format, list);
}

__attribute__((used)) int macho_fprintf_from(std::FILE* to, const char* format, void* first) {
    std::va_list list;
    begin_list(list, first);
    return std::vfprintf(to, format, list);
}

}  // extern "C"

Symbols variadic_calls() {
    return {
        {"_open", address(&macho_open)},
        {"_snprintf", address(&macho_snprintf)},
        {"_vsnprintf", address(&macho_snprintf_from)},
        {"_fprintf", address(&macho_fprintf)},
        {"_vfprintf", address(&macho_fprintf_from)},
    };
}

}  // namespace loader

#endif
