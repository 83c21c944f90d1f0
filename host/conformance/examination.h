// A conformance run under way: what its families of rows share.
#pragma once

#include <conformance/examine.h>
#include <conformance/report.h>
#include <host/session.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apart.h"
#include "registration.h"

namespace conformance {

/// What a row is about; the answer is found out.
struct RowText {
    std::string_view id;
    std::string_view sent;
    std::string_view promise;
};

/// What the effect declared of itself at set-up.
struct Declared {
    std::uint32_t version = 0;
    std::uint32_t out_flags = 0;
    std::uint32_t out_flags2 = 0;
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

class Examination {
public:
    /// Throws `host::ModuleError` when there is no module.
    Examination(const std::filesystem::path& bundle, const Options& options);

    /// Runs a probe for a row, by its id, apart from this process.
    Heard probe(std::string_view row, const Body& body);
    // Whatever texts come in, of a row or beside it, what a terminal obeys is made readable there.

    /// Enters a row: a pass with `answer` unless something was found.
    void enter(const RowText& text, const std::vector<Finding>& findings,
               const std::string& answer);
    /// Enters the row that a probe is for, from its own findings and how it ended.
    void enter(const RowText& text, const Heard& heard);
    /// Notes that a row cannot be looked at, since its probe ended at what the host lacks; false
    /// when it did not.
    bool lacked(std::string_view id, const Heard& heard);
    /// Those of `heard` that belong in the row of a rule.
    static std::vector<Finding> under(const Heard& heard, std::string_view rule);
    /// Notes what cannot be looked at, instead of passing over it.
    void leave_out(std::string_view what, std::string_view why);
    /// Notes what this host never looks at. Nothing that is looked at is hidden by it.
    void note_limit(std::string_view what, std::string_view why);
    /// Whether there is a row of this id that does not fail: others are built on it.
    bool stands(std::string_view id) const;
    /// Whether nothing at all was found for the row.
    bool passes(std::string_view id) const;

    /// The file is opened under the name that the user gave: effects look round their own folder.
    host::Session open(host::SessionOptions options = {}) const;

    const std::filesystem::path& file() const { return report_.file; }
    void set_match_name(std::string_view name);
    /// Set by the set-up rows; nothing when the effect cannot be set up, or not set down again.
    std::optional<Declared> declared;
    std::string why_not_declared = "the effect cannot be set up";
    /// What a session without frames breaks already; set by the set-up rows.
    const std::vector<std::string>& known_violations(host::Application application) const;
    std::map<host::Application, std::vector<std::string>> violations_of_set_up;
    /// What the first set-up was like, from which controls and later rows go on.
    Heard set_up;
    /// Nothing when the bundle has none that can be read.
    std::optional<Registration> registration;

    /// Adds the rows that hold the list of deviations to what showed.
    Report finish();

private:
    /// Findings, deviations, verdict and, where something was found, the answer.
    void judge(Row& row, const std::vector<Finding>& findings) const;

    std::filesystem::path bundle_;
    Options options_;
    std::size_t probes_ = 0;
    bool whole_ = true;  ///< nothing was left out
    Report report_;
};

/// The probe's own findings, a death included.
std::vector<Finding> own_findings(const Heard& heard);

// The families of rows, in their order; each stands on what those before found out.
void examine_bundle(Examination& run);
/// As soon as `declared` is known.
void compare_with_registration(Examination& run);
void examine_flags(Examination& run);
void examine_set_up(Examination& run);
void examine_controls(Examination& run);
void examine_frames(Examination& run);
void examine_leaks(Examination& run);
void examine_faults(Examination& run);

}  // namespace conformance
