#include "check_report.h"

#include <host/printable.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <vector>

#include "program_version.h"
#include "text_columns.h"

namespace lumivar {
namespace {

using check::Report;
using check::Row;
using check::Unexamined;
using check::Verdict;
using Json = nlohmann::ordered_json;

/// Of a line of the table.
constexpr std::size_t kWidth = 120;
/// The verdict, left of all, where the eye and other programs go down the rows.
constexpr std::size_t kVerdict = 6;

struct Column {
    const char* title;
    std::size_t width;
};

// Most of what is told fits one line of them.
constexpr std::array<Column, 2> kColumns = {{{"Promised", 46}, {"Came back", 66}}};
static_assert(kVerdict + kColumns[0].width + 2 + kColumns[1].width == kWidth);

using Cells = std::array<std::string, kColumns.size()>;

constexpr std::array<std::array<const char*, 2>, 7> kFamilies = {{
    {"bundle", "The bundle"},
    {"setup", "Set-up, questions, other commands"},
    {"controls", "Controls"},
    {"frames", "Frames"},
    {"leaks", "Leaks"},
    {"faults", "A host that fails"},
    {"kept", "Deviations that this effect's contract keeps"},
}};

std::string title_of(const std::string& family) {
    for (const auto& [name, title] : kFamilies) {
        if (family == name) {
            return title;
        }
    }
    return family;
}

/// Side by side, without blanks at the end.
std::string cells_text(const Cells& cells) {
    std::array<std::vector<std::string>, kColumns.size()> parts;
    std::size_t height = 0;
    for (std::size_t column = 0; column < kColumns.size(); ++column) {
        parts[column] = wrapped(cells[column], kColumns[column].width);
        height = std::max(height, parts[column].size());
    }
    std::string text;
    for (std::size_t i = 0; i < height; ++i) {
        std::string line(kVerdict, ' ');
        for (std::size_t column = 0; column < kColumns.size(); ++column) {
            const std::string part = i < parts[column].size() ? parts[column][i] : "";
            line += padded(part, kColumns[column].width + 2);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

/// `mark` before the first of its lines.
std::string marked(const std::string& mark, const std::string& text) {
    std::string lines;
    for (const std::string& line : wrapped(text, kWidth - kVerdict)) {
        lines += padded(lines.empty() ? mark : "", kVerdict) + line + "\n";
    }
    return lines;
}

std::string heading(const std::string& family) {
    return "\n" + title_of(family) + "\n\n" + marked("", "Id and what was sent") +
           cells_text({kColumns[0].title, kColumns[1].title});
}

/// Verdict, id and what was sent; below them promise and answer, with the names of what is kept.
std::string row_text(const Row& row) {
    std::string answer = row.answer;
    if (row.verdict == Verdict::Kept && row.family() != "kept") {
        for (const std::string& name : row.deviations) {
            answer += (&name == &row.deviations.front() ? " [" : ", ") + name;
        }
        answer += "]";
    }
    // Failures are to be seen among hundreds of rows.
    const char* const verdict = row.verdict == Verdict::Fail ? "FAIL" : name_of(row.verdict);
    return marked(verdict, row.id + "  " + row.sent) + cells_text({row.promise, answer});
}

std::vector<std::string> failing_ids(const Report& report) {
    std::vector<std::string> ids;
    for (const Row& row : report.rows) {
        if (row.verdict == Verdict::Fail) {
            ids.push_back(row.id);
        }
    }
    return ids;
}

std::string counts_text(const Report& report) {
    std::string text = std::to_string(report.rows.size()) +
                       " rows: " + std::to_string(report.count(Verdict::Pass)) + " pass, " +
                       std::to_string(report.count(Verdict::Kept)) + " kept deviations, " +
                       std::to_string(report.count(Verdict::Fail)) + " fail";
    if (!report.unexamined.empty()) {
        text += ", " + std::to_string(report.unexamined.size()) + " not examined";
    }
    return text;
}

Json json_of(const Row& row) {
    Json one;
    one["id"] = row.id;
    one["sent"] = row.sent;
    one["promised"] = row.promise;
    one["came_back"] = row.answer;
    one["verdict"] = name_of(row.verdict);
    one["findings"] = Json::array();
    for (const check::RowFinding& finding : row.findings) {
        one["findings"].push_back(
            {{"text", finding.text}, {"deviation", finding.deviation}, {"kept", finding.kept}});
    }
    one["deviations"] = row.deviations;
    return one;
}

Json json_of(const std::vector<Unexamined>& notes) {
    Json all = Json::array();
    for (const Unexamined& one : notes) {
        all.push_back({{"what", one.what}, {"why", one.why}});
    }
    return all;
}

}  // namespace

std::string report_as_text(const Report& report) {
    std::string text = host::printable(report.file.string()) + "\n";
    if (!report.match_name.empty()) {
        text += "registered as \"" + report.match_name + "\"\n";
    }
    std::string family;
    for (const Row& row : report.rows) {
        if (row.family() != family) {
            family = row.family();
            text += heading(family);
        }
        text += row_text(row);
    }
    for (const Unexamined& one : report.unexamined) {
        text += &one == &report.unexamined.front() ? "\nNot examined\n\n" : "";
        text += marked("", one.what + ": " + one.why);
    }
    for (const Unexamined& one : report.defects) {
        text += &one == &report.defects.front()
                    ? "\nThe check itself failed, which says nothing about the plug-in\n\n"
                    : "";
        text += marked("", one.what + ": " + one.why);
    }
    const std::vector<std::string> failing = failing_ids(report);
    for (const std::string& id : failing) {
        text += (&id == &failing.front() ? "\nRows that fail\n\n" : "") + marked("", id);
    }
    return text + "\n" + counts_text(report) + "\n";
}

std::string report_as_json(const Report& report) {
    Json json;
    json["format"] = kReportFormat;
    json["program"] = kProgramVersion;
    json["module"] = host::printable(report.file.string());
    json["match_name"] = report.match_name;
    json["passed"] = report.passed();
    Json& counts = json["counts"];
    counts["rows"] = report.rows.size();
    for (const Verdict verdict : {Verdict::Pass, Verdict::Fail, Verdict::Kept}) {
        counts[name_of(verdict)] = report.count(verdict);
    }
    counts["not_examined"] = report.unexamined.size();
    counts["defects"] = report.defects.size();
    json["rows"] = Json::array();
    for (const Row& row : report.rows) {
        json["rows"].push_back(json_of(row));
    }
    json["not_examined"] = json_of(report.unexamined);
    json["defects"] = json_of(report.defects);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string failure_text(const Report& report) {
    constexpr std::size_t kNamed = 3;
    const std::vector<std::string> failing = failing_ids(report);
    if (failing.empty()) {
        const Unexamined& first = report.defects.front();
        return "the check itself failed, not the plug-in, at " + first.what + ": " + first.why;
    }
    if (failing.size() == 1) {
        const auto row = std::find_if(report.rows.begin(), report.rows.end(),
                                      [&](const Row& one) { return one.id == failing.front(); });
        return "the check " + row->id + " (" + row->sent + ") fails: " + row->answer;
    }
    std::string text = std::to_string(failing.size()) + " of " +
                       std::to_string(report.rows.size()) + " rows of the check fail: ";
    for (std::size_t i = 0; i < std::min(failing.size(), kNamed); ++i) {
        text += (i == 0 ? "" : ", ") + failing[i];
    }
    if (failing.size() > kNamed) {
        text += " and " + std::to_string(failing.size() - kNamed) + " more";
    }
    return text;
}

}  // namespace lumivar
