// What a call complains of, and what a text holds.
#pragma once

#include <string>

#include "failure.h"

/// The message of the `lumivar::Failure` that `call` throws; "no failure" when it throws none.
template <class Call>
std::string failure_of(Call&& call) {
    try {
        call();
    } catch (const lumivar::Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

inline bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
