#include <gtest/gtest.h>
#include <libkelvimage/core.h>

#include <cstdio>
#include <limits>
#include <string>

#include "support/captured_output.h"
#include "support/expect_throw.h"

// The sanitizer's allocator is to fail as the system's does, with a null.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

TEST(Error, HasATextForEachCode) {
    const char* const texts[] = {
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
    for (int code = 0; code < 12; ++code) {
        EXPECT_STREQ(Kelv::Error(code).strerror(), texts[code]);
        EXPECT_EQ(Kelv::Error(code).code(), code);
    }
    for (const int code : {-1, 12, std::numeric_limits<int>::max()}) {
        EXPECT_STREQ(Kelv::Error(code).strerror(), "unknown error");
    }
}

TEST(Error, PrintsItsTextAsAnException) {
    const std::string printed = output_of(stderr, [] {
        try {
            throw Kelv::Error(6);
        } catch (const Xception& failure) {
            failure.print();
        }
    });
    EXPECT_EQ(printed, "libkelvimage error: file is too short\n");
}

std::string address(const void* pointer) {
    char text[64];
    std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}

// Pixel allocations are traced while the object lives.
class Traced {
public:
    Traced() { Kelv::TRACE_ALLOCATIONS = 1; }
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;
    ~Traced() { Kelv::TRACE_ALLOCATIONS = 0; }
};

TEST(PixelMemory, IsNotTracedUnlessAsked) {
    ASSERT_EQ(Kelv::TRACE_ALLOCATIONS, 0);
    const auto run = [] { Kelv::free_pixels(Kelv::malloc_pixels(64), 64); };
    EXPECT_EQ(output_of(stderr, run), "");
}

TEST(PixelMemory, IsTracedWhenAsked) {
    const Traced traced;
    std::string where;
    const std::string trace = output_of(stderr, [&] {
        char* pixels = Kelv::malloc_pixels(64);
        where = address(pixels);
        Kelv::free_pixels(pixels, 64);
    });
    EXPECT_EQ(trace, "libkelvimage: malloc_pixels(64) = " + where + "\nlibkelvimage: free_pixels(" +
                         where + ", 64)\n");
}

TEST(PixelMemory, ThatThereIsNotThrowsAfterItsTrace) {
    const Traced traced;
    // No allocator gives out more than half the addresses; a 32-bit system may well give half.
    const uword size = std::numeric_limits<uword>::max() / 2 + 1;
    std::string message;
    const std::string trace =
        output_of(stderr, [&] { message = thrown_message([=] { Kelv::malloc_pixels(size); }); });
    expect_message(message, "out of memory", "Kelv::malloc_pixels", "libkelvimage/core.cpp");
    // Between the two the sanitizer's allocator may put a warning of its own.
    const std::string start = "libkelvimage: malloc_pixels(" + std::to_string(size) + ")";
    const std::string end = " = " + address(nullptr) + "\n";
    ASSERT_GE(trace.size(), start.size() + end.size());
    EXPECT_EQ(trace.substr(0, start.size()), start);
    EXPECT_EQ(trace.substr(trace.size() - end.size()), end);
}

TEST(PixelMemory, FreeingNoneIsNoError) { Kelv::free_pixels(nullptr, 0); }

}  // namespace
