// Replacing a file only when its successor is complete.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/atomic_file_write.h>

#include <memory>

#include "syscalls.h"

namespace OSAPI {

namespace {

String temporary_path(const char* path) { return String::fmt("%s.inprogress", path); }

}  // namespace

AtomicFileWrite::AtomicFileWrite(const char* path, int mode)
    : AtomicFileWrite(path, temporary_path(path).c_str(), mode) {}

AtomicFileWrite::AtomicFileWrite(const char* path, const char* temporary, int mode)
    : path_(path), temporary_(temporary), descriptor_(open(temporary_.c_str(), mode)) {}

AtomicFileWrite::AtomicFileWrite(const char* path)
    : path_(path), temporary_(temporary_path(path)), finished_(true) {}

AtomicFileWrite::~AtomicFileWrite() noexcept(false) {
    if (!finished_) {
        release_in_destructor([this] { abort(); });
    }
}

AtomicFileWrite* AtomicFileWrite::exclusive(const char* path) {
    // The writer is made before its file: a file without a writer would never be removed, and would
    // keep out everyone who calls this later.
    std::unique_ptr<AtomicFileWrite> writer(new AtomicFileWrite(path));
    const fd_t fd = open_can_fail(writer->temporary_.c_str(), kWrite | kExclusive);
    if (fd == kNoDescriptor) {
        return nullptr;
    }
    writer->descriptor_.init(fd);
    writer->finished_ = false;
    return writer.release();
}

void AtomicFileWrite::complete() {
    sync(descriptor_.fd());
    complete_nosync();
}

void AtomicFileWrite::complete_nosync() {
    descriptor_.close();
    rename(temporary_.c_str(), path_.c_str());
    finished_ = true;
}

void AtomicFileWrite::abort() {
    // What the bytes became does not matter any more, so neither does a failure to close.
    if (descriptor_.is_open()) {
        calls<FileCalls>().close(descriptor_.release());
    }
    rm_ifexist(temporary_.c_str());
    finished_ = true;
}

}  // namespace OSAPI
