// Runs the command line as a user does, and waits for how it ends.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// How a run ended and what it said.
struct ToolResult {
    int code = -1;    ///< exit code; -1 when a signal ended it
    int signal = 0;   ///< the signal that ended it, or 0
    std::string out;  ///< standard output
    std::string err;  ///< standard error
    /// The most memory that the run, or a process that it started, held at a time; 0 under the
    /// address sanitizer, which holds more.
    unsigned long peak_bytes = 0;
};

struct ToolOptions {
    /// What is run instead: LUMIVAR_PROGRAM where it matters how the program was built and started.
    /// Otherwise its function runs in a copy of this process, which spares its start; no sanitizer
    /// looks for leaks at its end.
    std::string program;
    std::string input = "/dev/null";  ///< file for standard input
    std::string output;               ///< file for standard output instead of `out`
    std::string error;                ///< file or terminal for standard error instead of `err`
    std::vector<int> closed;          ///< standard descriptors that are not open
    std::optional<unsigned long> file_size_limit;  ///< bytes, as if the disk were full beyond
    std::optional<unsigned long> memory_limit;     ///< bytes of address space
    std::vector<std::string> environment;          ///< "NAME=VALUE", on top of the tests' own
    int ignored_signal = 0;                        ///< ignored from the start, as nohup does
};

/// A run of the program in the background. Killed when the object dies before `wait`.
class ToolProcess {
public:
    explicit ToolProcess(const std::vector<std::string>& arguments,
                         const ToolOptions& options = {});
    ~ToolProcess();
    ToolProcess(const ToolProcess&) = delete;
    ToolProcess& operator=(const ToolProcess&) = delete;

    pid_t id() const { return id_; }
    void send(int signal) const;
    ToolResult wait();

private:
    pid_t id_ = -1;
    std::string out_file_;
    std::string err_file_;
};

/// Runs the program to its end.
ToolResult run_tool(const std::vector<std::string>& arguments, const ToolOptions& options = {});

/// What a run that ends with this code shows on a terminal at standard error: some 4096 bytes at
/// most, as nobody reads them while it runs.
std::string shown_on_terminal(const std::vector<std::string>& arguments, ToolOptions options,
                              int code);

/// Waits for what another process does, not for ever.
void wait_until(const std::function<bool()>& happens);

/// Names in a folder, hidden ones too, sorted.
std::vector<std::string> names_in(const std::string& folder);
