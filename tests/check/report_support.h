// Looking at reports of checks.
#pragma once

#include <check/report.h>

#include <chrono>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace report_support {

/// For modules that come to an end, on a machine however busy.
inline constexpr std::chrono::milliseconds kPatience{60000};

inline std::set<std::string> failing(const check::Report& report) {
    std::set<std::string> ids;
    for (const check::Row& row : report.rows) {
        if (row.verdict == check::Verdict::Fail) {
            ids.insert(row.id);
        }
    }
    return ids;
}

/// Ids of the rows in which a deviation shows, the list's own row left out.
inline std::set<std::string> showing(const check::Report& report, const std::string& deviation) {
    std::set<std::string> ids;
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

inline const check::Row& row(const check::Report& report, const std::string& id) {
    for (const check::Row& one : report.rows) {
        if (one.id == id) {
            return one;
        }
    }
    throw std::runtime_error("no row " + id);
}

}  // namespace report_support
