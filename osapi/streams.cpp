// Streams over descriptors.
#include <base/exceptions.h>
#include <osapi/streams.h>

namespace OSAPI {

namespace {

constexpr int kBufferSize = 4096;

uword byte_count(int count) {
    XASSERT(count >= 0);
    return static_cast<uword>(count);
}

/// Moves `file` unless it is there already; `position` follows, and is returned.
s64 move_to(DiskFile& file, s64& position, s64 target) {
    if (target != position) {
        position = file.seek_from_start(target);
    }
    return position;
}

s64 move_by(DiskFile& file, s64& position, s64 offset) {
    if (offset != 0) {
        position = file.seek_from_curpos(offset);
    }
    return position;
}

}  // namespace

int FileInput::read(char* dest, int count) {
    const int got = static_cast<int>(file_.read_short(dest, byte_count(count)));
    position_ += got;
    return got;
}

s64 FileInput::seek_from_start(s64 position) { return move_to(file_, position_, position); }

s64 FileInput::seek_from_curpos(s64 offset) { return move_by(file_, position_, offset); }

int FileOutput::write(const char* bytes, int count) {
    const int written = static_cast<int>(file_.write(bytes, byte_count(count)));
    position_ += written;
    return written;
}

s64 FileOutput::seek_from_start(s64 position) { return move_to(file_, position_, position); }

s64 FileOutput::seek_from_curpos(s64 offset) { return move_by(file_, position_, offset); }

int DescriptorInput::read(char* dest, int count) {
    const int got = static_cast<int>(read_up_to(descriptor_.fd(), dest, byte_count(count)));
    position_ += got;
    return got;
}

s64 DescriptorInput::seek_from_start(s64 position) {
    return position_ = OSAPI::seek_from_start(descriptor_.fd(), position);
}

s64 DescriptorInput::seek_from_curpos(s64 offset) {
    return position_ = OSAPI::seek_from_curpos(descriptor_.fd(), offset);
}

BufferedFileInput::BufferedFileInput(const char* path, int mode)
    : file_(path, mode), input_(file_), buffered_(input_, kBufferSize) {}

BufferedFileOutput::LeaveOpen::~LeaveOpen() {
    if (at_end_ == AtEnd::LeaveOpen) {
        file_.release();
    }
}

BufferedFileOutput::BufferedFileOutput(const char* path, int mode, AtEnd at_end)
    : file_(path, mode),
      leave_open_(file_, at_end),
      output_(file_),
      buffered_(output_, kBufferSize) {}

}  // namespace OSAPI
