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

/// "pass", "fail", "kept": never changed, programs go by them.
const char* name_of(Verdict verdict);

/// One thing that is not as promised.
struct RowFinding {
    std::string text;       ///< what came back instead
    std::string deviation;  ///< its name, where a contract may keep it; else empty
    bool kept = false;      ///< this effect's contract keeps it
};

/// All texts can be printed as they are: what a module brings along went through `host::printable`.
struct Row {
    std::string id;       ///< "frames.float": family and name, never changed once given
    std::string sent;     ///< what the host did
    std::string promise;  ///< what the interface promises then
    std::string answer;   ///< what came back, in short: the first findings, if there are any
    Verdict verdict = Verdict::Pass;
    /// All of them, each once: first what is not kept. None in a row that passes.
    std::vector<RowFinding> findings;
    std::vector<std::string> deviations;  ///< names of those that show in this row, kept or not

    /// The id up to its first point.
    std::string family() const { return id.substr(0, id.find('.')); }
};

/// What could not be looked at: such a run says less than a whole one.
struct Unexamined {
    std::string what;  ///< a row's id, or a name for several
    std::string why;
};

struct Report {
    std::filesystem::path file;  ///< the module
    /// From the bundle's registration; empty when it has none. Can be printed as it is.
    std::string match_name;
    std::vector<Row> rows;
    std::vector<Unexamined> unexamined;

    std::size_t count(Verdict verdict) const;
    /// No row fails.
    bool passed() const { return count(Verdict::Fail) == 0; }
};

}  // namespace conformance
