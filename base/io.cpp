#include <base/exceptions.h>
#include <base/growing_text.h>
#include <base/io.h>
#include <base/release.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr int kNothingPushedBack = -1;
constexpr char kLineFeed = '\n';
constexpr char kCarriageReturn = '\r';

bool ends_line(char byte) { return byte == kLineFeed || byte == kCarriageReturn; }

char* new_buffer(int size) {
    XASSERT(size >= 0);
    return new char[static_cast<uword>(size)];
}

void copy_bytes(char* dest, const char* bytes, int count) {
    std::memcpy(dest, bytes, static_cast<uword>(count));
}

/// Drops the first `dropped` of `filled` bytes, so that the rest lies at the start.
void drop_front(char* buffer, int& filled, int dropped) {
    filled -= dropped;
    std::memmove(buffer, buffer + dropped, static_cast<uword>(filled));
}

}  // namespace

BufferedInput::BufferedInput(Input& source, int buffer_size)
    : source_(source),
      buffer_(new_buffer(buffer_size)),
      size_(buffer_size),
      pushed_back_(kNothingPushedBack) {}

int BufferedInput::read(char* dest, int count) {
    if (count < 1) {
        return 0;
    }
    if (size_ == 0) {
        const int got = source_.read(dest, count);
        position_ += got;
        return got;
    }
    const int pushed_back = pushed_back_;
    const int buffered = buffered_;
    int done = take(dest, count);
    if (done < count && !at_end_) {
        // Everything held is in `dest` by now; should the source fail, it is put back from there.
        const auto put_back = [&] {
            copy_bytes(buffer_.get(), dest + done - buffered, buffered);
            buffered_ = buffered;
            pushed_back_ = pushed_back;
        };
        try {
            const int got = ask_source(dest + done, count - done);
            if (got < 0) {
                put_back();
                return got;
            }
            done += got;
        } catch (...) {
            put_back();
            throw;
        }
    }
    position_ += done;
    return done;
}

/// Up to `count` bytes of what is pushed back and buffered.
int BufferedInput::take(char* dest, int count) {
    int done = 0;
    if (pushed_back_ != kNothingPushedBack) {
        dest[done++] = static_cast<char>(pushed_back_);
        pushed_back_ = kNothingPushedBack;
    }
    const int from_buffer = std::min(count - done, buffered_);
    copy_bytes(dest + done, buffer_.get(), from_buffer);
    drop_front(buffer_.get(), buffered_, from_buffer);
    return done + from_buffer;
}

/// Up to `count` bytes from the source, with nothing held. Asking once is enough: either the whole
/// request goes straight through, or a buffer holds more than it, or the source ends.
int BufferedInput::ask_source(char* dest, int count) {
    const bool straight = count >= size_;
    const int asked = straight ? count : size_;
    const int got = source_.read(straight ? dest : buffer_.get(), asked);
    if (got < 0) {
        return got;  // a failure, not the end: the next read asks again
    }
    at_end_ = got < asked;
    if (straight) {
        return got;
    }
    buffered_ = got;
    return take(dest, count);
}

String BufferedInput::readline() {
    GrowingText line;
    char byte = 0;
    int got = read(&byte, 1);
    if (got == 0) {
        return {};
    }
    while (got > 0) {
        line.add(byte);
        if (ends_line(byte)) {
            break;
        }
        got = read(&byte, 1);
    }
    if (got > 0) {
        char next = 0;
        got = read(&next, 1);
        if (got > 0 && ends_line(next) && next != byte) {
            line.add(next);
        } else if (got > 0) {
            unread(next);
        }
    }
    if (got < 0) {
        XTHROW("read error");
    }
    return line.take();
}

void BufferedInput::unread(char byte) {
    if (pushed_back_ != kNothingPushedBack) {
        XTHROW("can't unread more than 1 byte");
    }
    // Signed on every target, so 0xFF becomes the mark for nothing and is lost: kept as it is.
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): the sign is wanted
    pushed_back_ = static_cast<signed char>(byte);
    position_ -= 1;
}

void BufferedInput::forget() {
    buffered_ = 0;
    pushed_back_ = kNothingPushedBack;
    at_end_ = false;
}

s64 BufferedInput::seek_from_start(s64 position) {
    if (position != position_) {
        position_ = source_.seek_from_start(position);
        forget();
    }
    return position_;
}

s64 BufferedInput::seek_from_curpos(s64 offset) {
    // Absolute, since the source is ahead of this stream by what is buffered.
    return offset != 0 ? seek_from_start(position_ + offset) : position_;
}

BufferedOutput::BufferedOutput(Output& sink, int buffer_size)
    : sink_(sink), buffer_(new_buffer(buffer_size)), size_(buffer_size) {}

BufferedOutput::~BufferedOutput() noexcept(false) {
    release_in_destructor([this] { flush(); });
}

int BufferedOutput::write(const char* bytes, int count) {
    if (count < 1) {
        return 0;
    }
    if (size_ - waiting_ < count) {
        flush();
    }
    int taken = count;
    if (count <= size_) {
        copy_bytes(buffer_.get() + waiting_, bytes, count);
        waiting_ += count;
    } else {
        taken = sink_.write(bytes, count);
    }
    position_ += taken;
    return taken;
}

void BufferedOutput::flush() {
    while (waiting_ > 0) {
        const int taken = sink_.write(buffer_.get(), waiting_);
        if (taken < 0) {
            XTHROW("write error");
        }
        drop_front(buffer_.get(), waiting_, taken);
    }
}

s64 BufferedOutput::seek_from_start(s64 position) {
    if (position != position_) {
        flush();
        position_ = sink_.seek_from_start(position);
    }
    return position_;
}

s64 BufferedOutput::seek_from_curpos(s64 offset) {
    return offset != 0 ? seek_from_start(position_ + offset) : position_;
}
