// What a check found out about a plug-in, row by row, and the behaviour that it knows to be kept.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace check {

enum class Verdict {
    Pass,
    Fail,
    Kept,  ///< not what the interface promises, but what this effect's contract keeps
};

/// "pass", "fail", "kept": never changed, programs go by them.
const char* name_of(Verdict verdict);

/// One thing that is not as promised.
struct RowFinding {
    std::string text;       ///< what came back instead
    std::string deviation;  ///< its name, where a contract may keep it; else empty
    bool kept = false;      ///< this effect's contract keeps it

    bool operator==(const RowFinding&) const = default;
};

/// All texts can be printed as they are: what a module brings along went through `host::printable`.
struct Row {
    std::string id;       ///< "frames.float": family and name, never changed once given
    std::string sent;     ///< what the host did
    std::string promise;  ///< what the interface promises then
    std::string answer;   ///< what came back, in short: the first findings, if there are any
    Verdict verdict = Verdict::Pass;
    /// All of them, each once: first what is not kept. None in a row that passes.
    std::vector<RowFinding> findings = {};
    std::vector<std::string> deviations =
        {};  ///< names of those that show in this row, kept or not

    /// The id up to its first point.
    std::string family() const { return id.substr(0, id.find('.')); }
};

/// What could not be looked at: such a check says less than a whole one.
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
    /// Where the check itself failed, which says nothing about the plug-in: `what` is the row that
    /// is missing for it.
    std::vector<Unexamined> defects;

    std::size_t count(Verdict verdict) const;
    /// No row fails, and the check itself worked.
    bool passed() const { return count(Verdict::Fail) == 0 && defects.empty(); }
};

/// Behaviour that an effect's contract with saved projects keeps although the interface's guide
/// says otherwise. A row in which nothing else is found ends as kept instead of as a failure; and
/// each of an effect's deviations must show, or the list is wrong.
struct Deviation {
    std::string_view name;
    std::string_view guide;   ///< what the interface's guide says
    std::string_view reason;  ///< why the contract keeps it
};

/// Those of the effect with a match name; none for any other effect.
std::span<const Deviation> deviations_of(std::string_view match_name);

// Names, by which rows tell them.
inline constexpr std::string_view kParametersStayOut = "parameters not checked in again";
inline constexpr std::string_view kPopupDefaultZero = "popup default 0";
inline constexpr std::string_view kChoiceCount = "choice count";
inline constexpr std::string_view kStatusZero = "status 0 after a failed frame";
inline constexpr std::string_view kHandleInRecord = "handle left in the render record";
inline constexpr std::string_view kWorldSuiteReleased = "world suite released though not held";
inline constexpr std::string_view kLayerCheckedIn = "layer checked in after a failed fetch";
inline constexpr std::string_view kParameterCheckedIn =
    "parameter checked in after a failed checkout";

}  // namespace check
