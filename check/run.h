// A check under way: what its families of rows share.
#pragma once

#include <check/check.h>
#include <check/report.h>
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
#include "rules.h"

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

/// The same finding of several places, told once.
struct Counted {
    Finding finding;
    std::vector<std::string> places;  ///< each once, in order
    int times = 0;
};

/// `found`, each once and in the order of the first ones, with what `words` says behind its text;
/// `place` is what of a finding names the place.
std::vector<Finding> told_once(const std::vector<Finding>& found, std::string Finding::*place,
                               const std::function<std::string(const Counted&)>& words);

/// Appends what is neither blank nor there already.
template <class Value>
void note_once(std::vector<Value>& known, const Value& value) {
    if (value != Value() && std::find(known.begin(), known.end(), value) == known.end()) {
        known.push_back(value);
    }
}

/// "a, b and c".
std::string joined(const std::vector<std::string>& names);

class Run {
public:
    /// `progress` is told of each probe as `Options::progress` is. Throws `host::ModuleError` when
    /// there is no module.
    Run(const std::filesystem::path& bundle, const Options& options, const ReaperEnds& ends = {});

    /// Whether the row is asked for.
    bool wants(std::string_view id) const { return id.rfind(options_.rows, 0) == 0; }
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
    /// Whether others may be built on the row: it does not fail, or was not asked for.
    bool stands(std::string_view id) const { return verdict_of(id) != Verdict::Fail; }
    /// Whether nothing was found for the row, not even what is kept, as far as it was looked at.
    bool stands_clean(std::string_view id) const { return verdict_of(id) == Verdict::Pass; }

    /// The file is opened under the name that the user gave: effects look round their own folder.
    host::Session open(host::Application application = host::Application::AfterEffects,
                       host::CallFilter filter = nullptr) const;

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
    /// Findings, deviations, verdict and, where something was found, the answer.
    void judge(Row& row, const std::vector<Finding>& findings) const;
    /// Of a row that was asked for and is missing: a failure. Of one that nobody asked for: a pass.
    Verdict verdict_of(std::string_view id) const;

    std::filesystem::path bundle_;
    Options options_;
    Probes prober_;
    std::size_t probes_ = 0;
    bool whole_ = true;        ///< nothing was left out
    bool asked_left_ = false;  ///< something that was asked for was left out
    std::vector<std::string> missing_;
    Report report_;
};

// The families of rows, in their order; each stands on what those before found out.
void check_bundle(Run& run);
/// As soon as `declared` is known.
void compare_with_registration(Run& run);
void check_set_up(Run& run);
/// Finds what is wrong with the declared controls, for `check_controls`, and keeps what is
/// declared.
void inspect_controls(const host::Session& session, Notes& notes);
void check_controls(Run& run);
void check_frames(Run& run);
void check_leaks(Run& run);
void check_faults(Run& run);

}  // namespace check
