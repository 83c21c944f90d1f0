// Checks and their reports.
#pragma once

#include <check/check.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace report_support {

/// For modules that come to an end, on a machine however busy.
inline constexpr std::chrono::milliseconds kPatience{60000};

using Ids = std::set<std::string>;

/// Rows that begin with `rows` alone.
inline check::Report check_rows(const std::filesystem::path& module, const std::string& rows = "",
                                std::chrono::milliseconds limit = kPatience) {
    return check::run(module, {.time_limit = limit, .rows = rows});
}

inline Ids failing(const check::Report& report) {
    Ids ids;
    for (const check::Row& row : report.rows) {
        if (row.verdict == check::Verdict::Fail) {
            ids.insert(row.id);
        }
    }
    return ids;
}

/// Ids of the rows in which a deviation shows, the list's own row left out.
inline Ids showing(const check::Report& report, const std::string& deviation) {
    Ids ids;
    for (const check::Row& row : report.rows) {
        for (const std::string& name : row.deviations) {
            if (name == deviation && row.family() != "kept") {
                ids.insert(row.id);
            }
        }
    }
    return ids;
}

/// "WHAT: WHY".
inline std::vector<std::string> unexamined(const check::Report& report) {
    std::vector<std::string> texts;
    for (const check::Unexamined& one : report.unexamined) {
        texts.push_back(one.what + ": " + one.why);
    }
    return texts;
}

inline bool leaves_out(const check::Report& report, const std::string& note) {
    const std::vector<std::string> notes = unexamined(report);
    return std::find(notes.begin(), notes.end(), note) != notes.end();
}

inline const check::Row& row(const check::Report& report, const std::string& id) {
    for (const check::Row& one : report.rows) {
        if (one.id == id) {
            return one;
        }
    }
    throw std::runtime_error("no row " + id);
}

inline std::vector<std::string> texts(const check::Row& row) {
    std::vector<std::string> all;
    for (const check::RowFinding& finding : row.findings) {
        all.push_back(finding.text);
    }
    return all;
}

}  // namespace report_support
