// What a command writes, for tests that look at built files with the system's tools.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

namespace support {

/// What a command writes to standard output; throws unless it succeeds.
inline std::string command_output(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        output += static_cast<char>(c);
    }
    if (pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + command);
    }
    return output;
}

}  // namespace support
