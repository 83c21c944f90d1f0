// Progress of long work: how far, how fast, how long to go. One line that rewrites itself on
// standard error, and nothing at all where standard error is no terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace lumivar {

/// "12/48 frames, 3.2 frames/s, 11 s left"; without a total of more than 0: "12 frames, 3.2
/// frames/s". The rate is left out until there is one.
std::string progress_text(std::uint64_t done, std::uint64_t total, double seconds,
                          const std::string& unit);

/// The same and what is being done, cut where a narrow terminal ends: "12 probes, 3.2 probes/s:
/// frames.float".
std::string progress_text(std::uint64_t done, std::uint64_t total, double seconds,
                          const std::string& unit, const std::string& what);

class Progress {
public:
    /// `total` 0: unknown. `unit` in the plural.
    Progress(std::uint64_t total, std::string unit);
    /// Wipes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap: rewrites the line a few times a second at most.
    void update(std::uint64_t done);
    /// Rewrites the line at once when it is something else that is being done: it may take long.
    void update(std::uint64_t done, const std::string& what);

private:
    using Clock = std::chrono::steady_clock;

    void show(std::uint64_t done);

    std::uint64_t total_;
    std::string unit_;
    std::string what_;
    bool shown_;
    bool line_open_ = false;
    Clock::time_point start_;
    Clock::time_point last_;
};

}  // namespace lumivar
