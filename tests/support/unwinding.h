// Destructors that fail.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "captured_output.h"
#include "expect_throw.h"

/// `live(end)` makes an object whose destructor fails, and calls `end` while it lives. Expects that
/// the failure, "TEXT in <...FUNCTION(...)> (FILE:LINE)", is thrown; but where `end` throws, that
/// the failure is printed and the exception of `end` goes on.
template <class Live>
void expect_failing_destructor(const std::string& text, const std::string& function,
                               const std::string& file, Live live) {
    expect_message(thrown_message([&] { live([] {}); }), text, function, file);
    const std::string printed =
        output_of(stderr, [&] { EXPECT_THROW(live([] { throw 5; }), int); });
    EXPECT_EQ(printed.find("Error: " + text), 0U) << printed;
}
