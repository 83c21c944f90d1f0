#include "tables/line_reader.h"

#include <algorithm>
#include <cstring>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 17;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

LineReader::LineReader(ByteStream& bytes) : bytes_(bytes), buffer_(kLongestLine + kReadBytes) {
    while (end_ < kByteOrderMark.size() && fill()) {
    }
    if (std::string_view(buffer_.data(), end_).substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        begin_ += kByteOrderMark.size();
    }
}

void LineReader::fail(const DamagedData& damage) const {
    throw Failure(bytes_.name() + ":" + std::to_string(number_ + 1) + ": " + damage.what());
}

bool LineReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    try {
        const std::size_t count = bytes_.read(buffer_.data() + end_, buffer_.size() - end_);
        end_ += count;
        return count > 0;
    } catch (const DamagedData& damage) {
        fail(damage);
    }
}

std::string_view LineReader::look_ahead(std::size_t rows) {
    std::size_t seen = 0;  // bytes of whole lines that have been counted
    while (rows > 0) {
        const std::string_view ready(buffer_.data() + begin_, end_ - begin_);
        const std::size_t end = ready.find('\n', seen);
        if (end != std::string_view::npos) {
            const bool is_row =
                ready[seen] != '#' &&
                ready.substr(seen, end - seen).find_first_not_of(" \t\r") != std::string_view::npos;
            rows -= is_row ? 1U : 0U;
            seen = end + 1;
        } else if (ready.size() > kLongestLine || !fill()) {
            return {buffer_.data() + begin_, end_ - begin_};
        }
    }
    // No more than that, even where more is there: what a file is taken for must not depend on the
    // pieces in which it comes.
    return {buffer_.data() + begin_, seen};
}

std::size_t LineReader::read(char* bytes, std::size_t size) {
    if (begin_ == end_) {
        try {
            return bytes_.read(bytes, size);
        } catch (const DamagedData& damage) {
            fail(damage);
        }
    }
    const std::size_t count = std::min(size, end_ - begin_);
    std::memcpy(bytes, buffer_.data() + begin_, count);
    begin_ += count;
    return count;
}

LineReader::Step LineReader::hand_out(std::string_view& line, std::size_t size, std::size_t taken) {
    line = std::string_view(buffer_.data() + begin_, size);
    begin_ += taken;
    ++number_;
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line.size() > kLongestLine ? Step::TooLong : Step::Line;
}

LineReader::Step LineReader::pass_over() {
    ++number_;
    do {
        const void* found = std::memchr(buffer_.data() + begin_, '\n', end_ - begin_);
        if (found != nullptr) {
            begin_ = static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data()) + 1;
            return Step::TooLong;
        }
        begin_ = end_;
    } while (fill());
    return Step::TooLong;
}

LineReader::Step LineReader::next(std::string_view& line) {
    std::size_t searched = 0;
    for (;;) {
        const char* start = buffer_.data() + begin_;
        const std::size_t length = end_ - begin_;
        const void* found =
            length > searched ? std::memchr(start + searched, '\n', length - searched) : nullptr;
        if (found != nullptr) {
            const auto size = static_cast<std::size_t>(static_cast<const char*>(found) - start);
            return hand_out(line, size, size + 1);
        }
        // The carriage return of a longest line may be here already, and its line feed not yet.
        if (length > kLongestLine + 1) {
            return pass_over();
        }
        searched = length;
        if (!fill()) {
            return length == 0 ? Step::End : hand_out(line, length, length);
        }
    }
}

}  // namespace lumivar
