#include "check_report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <vector>

namespace lumivar {
namespace {

using conformance::Report;
using conformance::Row;
using conformance::Verdict;

struct Column {
    const char* title;
    std::size_t width;
};

// 120 characters with the gaps between.
constexpr std::array<Column, 4> kColumns = {
    {{"Sent", 33}, {"Promised", 31}, {"Came back", 36}, {"Verdict", 14}}};

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

/// Broken at spaces into lines of at most `width`; a longer word is cut.
std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::string rest = text;
    std::replace_if(
        rest.begin(), rest.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    while (rest.size() > width) {
        std::size_t end = rest.rfind(' ', width);
        if (end == std::string::npos || end == 0) {
            end = width;
        }
        lines.push_back(rest.substr(0, end));
        rest.erase(0, rest[end] == ' ' ? end + 1 : end);
    }
    lines.push_back(rest);
    return lines;
}

std::string lines_of(const Cells& cells) {
    std::array<std::vector<std::string>, kColumns.size()> parts;
    std::size_t height = 0;
    for (std::size_t column = 0; column < kColumns.size(); ++column) {
        parts[column] = wrapped(cells[column], kColumns[column].width);
        height = std::max(height, parts[column].size());
    }
    std::string text;
    for (std::size_t i = 0; i < height; ++i) {
        std::string line;
        for (std::size_t column = 0; column < kColumns.size(); ++column) {
            const std::string part = i < parts[column].size() ? parts[column][i] : "";
            line += part + std::string(kColumns[column].width - part.size() + 2, ' ');
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string counts_text(const Report& report) {
    std::string text = std::to_string(report.rows.size()) +
                       " rows: " + std::to_string(report.count(Verdict::Pass)) + " pass, " +
                       std::to_string(report.count(Verdict::Deviation)) + " kept deviations, " +
                       std::to_string(report.count(Verdict::Fail)) + " fail";
    if (!report.unexamined.empty()) {
        text += ", " + std::to_string(report.unexamined.size()) + " not examined";
    }
    return text;
}

}  // namespace

std::string report_as_text(const Report& report) {
    std::string text = report.file.string() + "\n";
    if (!report.match_name.empty()) {
        text += "registered as \"" + report.match_name + "\"\n";
    }
    Cells titles;
    for (std::size_t column = 0; column < kColumns.size(); ++column) {
        titles[column] = kColumns[column].title;
    }
    std::string family;
    for (const Row& row : report.rows) {
        if (row.family() != family) {
            family = row.family();
            text += "\n" + title_of(family) + "\n\n" + lines_of(titles);
        }
        text += lines_of({row.sent, row.promise, row.answer, name_of(row.verdict)});
    }
    for (const std::string& what : report.unexamined) {
        text += (&what == &report.unexamined.front() ? "\nNot examined\n\n" : "") + what + "\n";
    }
    return text + "\n" + counts_text(report) + "\n";
}

std::string report_as_json(const Report& report) {
    nlohmann::ordered_json json;
    json["module"] = report.file.string();
    json["match_name"] = report.match_name;
    json["passed"] = report.passed();
    json["rows"] = nlohmann::ordered_json::array();
    for (const Row& row : report.rows) {
        nlohmann::ordered_json one;
        one["id"] = row.id;
        one["sent"] = row.sent;
        one["promised"] = row.promise;
        one["came_back"] = row.answer;
        one["verdict"] = name_of(row.verdict);
        one["deviations"] = row.deviations;
        json["rows"].push_back(one);
    }
    json["not_examined"] = report.unexamined;
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string failure_text(const Report& report) {
    const std::size_t failed = report.count(Verdict::Fail);
    if (failed != 1) {
        return std::to_string(failed) + " of " + std::to_string(report.rows.size()) +
               " rows of the check fail";
    }
    const auto row = std::find_if(report.rows.begin(), report.rows.end(),
                                  [](const Row& one) { return one.verdict == Verdict::Fail; });
    return "the check \"" + row->sent + "\" fails: " + row->answer;
}

}  // namespace lumivar
