// Descendants; each system has a way of its own to find them.
#include <base/array.h>
#include <base/exceptions.h>
#include <base/string.h>
#include <osapi/descendants.h>
#include <osapi/directories.h>
#include <osapi/processes.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "syscalls.h"

namespace OSAPI {

namespace {

/// Of the process with its files in /proc/NAME; 0 when it is gone.
int parent_of(const std::string& name) {
    std::ifstream file("/proc/" + name + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    // "ID (PROGRAM) STATE PARENT ...", and a program may have any name.
    const std::size_t behind_program = text.rfind(')');
    if (behind_program == std::string::npos) {
        return 0;
    }
    std::istringstream rest(text.substr(behind_program + 1));
    std::string state;
    int parent = 0;
    rest >> state >> parent;
    return parent;
}

}  // namespace

void lead_group() {
    if (syscalls().setpgid(0, 0) != 0) {
        XTHROW("setpgid: %s", std::strerror(errno));
    }
}

bool adopt_orphans() { return syscalls().become_reaper() == 0; }

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
