#include "system_errors.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace loader {
namespace {

// Those that came after the first thirty-four, and two that changed places with others.
struct ErrorNumber {
    int here;
    int apple;
};
constexpr ErrorNumber kErrors[] = {
    {EDEADLK, 11},   {EAGAIN, 35},    {ENOTSUP, 45}, {ELOOP, 62},     {ENAMETOOLONG, 63},
    {ENOTEMPTY, 66}, {EDQUOT, 69},    {ESTALE, 70},  {ENOLCK, 77},    {ENOSYS, 78},
    {EOVERFLOW, 84}, {ECANCELED, 89}, {EILSEQ, 92},  {ETIMEDOUT, 60},
};
constexpr int kSameUpTo = 34;
/// For those without a number over there: above all that it has.
constexpr int kUnknown = 1000;

int error_here(int apple) {
    for (const ErrorNumber& error : kErrors) {
        if (error.apple == apple) {
            return error.here;
        }
    }
    return apple < kUnknown ? apple : apple - kUnknown;
}

int* error_place() { return &image_errno(); }

char* error_text(int apple) { return std::strerror(error_here(apple)); }

}  // namespace

int apple_error(int here) {
    for (const ErrorNumber& error : kErrors) {
        if (error.here == here) {
            return error.apple;
        }
    }
    return here <= kSameUpTo ? here : here + kUnknown;
}

int& image_errno() {
    thread_local int number = 0;
    return number;
}

[[noreturn]] void refuse(const char* call, int flags) {
    std::fprintf(stderr, "macho loader: %s with flags %#x is not translated\n", call,
                 static_cast<unsigned>(flags));
    std::abort();
}

Symbols error_calls() {
    return {{"___error", address(&error_place)}, {"_strerror", address(&error_text)}};
}

}  // namespace loader
