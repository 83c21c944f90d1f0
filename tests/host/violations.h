// What the host noted, as text for expectations.
#pragma once

#include <host/violation.h>

#include <ostream>
#include <string>
#include <vector>

namespace host {

inline std::ostream& operator<<(std::ostream& out, const Violation& violation) {
    return out << violation.text;
}

}  // namespace host

/// A line each.
inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

inline std::string joined(const std::vector<host::Violation>& violations) {
    std::vector<std::string> lines;
    for (const host::Violation& violation : violations) {
        lines.push_back(violation.text);
    }
    return joined(lines);
}
