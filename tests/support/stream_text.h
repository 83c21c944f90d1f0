// Texts in and out of byte streams.
#pragma once

#include <base/io.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

/// What one read of `count` bytes gives; a failed test where that is less than nothing.
inline std::string read_text(Input& input, int count) {
    std::string text(static_cast<std::size_t>(count), '?');
    const int got = input.read(text.data(), count);
    EXPECT_GE(got, 0);
    text.resize(static_cast<std::size_t>(std::max(got, 0)));
    return text;
}

/// What one write of the whole text returns.
inline int write_text(Output& output, const std::string& text) {
    return output.write(text.data(), static_cast<int>(text.size()));
}
