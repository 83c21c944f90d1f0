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

/// The line itself.
class ProgressLine {
public:
    ProgressLine();
    /// Wipes it.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Whether it is time to rewrite it: a few times a second at most, and only on a terminal.
    bool is_due() const;
    bool is_shown() const { return shown_; }
    /// Rewrites it, where there is a terminal.
    void show(const std::string& text);
    /// Makes room for another line on standard error.
    void wipe();

private:
    using Clock = std::chrono::steady_clock;

    bool shown_;
    bool open_ = false;
    Clock::time_point last_;
};

class Progress {
public:
    /// `total` 0: unknown. `unit` in the plural.
    Progress(std::uint64_t total, std::string unit);

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
    ProgressLine line_;
    Clock::time_point start_;
};

}  // namespace lumivar
