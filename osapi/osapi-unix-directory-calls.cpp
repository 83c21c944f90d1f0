// The system's own calls: what is in directories.
#include <dirent.h>

#include "syscalls.h"

namespace OSAPI {

template <>
DirectoryCalls& calls() {
    static DirectoryCalls table = {
        .opendir = ::opendir,
        .readdir = ::readdir,
        .closedir = ::closedir,
    };
    return table;
}

}  // namespace OSAPI
