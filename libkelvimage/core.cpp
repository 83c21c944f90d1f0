// Coded failures, and the memory of pixels.
#include <libkelvimage/core.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace Kelv {

namespace {

const char* const kErrorTexts[] = {
    "OK",
    "unknown error",
    "error opening file",
    "error stat()ing file",
    "error allocating memory",
    "error reading from file",
    "file is too short",
    "unknown file format",
    "invalid file",
    "operation cannot be performed on this image format",
    "error writing to file",
    "unimplemented image format translation",
};
constexpr int kUnknownError = 1;

}  // namespace

const char* Error::strerror() const {
    const bool listed = code_ >= 0 && code_ < static_cast<int>(std::size(kErrorTexts));
    return kErrorTexts[listed ? code_ : kUnknownError];
}

void Error::print() const { std::fprintf(stderr, "libkelvimage error: %s\n", strerror()); }

int TRACE_ALLOCATIONS = 0;

char* malloc_pixels(uword size) {
    if (TRACE_ALLOCATIONS != 0) {
        std::fprintf(stderr, "libkelvimage: malloc_pixels(%" PRIuPTR ")", size);
    }
    void* block = std::malloc(size);
    if (TRACE_ALLOCATIONS != 0) {
        std::fprintf(stderr, " = %p\n", block);
    }
    if (block == nullptr) {
        XTHROW("out of memory");
    }
    return static_cast<char*>(block);
}

void free_pixels(char* pixels, uword size) {
    if (TRACE_ALLOCATIONS != 0) {
        std::fprintf(stderr, "libkelvimage: free_pixels(%p, %" PRIuPTR ")\n",
                     static_cast<void*>(pixels), size);
    }
    std::free(pixels);
}

}  // namespace Kelv
