// Descendants; each system has a way of its own to find them.
#include <base/array.h>
#include <base/exceptions.h>
#include <base/string.h>
#include <osapi/descendants.h>
#include <osapi/directories.h>
#include <osapi/processes.h>
#include <osapi/whole_file.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "syscalls.h"

namespace OSAPI {

namespace {

/// The line that the system keeps of the process called `name`; empty when it is gone, as it may be
/// from one call to the next.
std::string stat_line(const std::string& name) {
    // Longer than all that stands before the parent.
    constexpr std::size_t kMost = 512;
    try {
        return read_head(("/proc/" + name + "/stat").c_str(), kMost);
    } catch (const Xception&) {
        return {};
    }
}

/// 0 when the process is gone.
int parent_of(const std::string& name) {
    const std::string line = stat_line(name);
    // "ID (PROGRAM) STATE PARENT ...", and a program may have any name.
    const std::size_t behind_program = line.rfind(')');
    if (behind_program == std::string::npos) {
        return 0;
    }
    std::istringstream rest(line.substr(behind_program + 1));
    std::string state;
    int parent = 0;
    rest >> state >> parent;
    return parent;
}

}  // namespace

void lead_group() {
    if (calls<ProcessCalls>().setpgid(0, 0) != 0) {
        XTHROW("setpgid: %s", std::strerror(errno));
    }
}

bool end_with_parent() { return calls<ProcessCalls>().die_with_parent() == 0; }
bool adopt_orphans() { return calls<ProcessCalls>().become_reaper() == 0; }

std::vector<int> children() {
    Array<String> names;
    try {
        lsdir("/proc", names);
    } catch (const Xception&) {
        return {};
    }
    const int self = getpid();
    std::vector<int> ids;
    for (uword i = 0; i < names.len(); ++i) {
        const std::string name = names[i].c_str();
        const bool number = std::all_of(name.begin(), name.end(),
                                        [](unsigned char c) { return std::isdigit(c) != 0; });
        if (number && parent_of(name) == self) {
            ids.push_back(std::atoi(name.c_str()));
        }
    }
    return ids;
}

}  // namespace OSAPI
