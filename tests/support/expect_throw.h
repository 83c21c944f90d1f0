// Runs code that must throw, and hands back what it said.
#pragma once

#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

/// The message of the `StrXception` that `run` throws; a failed test when it throws none.
template <class Run>
std::string thrown_message(Run run) {
    try {
        run();
    } catch (const StrXception& failure) {
        return failure.message().c_str();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

/// The condition of the `AssertXception` that `run` throws; a failed test when it throws none.
template <class Run>
std::string failed_assertion(Run run) {
    try {
        run();
    } catch (const AssertXception& failure) {
        return failure.expression();
    }
    ADD_FAILURE() << "nothing was asserted";
    return "";
}

/// "CALL: TEXT" with the system's text for `error`, the form of every failed system call.
inline std::string with_error(const std::string& call, int error) {
    return call + ": " + std::strerror(error);
}

/// Expects "TEXT in <...FUNCTION(...)> (FILE:LINE)", the form of every thrown message.
inline void expect_message(const std::string& message, const std::string& text,
                           const std::string& function, const std::string& file) {
    const std::string start = text + " in <";
    EXPECT_EQ(message.substr(0, start.size()), start);
    const std::size_t place = message.rfind("> (" + file + ":");
    ASSERT_NE(place, std::string::npos) << message << " does not name " << file;
    const std::string signature = message.substr(start.size(), place - start.size());
    EXPECT_NE(signature.find(function + "("), std::string::npos) << signature;
    // Neither compiler's name of a closure.
    EXPECT_EQ(signature.find("lambda"), std::string::npos) << signature;
    EXPECT_EQ(signature.find("operator()"), std::string::npos) << signature;
}
