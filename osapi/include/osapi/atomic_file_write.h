// Writing a file so that others see the old one or the whole new one, never a part.
#pragma once

#include <base/string.h>
#include <osapi/files.h>

namespace OSAPI {

/// Writes to a temporary file and renames it to PATH when complete. Not copyable.
///
/// Destroyed before it is complete, it removes what it wrote and leaves PATH as it was. That may
/// throw; while another exception is under way the failure is printed instead.
class AtomicFileWrite {
public:
    /// Opens "PATH.inprogress". Throws "opening file "PATH.inprogress": ...".
    AtomicFileWrite(const char* path, int mode);
    /// Opens `temporary` instead, which must be on the file system of `path`: for a folder where
    /// others would take "PATH.inprogress" for a file of theirs. Throws "opening file
    /// "TEMPORARY": ...".
    AtomicFileWrite(const char* path, const char* temporary, int mode);
    AtomicFileWrite(const AtomicFileWrite&) = delete;
    AtomicFileWrite& operator=(const AtomicFileWrite&) = delete;
    ~AtomicFileWrite() noexcept(false);

    /// A new writer, owned by the caller, or null when "PATH.inprogress" cannot be created, as
    /// while another writer holds it. Throws `std::bad_alloc` and `StrXception` "out of memory"
    /// before any file is made.
    static AtomicFileWrite* exclusive(const char* path);

    /// Where to write; none once complete or aborted.
    fd_t fd() const { return descriptor_.fd(); }

    /// Brings the bytes to the disk, then puts the file in place.
    void complete();
    /// Puts the file in place without waiting for the disk. The descriptor is closed first, since
    /// closing may be what reports a failed write. Throws "close: ..." and "rename(...): ...".
    void complete_nosync();
    /// Removes what was written.
    void abort();

private:
    /// Has nothing open and nothing to remove yet.
    explicit AtomicFileWrite(const char* path);

    String path_;
    String temporary_;
    FileDescriptor descriptor_;
    bool finished_ = false;
};

}  // namespace OSAPI
