// Regular files read in one go.
#include <fcntl.h>
#include <osapi/files.h>
#include <osapi/reason.h>
#include <osapi/whole_file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

namespace {

/// A regular file, open for reading, and its size when it was opened.
struct OpenedFile {
    explicit OpenedFile(const char* path)
        // Without O_NONBLOCK the call would wait for the other side of a pipe. Regular files do not
        // care.
        : file(calls<FileCalls>().open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0)) {
        if (!file.is_open()) {
            XTHROW("opening file \"%s\": %s", path, std::strerror(errno));
        }
        struct stat info;
        if (calls<FileCalls>().fstat(file.fd(), &info) != 0) {
            XTHROW("fstat: %s", std::strerror(errno));
        }
        // A device may be without end.
        if (!S_ISREG(info.st_mode)) {
            XTHROW("opening file \"%s\": it is no regular file%s", path,
                   S_ISDIR(info.st_mode) ? " but a folder" : "");
        }
        size = static_cast<u64>(info.st_size);
    }

    FileDescriptor file;
    u64 size = 0;
};

/// `count` bytes from the beginning, or all where there are fewer.
std::string beginning(const OpenedFile& opened, std::size_t count) {
    std::string bytes(count, '\0');
    const sword got = read_up_to(opened.file.fd(), bytes.data(), bytes.size());
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
}

}  // namespace

std::string read_head(const char* path, std::size_t most) {
    return beginning(OpenedFile(path), most);
}

std::string read_whole(const char* path, std::size_t most) {
    const OpenedFile opened(path);
    const auto size = static_cast<unsigned long long>(opened.size);
    if (size > most) {
        XTHROW("reading file \"%s\": it has %llu bytes; %llu are read at most", path, size,
               static_cast<unsigned long long>(most));
    }
    std::string bytes = beginning(opened, static_cast<std::size_t>(size));
    if (bytes.size() < size) {
        XTHROW("reading file \"%s\": it ends before its %llu bytes", path, size);
    }
    return bytes;
}

std::string cannot_read(const std::string& name, const StrXception& failure) {
    return "cannot read " + name + ": " + reason(failure).c_str();
}

}  // namespace OSAPI
