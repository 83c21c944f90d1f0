// Lines of a text file, pipe or standard input, one at a time.
#pragma once

#include <base/io.h>
#include <osapi/streams.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumivar {

/// Catalogues have millions of lines: they are split in place, in blocks of the file, not built up
/// as `BufferedInput::readline` does.
class LineReader {
public:
    /// Longer lines mean that the file is no text; they are refused instead of filling the memory.
    static constexpr std::size_t kLongestLine = std::size_t{1} << 20;

    /// Opens `path`; "-" is standard input. Throws `Failure`.
    explicit LineReader(const std::string& path);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Reads the next line, without its line feed and a carriage return before it; a byte-order
    /// mark at the start of the file is passed over. False at the end. The text stays valid until
    /// the next call. Throws `Failure` on a read error and on an endless line.
    bool next(std::string_view& line);
    /// Number of the line read last, from 1.
    unsigned long number() const { return number_; }
    /// Bytes of the file that have been read, and all of them; 0 for a pipe, whose length nobody
    /// knows.
    unsigned long long bytes_read() const {
        return static_cast<unsigned long long>(input_.curpos());
    }
    unsigned long long bytes_in_all() const { return file_bytes_; }
    /// What messages call the file.
    const std::string& name() const { return name_; }

private:
    bool fill();

    std::string name_;
    OSAPI::RWFileDescriptor file_;
    OSAPI::DescriptorInput source_;  ///< also of pipes, which give less than they are asked for
    BufferedInput input_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  ///< unread bytes are buffer_[begin_, end_)
    std::size_t end_ = 0;
    unsigned long number_ = 0;
    unsigned long long file_bytes_ = 0;
};

}  // namespace lumivar
