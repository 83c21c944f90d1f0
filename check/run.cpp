#include "run.h"

#include <base/exceptions.h>
#include <host/module.h>
#include <host/printable.h>

#include <utility>

namespace check {

// Between processes.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RowFinding, text, deviation, kept)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Row, id, sent, promise, answer, verdict, findings, deviations)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Unexamined, what, why)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Report, match_name, rows, unexamined, defects)

namespace {

constexpr std::size_t kFindingsTold = 3;

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

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    }
    return text;
}

std::vector<Finding> told_once(const std::vector<Finding>& found,
                               std::string (*words)(const Counted& counted)) {
    std::vector<Counted> all;
    for (const Finding& one : found) {
        auto known = std::ranges::find_if(all, [&](const Counted& other) {
            return other.finding.text == one.text && other.finding.deviation == one.deviation;
        });
        if (known == all.end()) {
            known = all.insert(all.end(), Counted{one, {}, 0});
        }
        ++known->times;
        note_once(known->plays, one.at);
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
    return group.starts_with(options_.rows) || options_.rows.starts_with(group);
}

bool Run::needs(std::string_view group) const {
    const bool frames = group.starts_with("frames");
    // The list of what is kept stands on all rows, leaks on frames, and faults on both.
    return asks_for(group) || asks_for("kept") || (frames && asks_for("leaks")) ||
           ((frames || group.starts_with("leaks")) && asks_for("faults"));
}

Heard Run::probe(std::string_view row, const Body& body) {
    if (options_.progress) {
        options_.progress(probes_, host::printable(row));
    }
    ++probes_;
    return prober_.run(body);
}

void Run::enter(const RowText& text, const std::vector<Finding>& findings,
                const std::string& answer) {
    const auto listed = deviations_of(report_.match_name);
    Row row = {host::printable(text.id), host::printable(text.sent), host::printable(text.promise),
               host::printable(answer)};
    // What fails is told before what is kept.
    for (const bool kept : {false, true}) {
        for (const Finding& finding : findings) {
            const auto known = std::ranges::find(listed, finding.deviation, &Deviation::name);
            if ((known != listed.end()) == kept) {
                note_once<RowFinding>(row.findings,
                                      {host::printable(finding.text), finding.deviation, kept});
                note_once(row.deviations, finding.deviation);
                row.verdict = kept && row.verdict != Verdict::Fail ? Verdict::Kept : Verdict::Fail;
            }
        }
    }
    if (row.verdict != Verdict::Pass) {
        row.answer = in_short(row.findings);
    }
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
    const auto row = std::ranges::find(report_.rows, id, &Row::id);
    if (row != report_.rows.end()) {
        return row->verdict;
    }
    const bool missing = needs(id) || std::ranges::find(missing_, id) != missing_.end();
    return missing ? Verdict::Fail : Verdict::Pass;
}

host::Session Run::open(host::Application application, host::CallFilter filter) const {
    return host::Session(bundle_, {application, std::move(filter)});
}

void Run::enter_kept() {
    const std::span<const Deviation> listed = deviations_of(report_.match_name);
    if (!asks_for("kept") || listed.empty()) {
        return;
    }
    if (!declared) {
        leave_out("kept", why_not_declared);
        return;
    }
    // What was not looked at may be where a deviation shows.
    const bool whole = whole_ && report_.defects.empty();
    for (const Deviation& deviation : listed) {
        const std::string name(deviation.name);
        const auto shown = std::ranges::count_if(report_.rows, [&](const Row& row) {
            return std::ranges::find(row.deviations, name) != row.deviations.end();
        });
        if (shown == 0 && !whole) {
            leave_out("kept." + name, "it shows in none of the rows that could be looked at");
            continue;
        }
        Row row = {"kept." + name, "all of these rows", std::string(deviation.guide),
                   "it shows in no row, though it is on this effect's list; take it off the list "
                   "if the contract no longer keeps it",
                   Verdict::Fail};
        if (shown != 0) {
            row.verdict = Verdict::Kept;
            row.answer = "shows in " + std::to_string(shown) + (shown == 1 ? " row" : " rows") +
                         "; kept: " + std::string(deviation.reason);
            row.deviations = {name};
        }
        row.findings = {{row.answer, name, shown != 0}};
        report_.rows.push_back(std::move(row));
    }
}

Report Run::finish() {
    enter_kept();
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
        constexpr std::pair<const char*, void (*)(Run&)> kFamilies[] = {
            {"controls", check_controls},
            {"frames", check_frames},
            {"leaks", check_leaks},
            {"faults", check_faults},
        };
        for (const auto& [family, check] : kFamilies) {
            if (under_way.declared) {
                check(under_way);
            } else {
                under_way.leave_out(family, under_way.why_not_declared);
            }
        }
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
