// The report of a check as the user sees it.
#pragma once

#include <check/report.h>

#include <string>

namespace lumivar {

/// A table of 120 columns under a heading for each family of rows, then what was not examined, the
/// ids of the rows that fail, and the counts.
std::string report_as_text(const check::Report& report);

/// Of the JSON. Greater when something in it is named or meant otherwise; members may be added.
inline constexpr int kReportFormat = 2;

/// The same for other programs, with all findings of each row.
std::string report_as_json(const check::Report& report);

/// What went wrong, in one line: the failing row itself if it is the only one.
std::string failure_text(const check::Report& report);

}  // namespace lumivar
