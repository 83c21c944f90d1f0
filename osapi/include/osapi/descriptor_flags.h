// Flags and copies of open descriptors.
#pragma once

#include <osapi/files.h>

namespace OSAPI {

/// Makes the descriptor non-blocking, or toggles that: asked to block, a descriptor that blocks
/// already becomes non-blocking. Throws "fcntl: ...".
void set_blocking(fd_t fd, bool blocking);

/// Closes the descriptor when another program is executed. Throws "fcntl: ...".
void close_on_exec(fd_t fd);

/// Another descriptor of the same open file, owned by the caller; it stays open when another
/// program is executed. Throws "dup: ...".
fd_t dup(fd_t fd);
/// The same under the number `to`, which is closed first if it is open. Returns `to`. Throws
/// "dup2: ...".
fd_t dup2(fd_t fd, fd_t to);

}  // namespace OSAPI
