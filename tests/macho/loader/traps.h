// Where imports lead that nothing is known for: code that says which one was called.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "memory.h"

namespace loader {

class Traps {
public:
    /// Room for `count`.
    explicit Traps(std::size_t count);

    /// Code that prints the name and ends the process.
    void* add(const std::string& name);
    /// To be called before any is run.
    void close();

private:
    Memory code_;
    std::size_t used_ = 0;
    std::deque<std::string> names_;  // stay where they are
};

}  // namespace loader
