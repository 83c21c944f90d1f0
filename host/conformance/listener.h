// What comes through the pipes of a process that works apart.
#pragma once

#include <osapi/files.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

#include "apart.h"

namespace conformance {

/// Hears its lines, as `Notes` sends them, and its standard error.
class Listener {
public:
    Listener(OSAPI::FileDescriptor& lines, OSAPI::FileDescriptor& words)
        : lines_(lines), words_(words) {}

    enum class News { None, Words, Lines };
    /// Takes in what comes within a time.
    News listen(std::chrono::milliseconds time);
    /// The last word was among it.
    bool has_last_word() const { return last_word_; }
    /// It ended the program by the C library's `exit`.
    bool has_exited() const { return exited_; }
    Heard heard();

private:
    static void take(OSAPI::FileDescriptor& end, std::string& text);
    /// Hears the whole lines and leaves the rest.
    void hear_lines();
    void hear(const nlohmann::json& line);

    OSAPI::FileDescriptor& lines_;
    OSAPI::FileDescriptor& words_;
    std::string text_;
    std::string errors_;
    bool last_word_ = false;
    bool exited_ = false;
    Heard heard_;
};

}  // namespace conformance
