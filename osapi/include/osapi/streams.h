// Byte streams over files and other descriptors.
#pragma once

#include <base/io.h>
#include <base/string.h>
#include <base/words.h>
#include <osapi/files.h>

namespace OSAPI {

/// The bytes of a file as they come.
class FileInput : public Input {
public:
    /// Reads from `file`, which must outlive this object. The position counts from 0.
    explicit FileInput(DiskFile& file) : file_(file) {}

    s64 curpos() const override { return position_; }
    /// One read: 0 at the end of the file, and perhaps fewer bytes than asked before it. Throws
    /// "read: ...".
    int read(char* dest, int count) override;
    /// Moves the file unless it is there already. Throw "lseek: ..." and stay where they were.
    s64 seek_from_start(s64 position) override;
    s64 seek_from_curpos(s64 offset) override;

private:
    s64 position_ = 0;
    DiskFile& file_;
};

/// Writes to a file at once.
class FileOutput : public Output {
public:
    /// Writes to `file`, which must outlive this object. The position counts from 0.
    explicit FileOutput(DiskFile& file) : file_(file) {}

    s64 curpos() const override { return position_; }
    /// Writes all bytes and returns their count. Throws "write: ..."; some of them may be in the
    /// file then, and are not counted.
    int write(const char* bytes, int count) override;
    /// Moves the file unless it is there already. Throw "lseek: ..." and stay where they were.
    s64 seek_from_start(s64 position) override;
    s64 seek_from_curpos(s64 offset) override;

private:
    s64 position_ = 0;
    DiskFile& file_;
};

/// Any descriptor as a source that fills its requests, for a `BufferedInput` over pipes and
/// terminals, which give what they have just got.
class DescriptorInput : public Input {
public:
    /// Reads from `descriptor`, which must outlive this object. The position counts from 0,
    /// wherever the descriptor stands.
    explicit DescriptorInput(RWFileDescriptor& descriptor) : descriptor_(descriptor) {}

    s64 curpos() const override { return position_; }
    /// Waits for `count` bytes; fewer only at the end. Throws "read: ...".
    int read(char* dest, int count) override;
    /// Throw "lseek: ...", always for what cannot seek.
    s64 seek_from_start(s64 position) override;
    s64 seek_from_curpos(s64 offset) override;

private:
    s64 position_ = 0;
    RWFileDescriptor& descriptor_;
};

/// A file opened for buffered reading, 4096 bytes at a time.
class BufferedFileInput : public Input {
public:
    /// `mode` as for `open`. Throws "opening file "PATH": ...".
    BufferedFileInput(const char* path, int mode);

    s64 curpos() const override { return buffered_.curpos(); }
    int read(char* dest, int count) override { return buffered_.read(dest, count); }
    s64 seek_from_start(s64 position) override { return buffered_.seek_from_start(position); }
    s64 seek_from_curpos(s64 offset) override { return buffered_.seek_from_curpos(offset); }

    /// As `BufferedInput` has them.
    String readline() { return buffered_.readline(); }
    void unread(char byte) { buffered_.unread(byte); }

private:
    DiskFile file_;
    FileInput input_;
    BufferedInput buffered_;
};

/// A file opened for buffered writing, 4096 bytes at a time.
///
/// The destructor flushes and closes, either of which may throw. When the flush fails, the file is
/// closed all the same.
class BufferedFileOutput : public Output {
public:
    enum class AtEnd {
        Close,
        /// Whoever took `fd()` owns the descriptor when this object is gone, even if the last flush
        /// has failed.
        LeaveOpen,
    };

    /// `mode` as for `open`. Throws "opening file "PATH": ...".
    BufferedFileOutput(const char* path, int mode, AtEnd at_end = AtEnd::Close);

    s64 curpos() const override { return buffered_.curpos(); }
    int write(const char* bytes, int count) override { return buffered_.write(bytes, count); }
    s64 seek_from_start(s64 position) override { return buffered_.seek_from_start(position); }
    s64 seek_from_curpos(s64 offset) override { return buffered_.seek_from_curpos(offset); }

    void flush() { buffered_.flush(); }
    /// The file's descriptor.
    fd_t fd() const { return file_.fd(); }

private:
    // Between the file and the buffer, so that the descriptor is released after the last flush,
    // even a failed one, and before the file closes what it still has.
    class LeaveOpen {
    public:
        LeaveOpen(DiskFile& file, AtEnd at_end) : file_(file), at_end_(at_end) {}
        LeaveOpen(const LeaveOpen&) = delete;
        LeaveOpen& operator=(const LeaveOpen&) = delete;
        ~LeaveOpen();

    private:
        DiskFile& file_;
        AtEnd at_end_;
    };

    DiskFile file_;
    LeaveOpen leave_open_;
    FileOutput output_;
    BufferedOutput buffered_;
};

}  // namespace OSAPI
