// Lines of a text, one at a time, in constant memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tables/byte_stream.h"

namespace lumivar {

/// Catalogues have millions of lines: they are split in place, in blocks of the file. A line is
/// never copied and never held whole when it is too long.
class LineReader {
public:
    /// Longer lines are reported and passed over: they cost no more than reading their bytes.
    static constexpr std::size_t kLongestLine = std::size_t{1} << 20;

    enum class Step { Line, TooLong, End };

    /// `bytes` must outlive the reader. A byte-order mark at the start is passed over.
    explicit LineReader(ByteStream& bytes);

    /// Reads the next line, without its line feed and a carriage return before it. The text stays
    /// valid until the next call of `next` or `look_ahead`. Throws `Failure` on a read error,
    /// naming file and line.
    Step next(std::string_view& line);
    /// Number of the line read last, from 1; 0 before the first.
    std::uint64_t number() const { return number_; }
    /// What comes next: `rows` lines that are neither blank nor begin with "#", all before them, or
    /// the rest of the text, or what the buffer holds. For recognising a format before a line of it
    /// is read; of a pipe no more is asked than that.
    std::string_view look_ahead(std::size_t rows);
    /// Bytes as they come, `size` at most; 0 at the end. For what turns out to be no text.
    std::size_t read(char* bytes, std::size_t size);

    const ByteStream& bytes() const { return bytes_; }

private:
    bool fill();
    Step pass_over();
    [[noreturn]] void fail(const DamagedData& damage) const;
    Step hand_out(std::string_view& line, std::size_t size, std::size_t taken);

    ByteStream& bytes_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  ///< unread bytes are buffer_[begin_, end_)
    std::size_t end_ = 0;
    std::uint64_t number_ = 0;
};

}  // namespace lumivar
