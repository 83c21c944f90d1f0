// The system's own calls: what paths name, and where they start from.
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cstdio>

#include "syscalls.h"

namespace OSAPI {

template <>
PathCalls& calls() {
    static PathCalls table = {
        .stat = ::stat,
        .rename = ::rename,
        .unlink = ::unlink,
        .access = ::access,
        .utime = ::utime,
        .getcwd = ::getcwd,
        .chdir = ::chdir,
        .glob = ::glob,
    };
    return table;
}

}  // namespace OSAPI
