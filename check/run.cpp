#include "run.h"

#include <base/exceptions.h>
#include <host/module.h>
#include <host/printable.h>

#include <algorithm>
#include <utility>

#include "reaper.h"

namespace check {

// Between processes.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RowFinding, text, deviation, kept)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Row, id, sent, promise, answer, verdict, findings, deviations)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Unexamined, what, why)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Report, match_name, rows, unexamined, defects)

namespace {

constexpr std::size_t kFindingsTold = 3;

bool kept_by(std::string_view match_name, std::string_view deviation) {
    const auto kept = deviations_of(match_name);
    return std::any_of(kept.begin(), kept.end(),
                       [&](const Deviation& one) { return one.name == deviation; });
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

bool begins(std::string_view text, std::string_view with) { return text.rfind(with, 0) == 0; }

}  // namespace

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    }
    return text;
}

std::vector<Finding> told_once(const std::vector<Finding>& found, std::string Finding::*place,
                               const std::function<std::string(const Counted&)>& words) {
    std::vector<Counted> all;
    for (const Finding& one : found) {
        auto known = std::find_if(all.begin(), all.end(), [&](const Counted& other) {
            return other.finding.text == one.text && other.finding.deviation == one.deviation;
        });
        if (known == all.end()) {
            known = all.insert(all.end(), Counted{one, {}, 0});
        }
        ++known->times;
        note_once(known->places, one.*place);
    }
    std::vector<Finding> told;
    for (const Counted& one : all) {
        told.push_back(one.finding);
        told.back().text += words(one);
    }
    return told;
}

Run::Run(const std::filesystem::path& bundle, const Options& options, const ReaperEnds& ends)
    : bundle_(bundle), options_(options), prober_(options.time_limit, ends) {
    report_.file = host::module_file(bundle);
}

bool Run::asks_for(std::string_view group) const {
    return begins(group, options_.rows) || begins(options_.rows, group);
}

bool Run::needs(std::string_view group) const {
    const bool frames = begins(group, "frames");
    // The list of what is kept stands on all rows, leaks on frames, and faults on both.
    return asks_for(group) || asks_for("kept") || (frames && asks_for("leaks")) ||
           ((frames || begins(group, "leaks")) && asks_for("faults"));
}

Heard Run::probe(std::string_view row, const Body& body) {
    if (options_.progress) {
        options_.progress(probes_, host::printable(row));
    }
    ++probes_;
    return prober_.run(body);
}

void Run::judge(Row& row, const std::vector<Finding>& findings) const {
    if (findings.empty()) {
        return;
    }
    row.verdict = Verdict::Kept;
    // What fails is told before what is kept.
    for (const bool kept : {false, true}) {
        for (const Finding& finding : findings) {
            if (kept_by(report_.match_name, finding.deviation) == kept) {
                note_once<RowFinding>(row.findings,
                                      {host::printable(finding.text), finding.deviation, kept});
                note_once(row.deviations, finding.deviation);
                row.verdict = kept ? row.verdict : Verdict::Fail;
            }
        }
    }
    row.answer = in_short(row.findings);
}

void Run::enter(const RowText& text, const std::vector<Finding>& findings,
                const std::string& answer) {
    Row row = {host::printable(text.id), host::printable(text.sent), host::printable(text.promise),
               host::printable(answer)};
    judge(row, findings);
    report_.rows.push_back(std::move(row));
}

void Run::enter(const RowText& text, const Heard& heard) {
    if (!missed(text.id, heard)) {
        enter(text, heard.own(), heard.text("said"));
    }
}

Heard Run::enter(const RowText& text, const Body& body) {
    Heard heard = probe(text.id, body);
    enter(text, heard);
    return heard;
}

bool Run::missed(std::string_view id, const Heard& heard) {
    if (const std::string text = heard.text("defect"); !text.empty()) {
        report_.defects.push_back({host::printable(id), host::printable(text)});
    } else if (const std::string function = heard.text("lacking"); !function.empty()) {
        leave_out(id, "the plug-in calls " + function + ", which this host does not provide");
    } else {
        return false;
    }
    missing_.emplace_back(id);
    return true;
}

void Run::leave_out(std::string_view what, std::string_view why) {
    whole_ = false;
    asked_left_ = asked_left_ || asks_for(what);
    note_limit(what, why);
}

void Run::note_limit(std::string_view what, std::string_view why) {
    report_.unexamined.push_back({host::printable(what), host::printable(why)});
}

void Run::set_match_name(std::string_view name) { report_.match_name = host::printable(name); }

Verdict Run::verdict_of(std::string_view id) const {
    const auto row = std::find_if(report_.rows.begin(), report_.rows.end(),
                                  [&](const Row& one) { return one.id == id; });
    if (row != report_.rows.end()) {
        return row->verdict;
    }
    const bool missing =
        needs(id) || std::find(missing_.begin(), missing_.end(), id) != missing_.end();
    return missing ? Verdict::Fail : Verdict::Pass;
}

host::Session Run::open(host::Application application, host::CallFilter filter) const {
    return host::Session(bundle_, {application, std::move(filter)});
}

Report Run::finish() {
    const std::vector<Row> looked_at = report_.rows;
    // What was not looked at may be where a deviation shows.
    const bool whole = whole_ && report_.defects.empty();
    std::span<const Deviation> listed = deviations_of(report_.match_name);
    if (!asks_for("kept") || listed.empty()) {
        listed = {};
    } else if (!declared) {
        leave_out("kept", why_not_declared);
        listed = {};
    }
    for (const Deviation& deviation : listed) {
        const std::string name(deviation.name);
        const auto shown = std::count_if(looked_at.begin(), looked_at.end(), [&](const Row& row) {
            return std::find(row.deviations.begin(), row.deviations.end(), name) !=
                   row.deviations.end();
        });
        if (shown == 0 && !whole) {
            leave_out("kept." + name, "it shows in none of the rows that could be looked at");
            continue;
        }
        Row row = {"kept." + name, "all of these rows", std::string(deviation.guide), ""};
        if (shown == 0) {
            row.verdict = Verdict::Fail;
            row.answer =
                "it shows in no row, though it is on this effect's list; take it off the "
                "list if the contract no longer keeps it";
        } else {
            row.verdict = Verdict::Kept;
            row.answer = "shows in " + std::to_string(shown) + (shown == 1 ? " row" : " rows") +
                         "; kept: " + std::string(deviation.reason);
            row.deviations = {name};
        }
        row.findings = {{row.answer, name, shown != 0}};
        report_.rows.push_back(std::move(row));
    }
    // Rows that were looked at for the sake of others go, unless one may be why another is missing.
    std::erase_if(report_.rows, [this](const Row& row) {
        return !wants(row.id) && !(asked_left_ && row.verdict == Verdict::Fail);
    });
    std::erase_if(report_.unexamined,
                  [this](const Unexamined& one) { return !asks_for(one.what); });
    return std::move(report_);
}

Report run(const std::filesystem::path& bundle, const Options& options) {
    const std::filesystem::path file = host::module_file(bundle);
    Report report;
    const auto work = [&](const Tell& tell, const ReaperEnds& ends) {
        Options inside = options;
        inside.progress = [&](std::size_t probes, const std::string& row) { tell({probes, row}); };
        Run under_way(bundle, inside, ends);
        check_bundle(under_way);
        check_set_up(under_way);
        check_controls(under_way);
        check_frames(under_way);
        // Faults come last: what is lost without them is no fault's.
        check_leaks(under_way);
        check_faults(under_way);
        tell(under_way.finish());
    };
    try {
        run_reaped(work, [&](const nlohmann::json& told) {
            if (told.is_object()) {
                told.get_to(report);
            } else if (options.progress) {
                options.progress(told.at(0), told.at(1));
            }
        });
    } catch (const StrXception& error) {
        throw Defect(error.message().c_str());
    }
    report.file = file;
    return report;
}

}  // namespace check
