// What the whole image library shares: its coded failures and the memory of its pixels.
#pragma once

#include <base/exceptions.h>
#include <base/words.h>

namespace Kelv {

/// A failure with one of the library's codes.
class Error : public Xception {
public:
    /// The codes that the library itself raises.
    static constexpr int kNoMemory = 4;

    explicit Error(int code) : code_(code) {}

    int code() const { return code_; }
    /// The code's text; that of "unknown error" for a code outside the list.
    const char* strerror() const;
    /// "libkelvimage error: TEXT" on standard error.
    void print() const override;

private:
    int code_;
};

/// Non-zero: pixel allocations are traced on standard error.
extern int TRACE_ALLOCATIONS;

/// A block of `size` bytes, not cleared, to be given back with `free_pixels`. Throws `StrXception`
/// "out of memory".
char* malloc_pixels(uword size);
/// Frees a block of `malloc_pixels`, or nothing when `pixels` is null; `size` is for the trace.
void free_pixels(char* pixels, uword size);

}  // namespace Kelv
