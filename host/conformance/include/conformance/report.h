// What a conformance run found out about a plug-in, row by row.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace conformance {

enum class Verdict {
    Pass,
    Fail,
    Deviation,  ///< not what the interface promises, but what this effect's contract keeps
};

/// "pass", "FAIL", "kept deviation".
const char* name_of(Verdict verdict);

struct Row {
    std::string id;       ///< "frames.float": family and name, never changed once given
    std::string sent;     ///< what the host did
    std::string promise;  ///< what the interface promises then
    std::string answer;   ///< what came back
    Verdict verdict = Verdict::Pass;
    std::vector<std::string> deviations;  ///< names of those that show in this row, kept or not

    /// The id up to its first point.
    std::string family() const { return id.substr(0, id.find('.')); }
};

struct Report {
    std::filesystem::path file;  ///< the module
    /// From the bundle's registration; empty when it has none.
    std::string match_name;
    std::vector<Row> rows;
    /// What could not be looked at and why, one line each: such a run says less than a whole one.
    std::vector<std::string> unexamined;

    std::size_t count(Verdict verdict) const;
    /// No row fails.
    bool passed() const { return count(Verdict::Fail) == 0; }
};

}  // namespace conformance
