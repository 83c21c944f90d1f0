// What comes through a pipe while somebody writes: all, line by line, or its end alone.
#pragma once

#include <osapi/files.h>

#include <functional>
#include <string>

namespace OSAPI {

/// Appends what has come to the text, waiting for some; false at the pipe's end, where this end is
/// closed. Throws "read: ...".
bool append_what_came(FileDescriptor& end, std::string& text);

/// Reads from an end of a pipe that the caller owns.
class LineReader {
public:
    explicit LineReader(FileDescriptor& end) : end_(end) {}

    /// Reads what has come, waiting for some, and passes on each whole line without its line feed.
    /// At the pipe's end closes this end and returns false; a last line without a line feed is
    /// lost. Throws "read: ...", and what `take` throws.
    bool read(const std::function<void(const std::string& line)>& take);

private:
    FileDescriptor& end_;
    std::string rest_;
};

/// The same, and keeps the last few thousand bytes alone.
class TailReader {
public:
    explicit TailReader(FileDescriptor& end) : end_(end) {}

    /// Reads what has come, waiting for some; closes this end at the pipe's end. Throws "read:
    /// ...".
    void read();
    /// The last line that is not empty, without its line feed.
    std::string last_line() const;

private:
    FileDescriptor& end_;
    std::string tail_;
};

}  // namespace OSAPI
