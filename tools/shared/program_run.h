// Another program, run to its end for what it prints.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace lumivar {

struct ProgramRun {
    bool succeeded = false;  ///< it ended with exit code 0
    std::string how_ended;   ///< "ended with exit code 1", "killed by SIGSEGV"
    std::string out;         ///< its standard output
    std::string last_words;  ///< last line of its standard error
};

/// Runs `arguments`, the program's file first, with an empty standard input. It shares this
/// program's group: an interrupt from the terminal ends both, and it ends when this program does,
/// where the system has that. However long it takes, it is waited for.
///
/// Throws `Failure` when it cannot be started, or prints more than `most` bytes; it is killed then.
ProgramRun run_program(const std::vector<std::string>& arguments, std::size_t most);

}  // namespace lumivar
