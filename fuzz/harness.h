// What every harness of this folder is: one function, which is given bytes that anybody may have
// written, and fails when a reader gives a wrong answer to them, breaks down or takes too long.
//
// The fuzzer calls it with bytes that it makes up; `replay.cpp` calls it with what is in the
// corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the program, which the fuzzer takes for a finding, unless the condition holds.
inline void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "wrong answer: %s\n", what);
        std::abort();
    }
}

inline std::string text_of(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
