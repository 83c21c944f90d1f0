// The check: every command and every fault of a host, played to a plug-in.
//
//     const check::Report report = check::run("Lumivar.plugin");
//
// Whatever the module does, it does in a process of its own: one that crashes, hangs or throws
// costs a row, not the run.
#pragma once

#include <check/report.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace check {

struct Options {
    /// How long the module may take for one step (a command, a frame) before it counts as hung.
    std::chrono::milliseconds time_limit{10000};
    /// Only rows whose ids begin with this are told; what they stand on is looked at all the same.
    /// Empty: all rows.
    std::string rows;
    /// Told before each probe how many are done and what this one is for: the id of its row, or the
    /// name of its family. The total is not known beforehand. Runs in the process that called.
    std::function<void(std::size_t probes, const std::string& row)> progress;
};

/// The check could not be carried to its end by a fault of its own, or of the machine.
class Defect : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Checks a bundle, or a module file by itself. Throws `host::ModuleError` when there is none, and
/// `Defect`; everything else is a row.
///
/// The process must have no other threads: it forks.
Report run(const std::filesystem::path& bundle, const Options& options = {});

}  // namespace check
