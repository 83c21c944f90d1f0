// A check under way: what its families of rows share.
#pragma once

#include <check/check.h>
#include <host/session.h>
#include <read_registration.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "probe.h"

namespace host {

// Between processes.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Violation, rule, text, subject)

}  // namespace host

namespace check {

/// What a row is about; the answer is found out.
struct RowText {
    std::string id;
    std::string sent;
    std::string promise;
};

/// As whom the host plays, and how rows tell that.
struct Identity {
    host::Application application;
    std::string name;
    std::string suffix;  ///< of their ids
    std::string words;   ///< behind what was sent
    std::string set_up_row;
};

inline const Identity kIdentities[] = {
    {host::Application::AfterEffects, "After Effects", "", "", "setup.session"},
    {host::Application::Premiere, "Premiere Pro", "-premiere", ", in Premiere Pro",
     "setup.premiere"},
};

inline const Identity& identity_of(host::Application application) {
    return kIdentities[application == host::Application::Premiere ? 1 : 0];
}

/// What the effect declared of itself at set-up.
struct Declared {
    std::uint32_t version = 0;
    std::uint32_t out_flags = 0;
    std::uint32_t out_flags2 = 0;
    std::size_t controls = 0;
    bool supervises = false;            ///< a control, whose changes it is then told of
    bool keeps_arbitrary_data = false;  ///< in a control
    /// To Premiere Pro, in order of preference.
    std::vector<std::int32_t> premiere_formats = {};

    bool has(std::int32_t flag) const {
        return (out_flags & static_cast<std::uint32_t>(flag)) != 0;
    }
    bool has2(std::int32_t flag) const {
        return (out_flags2 & static_cast<std::uint32_t>(flag)) != 0;
    }
};

/// The same finding, found several times.
struct Counted {
    Finding finding;                 ///< the first
    std::vector<std::string> plays;  ///< each `Finding::at` once, in order
    int times = 0;
};

/// `found`, each once and in the order of the first ones, with what `words` says behind its text.
std::vector<Finding> told_once(const std::vector<Finding>& found,
                               std::string (*words)(const Counted& counted));

/// Appends what is neither blank nor there already.
template <class Value>
void note_once(std::vector<Value>& known, const Value& value) {
    if (value != Value() && std::ranges::find(known, value) == known.end()) {
        known.push_back(value);
    }
}

/// "a, b and c".
std::string joined(const std::vector<std::string>& names);

// The rules of the interface as rows: each has one in a family, in which all that broke it is told.

struct RuleRow {
    std::string_view name;  ///< the last part of a row's id
    std::string_view promise;
    host::Rule rule;
    bool smart_alone = false;  ///< only smart frames can break it
};

/// Rows of the rules of frames, in their order; in the last is told what has no row of its own.
extern const std::vector<RuleRow> kRuleRows;

/// The row in which a broken rule of frames is told.
std::string_view row_of(host::Rule rule);
/// Whether it is a rule of controls, which has a row among theirs.
inline bool of_controls(host::Rule rule) { return rule >= host::Rule::ControlCount; }

/// For a violation that an effect may be known for in a failing host: the deviation's name, else
/// empty.
std::string_view deviation_under_faults(const host::Violation& violation);

using Violations = std::vector<host::Violation>;

bool breaks(const Violations& violations, host::Rule rule);

/// Of `violations` those that are not in `known`.
Violations beyond(const Violations& violations, const Violations& known);

/// The same for those of a set-down, where what is still held is told with its number: without what
/// was told as not given back, whatever the number.
Violations beyond_at_set_down(const Violations& violations, const Violations& known);

class Run {
public:
    /// `progress` is told of each probe as `Options::progress` is. Throws `host::ModuleError` when
    /// there is no module.
    Run(const std::filesystem::path& bundle, const Options& options, const ReaperEnds& ends = {});

    /// Whether the row is asked for.
    bool wants(std::string_view id) const { return id.starts_with(options_.rows); }
    /// Whether rows are asked for whose ids begin so.
    bool asks_for(std::string_view group) const;
    /// The same, or whether rows are that stand on them.
    bool needs(std::string_view group) const;

    /// Runs a probe for a row, by its id, apart from this process.
    Heard probe(std::string_view row, const Body& body);

    // Whatever texts come in, what a terminal obeys is made readable. Rows that nobody asked for
    // are entered for those that stand on them, and left out of the report.

    /// Enters a row: a pass with `answer` unless something was found.
    void enter(const RowText& text, const std::vector<Finding>& findings,
               const std::string& answer);
    /// Enters the row that a probe is for, from its own findings and how it ended.
    void enter(const RowText& text, const Heard& heard);
    /// Runs the probe of a row and enters it.
    Heard enter(const RowText& text, const Body& body);
    /// Notes that a row is missing since its probe ended at what the host lacks, or at a defect of
    /// the check; false when it did not.
    bool missed(std::string_view id, const Heard& heard);
    /// Notes what cannot be looked at, instead of passing over it.
    void leave_out(std::string_view what, std::string_view why);
    /// Notes what this host never looks at. Nothing that is looked at is hidden by it.
    void note_limit(std::string_view what, std::string_view why);
    /// Of a row that was asked for and is missing: a failure. Of one that nobody asked for: a pass.
    Verdict verdict_of(std::string_view id) const;
    /// Whether others may be built on the row.
    bool stands(std::string_view id) const { return verdict_of(id) != Verdict::Fail; }

    /// The file is opened under the name that the user gave: effects look round their own folder.
    host::Session open(host::Application application, host::CallFilter filter = nullptr) const;

    const std::filesystem::path& file() const { return report_.file; }
    void set_match_name(std::string_view name);
    /// Set by the set-up rows; nothing when the effect cannot be set up, or not set down again.
    std::optional<Declared> declared;
    std::string why_not_declared = "the effect cannot be set up";
    /// What a session without frames breaks already; set by the set-up rows.
    std::map<host::Application, Violations> violations_of_set_up;
    /// What the first set-up was like, from which controls and later rows go on.
    Heard set_up;
    /// Nothing when the bundle has none that can be read.
    std::optional<bundle::Registration> registration;

    /// Adds the rows that hold the list of deviations to what showed.
    Report finish();

private:
    void enter_kept();

    std::filesystem::path bundle_;
    Options options_;
    Probes prober_;
    std::size_t probes_ = 0;
    bool whole_ = true;        ///< nothing was left out
    bool asked_left_ = false;  ///< something that was asked for was left out
    std::vector<std::string> missing_;
    Report report_;
};

/// How a question was answered.
struct Reply {
    std::string error;               ///< in words; empty for status 0
    std::vector<std::string> wrong;  ///< whatever the status
    std::string said;                ///< when all is well
};

/// What a host asks of an effect that is set up, outside frames: commands that effects without a
/// user interface of their own meet there, and those that they need not know.
struct Question {
    RowText text;
    std::function<Reply(host::Session&)> ask;
};

/// Those that the effect's declarations bring about, in a host's order.
std::vector<Question> questions(const Declared& declared);
/// Those of them whose rows do not fail, as an application puts them.
std::vector<Question> standing_questions(const Run& run, const Identity& identity);
/// Notes the commands that the effect's declarations bring about and that this host cannot send.
void leave_out_commands(Run& run);

// The families of rows, in their order; each stands on what those before found out.
void check_bundle(Run& run);
/// As soon as `declared` is known.
void compare_with_registration(Run& run);
void check_set_up(Run& run);
/// Finds what is wrong with the declared controls, for `check_controls`.
void inspect_controls(const host::Session& session, Notes& notes);
// Of an effect that is declared; faults come last, since what is lost without them is no fault's.
void check_controls(Run& run);
void check_frames(Run& run);
void check_leaks(Run& run);
void check_faults(Run& run);

}  // namespace check
