// The command that runs in a process that works apart.
#pragma once

#include <osapi/mappings.h>

#include <string>
#include <string_view>

namespace conformance {

/// Stands in memory that a process shares with the one that made it, so that it may be read after
/// a crash without having been told: commands come by the ten thousand, and each word through a
/// pipe would wake the reader.
class RunningCommand {
public:
    /// Throws `StrXception` when there is no memory.
    RunningCommand();

    /// Writes the name, as much of it as has room; empty: none runs. By one thread at a time.
    void set(std::string_view name);

    /// How often it was set: a sign of life. Wraps.
    unsigned changes() const;
    /// To be asked when the writer has ended.
    std::string name() const;

private:
    struct Board;
    Board& board() const;

    OSAPI::AnonMapping shared_;
};

}  // namespace conformance
