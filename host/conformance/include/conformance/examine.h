// The conformance run: every command and every fault of a host, played to a plug-in.
//
//     const conformance::Report report = conformance::examine("Lumivar.plugin");
//
// Whatever the module does, it does in a process of its own: one that crashes, hangs or throws
// costs a row, not the run.
#pragma once

#include <conformance/report.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

namespace conformance {

struct Options {
    /// How long the module may take for one step (a command, a frame) before it counts as hung.
    std::chrono::milliseconds time_limit{10000};
    /// Told before each probe how many are done and what this one is for: the id of its row, or the
    /// name of its family. The total is not known beforehand.
    std::function<void(std::size_t probes, const std::string& row)> progress;
};

/// Examines a bundle, or a module file by itself. Throws `host::ModuleError` when there is none;
/// everything else is a row.
///
/// The process must have no other threads: it forks.
Report examine(const std::filesystem::path& bundle, const Options& options = {});

}  // namespace conformance
