// A conformance report as the user sees it.
#pragma once

#include <conformance/report.h>

#include <string>

namespace lumivar {

/// A table under a heading for each family of rows, then what was not examined, then the counts.
std::string report_as_text(const conformance::Report& report);

/// The same rows and notes for other programs.
std::string report_as_json(const conformance::Report& report);

/// What went wrong, in one line: the failing row itself if it is the only one.
std::string failure_text(const conformance::Report& report);

}  // namespace lumivar
