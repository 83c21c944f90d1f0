// Pipes, and pipes that have a name in the file system.
#pragma once

#include <osapi/files.h>

namespace OSAPI {

/// What is written at one end is read at the other. Both stay open when another program is
/// executed.
class Pipe {
public:
    /// Asserts that neither end is open. Throws "pipe: ...". Either failure leaves both ends as
    /// they were.
    void open();

    FileDescriptor& read_end() { return read_end_; }
    FileDescriptor& write_end() { return write_end_; }

private:
    FileDescriptor read_end_;
    FileDescriptor write_end_;
};

/// Makes a pipe at `path` (permissions 0664, less the umask). Throws "mknod(PATH): ...".
void make_named_pipe(const char* path);

}  // namespace OSAPI
