#include "examination.h"

#include <conformance/deviations.h>
#include <host/module.h>
#include <host/printable.h>

#include <algorithm>
#include <utility>

namespace conformance {
namespace {

constexpr std::size_t kFindingsTold = 3;

bool kept_by(std::string_view match_name, std::string_view deviation) {
    const auto kept = deviations_of(match_name);
    return std::any_of(kept.begin(), kept.end(),
                       [&](const Deviation& one) { return one.name == deviation; });
}

void note_once(std::vector<std::string>& names, const std::string& name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
}

void note_once(std::vector<RowFinding>& findings, RowFinding finding) {
    const bool known = std::any_of(findings.begin(), findings.end(), [&](const RowFinding& one) {
        return one.text == finding.text && one.deviation == finding.deviation;
    });
    if (!known) {
        findings.push_back(std::move(finding));
    }
}

/// In one line.
std::string in_short(const std::vector<RowFinding>& findings) {
    std::vector<std::string> texts;
    for (const RowFinding& finding : findings) {
        note_once(texts, finding.text);
    }
    std::string text;
    for (std::size_t i = 0; i < std::min(texts.size(), kFindingsTold); ++i) {
        text += (i == 0 ? "" : "; ") + texts[i];
    }
    if (texts.size() > kFindingsTold) {
        text += "; and " + std::to_string(texts.size() - kFindingsTold) + " more";
    }
    return text;
}

}  // namespace

std::vector<Finding> own_findings(const Heard& heard) {
    std::vector<Finding> own = Examination::under(heard, "");
    if (!heard.died.empty()) {
        std::string text = heard.died;
        text += heard.doing.empty() ? "" : " during " + heard.doing;
        text += heard.running.empty() ? "" : ", in " + heard.running;
        text += heard.last_words.empty() ? "" : ": " + heard.last_words;
        own.push_back({"", text, ""});
    }
    return own;
}

Examination::Examination(const std::filesystem::path& bundle, const Options& options)
    : bundle_(bundle), options_(options) {
    report_.file = host::module_file(bundle);
}

Heard Examination::probe(std::string_view row, const Body& body) {
    if (options_.progress) {
        options_.progress(probes_, host::printable(row));
    }
    Heard heard = run_apart(body, options_.time_limit);
    ++probes_;
    return heard;
}

std::vector<Finding> Examination::under(const Heard& heard, std::string_view rule) {
    std::vector<Finding> found;
    std::copy_if(heard.findings.begin(), heard.findings.end(), std::back_inserter(found),
                 [&](const Finding& finding) { return finding.rule == rule; });
    return found;
}

void Examination::judge(Row& row, const std::vector<Finding>& findings) const {
    if (findings.empty()) {
        return;
    }
    row.verdict = Verdict::Deviation;
    // What fails is told before what is kept.
    for (const bool kept : {false, true}) {
        for (const Finding& finding : findings) {
            if (kept_by(report_.match_name, finding.deviation) == kept) {
                note_once(row.findings, {host::printable(finding.text), finding.deviation, kept});
                note_once(row.deviations, finding.deviation);
                row.verdict = kept ? row.verdict : Verdict::Fail;
            }
        }
    }
    row.answer = in_short(row.findings);
}

void Examination::enter(const RowText& text, const std::vector<Finding>& findings,
                        const std::string& answer) {
    Row row;
    row.id = host::printable(text.id);
    row.sent = host::printable(text.sent);
    row.promise = host::printable(text.promise);
    row.answer = host::printable(answer);
    judge(row, findings);
    report_.rows.push_back(std::move(row));
}

void Examination::enter(const RowText& text, const Heard& heard) {
    if (!lacked(text.id, heard)) {
        enter(text, own_findings(heard), heard.said);
    }
}

bool Examination::lacked(std::string_view id, const Heard& heard) {
    if (heard.lacking.empty()) {
        return false;
    }
    leave_out(id, "the plug-in calls " + heard.lacking + ", which this host does not provide");
    return true;
}

void Examination::leave_out(std::string_view what, std::string_view why) {
    whole_ = false;
    note_limit(what, why);
}

void Examination::note_limit(std::string_view what, std::string_view why) {
    report_.unexamined.push_back({host::printable(what), host::printable(why)});
}

void Examination::set_match_name(std::string_view name) {
    report_.match_name = host::printable(name);
}

bool Examination::stands(std::string_view id) const {
    return std::any_of(report_.rows.begin(), report_.rows.end(), [&](const Row& row) {
        return row.id == id && row.verdict != Verdict::Fail;
    });
}

bool Examination::passes(std::string_view id) const {
    return std::any_of(report_.rows.begin(), report_.rows.end(), [&](const Row& row) {
        return row.id == id && row.verdict == Verdict::Pass;
    });
}

host::Session Examination::open(host::SessionOptions options) const {
    return host::Session(bundle_, std::move(options));
}

const std::vector<std::string>& Examination::known_violations(host::Application application) const {
    return violations_of_set_up.at(application);
}

Report Examination::finish() {
    const std::size_t looked_at = report_.rows.size();
    // What was not looked at may be where a deviation shows.
    const bool whole = whole_;
    if (!declared && !deviations_of(report_.match_name).empty()) {
        leave_out("kept", why_not_declared);
        return std::move(report_);
    }
    for (const Deviation& deviation : deviations_of(report_.match_name)) {
        const std::string name(deviation.name);
        std::size_t shown = 0;
        for (std::size_t i = 0; i < looked_at; ++i) {
            const std::vector<std::string>& names = report_.rows[i].deviations;
            shown += std::find(names.begin(), names.end(), name) != names.end() ? 1U : 0U;
        }
        if (shown == 0 && !whole) {
            leave_out("kept." + name, "it shows in none of the rows that could be looked at");
            continue;
        }
        Row row;
        row.id = "kept." + name;
        row.sent = "all of these rows";
        row.promise = deviation.guide;
        row.verdict = shown == 0 ? Verdict::Fail : Verdict::Deviation;
        if (shown == 0) {
            row.answer =
                "it shows in no row, though it is on this effect's list; take it off the "
                "list if the contract no longer keeps it";
        } else {
            row.answer = "shows in " + std::to_string(shown) + (shown == 1 ? " row" : " rows") +
                         "; kept: " + std::string(deviation.reason);
            row.deviations = {name};
        }
        row.findings = {{row.answer, name, shown != 0}};
        report_.rows.push_back(std::move(row));
    }
    return std::move(report_);
}

Report examine(const std::filesystem::path& bundle, const Options& options) {
    Examination run(bundle, options);
    examine_bundle(run);
    examine_set_up(run);
    examine_controls(run);
    examine_frames(run);
    // Faults go by what is lost without them.
    examine_leaks(run);
    examine_faults(run);
    return run.finish();
}

}  // namespace conformance
