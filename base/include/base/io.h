// Byte streams: sources and sinks with a position, and a buffer over any of them.
//
// Text files are read line by line with `BufferedInput::readline`, which goes byte by byte and
// moves the buffer at each: it serves small files. Per-star work reads blocks and splits them in
// place.
#pragma once

#include <base/scoped_ptr.h>
#include <base/string.h>
#include <base/words.h>

/// A source of bytes. The order of the virtual functions is fixed.
///
/// Destructors may throw, since those of the files beneath do.
class Input {
public:
    Input() = default;
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    virtual ~Input() noexcept(false) = default;

    /// Bytes from the start of the stream to the next byte.
    virtual s64 curpos() const = 0;
    /// Reads at most `count` bytes into `dest`. Returns how many; a source that does not throw
    /// reports a failure as a negative count.
    virtual int read(char* dest, int count) = 0;
    /// Moves to `position`, or by `offset` from here, and returns the new position.
    virtual s64 seek_from_start(s64 position) = 0;
    virtual s64 seek_from_curpos(s64 offset) = 0;
};

/// A sink for bytes. The order of the virtual functions is fixed.
///
/// Destructors may throw: what is written may turn out unwritable only then.
class Output {
public:
    Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    virtual ~Output() noexcept(false) = default;

    /// Bytes from the start of the stream to where the next byte goes.
    virtual s64 curpos() const = 0;
    /// Writes at most `count` bytes. Returns how many; a sink that does not throw reports a failure
    /// as a negative count.
    virtual int write(const char* bytes, int count) = 0;
    /// Moves to `position`, or by `offset` from here, and returns the new position.
    virtual s64 seek_from_start(s64 position) = 0;
    virtual s64 seek_from_curpos(s64 offset) = 0;
};

/// Reads a source in whole buffers, and lines and single bytes out of them.
///
/// A source that gives fewer bytes than it was asked for is taken to be at its end, and is not
/// asked again before the next seek: over pipes, use a source that fills its requests.
class BufferedInput : public Input {
public:
    /// Reads from `source`, which must outlive this object and not be moved by others. With a
    /// `buffer_size` of 0 every read goes straight to the source. Throws `std::bad_alloc`; asserts
    /// that the size is not negative.
    BufferedInput(Input& source, int buffer_size);

    s64 curpos() const override { return position_; }
    /// Reads `count` bytes; fewer only at the end of the input.
    ///
    /// What the source throws goes on to the caller, and a negative count of the source is
    /// returned; either way nothing is taken, so that the next read begins with the same byte.
    int read(char* dest, int count) override;
    /// Moves the source and forgets what is buffered and pushed back; the present position and an
    /// offset of 0 change nothing at all. When the source throws, nothing has changed.
    s64 seek_from_start(s64 position) override;
    s64 seek_from_curpos(s64 offset) override;

    /// The next line with its ending: line feed, carriage return or both in either order. The last
    /// line may have none; an empty result is the end of the input. Bytes of value 0 are lost, as
    /// a `String` cannot hold them, and 0xFF where it begins a line but the first, by `unread`.
    /// Throws `StrXception` "read error" and "out of memory (...)".
    String readline();
    /// Makes `byte` the next one to be read and steps back by 1. Throws `StrXception` "can't unread
    /// more than 1 byte". The byte 0xFF is lost: the next read gives the byte after it.
    ///
    /// Without a buffer a pushed-back byte is never read again, so that `readline` over such a
    /// stream loses the first byte of every line but the first, and throws at the second.
    void unread(char byte);

private:
    int take(char* dest, int count);
    int ask_source(char* dest, int count);
    void forget();

    Input& source_;
    s64 position_ = 0;
    scoped_array<char> buffer_;
    int size_;
    int buffered_ = 0;  // bytes, always at the buffer's start
    int pushed_back_;
    bool at_end_ = false;
};

/// Gathers small writes and passes them to a sink in whole buffers.
class BufferedOutput : public Output {
public:
    /// Writes to `sink`, which must outlive this object and not be moved by others. With a
    /// `buffer_size` of 0 every write goes straight to the sink. Throws `std::bad_alloc`; asserts
    /// that the size is not negative.
    BufferedOutput(Output& sink, int buffer_size);
    /// Flushes, and lets a failure escape. While another exception is under way the failure is
    /// printed instead.
    ~BufferedOutput() noexcept(false) override;

    s64 curpos() const override { return position_; }
    /// Writes `count` bytes. Those that do not fit into the buffer go straight to the sink, after
    /// the waiting ones; then the sink's count is returned. Throws as `flush` does, with none of
    /// the bytes taken.
    int write(const char* bytes, int count) override;
    /// Flushes, then moves the sink; the present position and an offset of 0 do nothing at all.
    s64 seek_from_start(s64 position) override;
    s64 seek_from_curpos(s64 offset) override;

    /// Passes on all that waits. Throws `StrXception` "write error" for a negative count of the
    /// sink, and whatever the sink throws; the bytes that it has not counted go on waiting.
    void flush();

private:
    Output& sink_;
    s64 position_ = 0;
    scoped_array<char> buffer_;
    int size_;
    int waiting_ = 0;  // bytes, always at the buffer's start
};
