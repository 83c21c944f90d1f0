// Standard output or standard error of a piece of code, as text.
#pragma once

#include <cstdio>
#include <string>

/// While it lives, what is written to `stream` (stdout or stderr) goes to a file without a name.
/// Only one per stream at a time.
class CapturedOutput {
public:
    explicit CapturedOutput(std::FILE* stream);
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    /// Leads the stream back to where it went before.
    ~CapturedOutput();

    /// All that has been written so far.
    std::string text();

private:
    std::FILE* stream_;
    std::FILE* file_;
    int original_;
};

/// What `run` writes to `stream`.
template <class Run>
std::string output_of(std::FILE* stream, Run run) {
    CapturedOutput output(stream);
    run();
    return output.text();
}
