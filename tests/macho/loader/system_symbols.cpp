#include "system_symbols.h"

#include <dlfcn.h>
#include <sys/mman.h>
#include <unwind.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "image_exits.h"
#include "system_errors.h"
#include "system_files.h"
#include "system_locks.h"
#include "thread_variables.h"
#include "variadic_calls.h"

namespace loader {
namespace {

void fill_with_zeros(void* begin, std::size_t size) { std::memset(begin, 0, size); }

/// Both returned in registers, as the image expects.
struct SineAndCosine {
    double sine;
    double cosine;
};
SineAndCosine sine_and_cosine(double angle) { return {std::sin(angle), std::cos(angle)}; }

/// Data that no one reads: whoever does is stopped at once.
void* unreadable() {
    static void* const page = mmap(nullptr, 16384, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page;
}

Symbols memory_and_text() {
    return {
        {"_malloc", address(&std::malloc)},
        {"_realloc", address(&std::realloc)},
        {"_free", address(&std::free)},
        {"_aligned_alloc", address(&std::aligned_alloc)},
        {"_memcpy", address(&std::memcpy)},
        {"_memmove", address(&std::memmove)},
        {"_memset", address(&std::memset)},
        {"_memcmp", address(&std::memcmp)},
        {"_memchr", address<const void*(const void*, int, std::size_t)>(&std::memchr)},
        {"_bzero", address(&fill_with_zeros)},
        {"___bzero", address(&fill_with_zeros)},
        {"_strlen", address(&std::strlen)},
        {"_strcmp", address(&std::strcmp)},
        {"_strncmp", address(&std::strncmp)},
        {"_strncpy", address(&std::strncpy)},
        {"_strrchr", address<const char*(const char*, int)>(&std::strrchr)},
        {"_strstr", address<const char*(const char*, const char*)>(&std::strstr)},
        {"_abort", address(&std::abort)},
        // Kinds of characters, for the names in the last words of a process that an exception ends
        {"__DefaultRuneLocale", unreadable()},
    };
}

Symbols mathematics() {
    return {
        {"_asin", address<double(double)>(&std::asin)},
        {"_ceilf", address<float(float)>(&std::ceil)},
        {"_erff", address<float(float)>(&std::erf)},
        {"_expf", address<float(float)>(&std::exp)},
        {"_floorf", address<float(float)>(&std::floor)},
        {"_logf", address<float(float)>(&std::log)},
        {"_pow", address<double(double, double)>(&std::pow)},
        {"_powf", address<float(float, float)>(&std::pow)},
        {"___sincos_stret", address(&sine_and_cosine)},
    };
}

Symbols output() {
    static FILE* standard_error = stderr;
    return {
        {"___stderrp", &standard_error},
        {"_fputs", address(&std::fputs)},
        {"_fputc", address(&std::fputc)},
        {"_fwrite", address(&std::fwrite)},
    };
}

/// What finds its way by the image's own tables.
Symbols own_image() {
    return {
        {"_dladdr", address(&dladdr)},
        {"___cxa_atexit", address(&run_at_unloading)},
        {"__tlv_bootstrap", address(&macho_thread_variable)},
        {"__Unwind_DeleteException", address(&_Unwind_DeleteException)},
        {"__Unwind_GetIP", address(&_Unwind_GetIP)},
        {"__Unwind_GetLanguageSpecificData", address(&_Unwind_GetLanguageSpecificData)},
        {"__Unwind_GetRegionStart", address(&_Unwind_GetRegionStart)},
        {"__Unwind_RaiseException", address(&_Unwind_RaiseException)},
        {"__Unwind_Resume", address(&_Unwind_Resume)},
        {"__Unwind_SetGR", address(&_Unwind_SetGR)},
        {"__Unwind_SetIP", address(&_Unwind_SetIP)},
    };
}

}  // namespace

void* system_symbol(const std::string& name) {
    static const Symbols all = [] {
        Symbols table;
        for (const Symbols& some : {memory_and_text(), mathematics(), output(), own_image(),
                                    error_calls(), file_calls(), lock_calls(), variadic_calls()}) {
            table.insert(some.begin(), some.end());
        }
        return table;
    }();
    const auto found = all.find(name);
    return found == all.end() ? nullptr : found->second;
}

}  // namespace loader
