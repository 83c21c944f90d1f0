// The running program: its file, its consoles, its rights.
#pragma once

#include <base/string.h>
#include <osapi/files.h>

namespace OSAPI {

/// The absolute path of the program's file, with links followed; empty when the system cannot tell.
String program_path();

/// Whether a descriptor leads to a terminal; false for one that is not open. Do not throw.
bool is_console(fd_t fd);
bool stdin_is_console();
bool stdout_is_console();
bool stderr_is_console();

/// Whether the program may do everything: its effective user is root.
bool running_as_root();

}  // namespace OSAPI
