#include "tables/line_reader.h"

#include <osapi/whole_file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 16;
// Blocks are larger, so they go straight from the file to their place.
constexpr int kStreamBuffer = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

OSAPI::fd_t open_input(const std::string& path) {
    if (path == "-") {
        return STDIN_FILENO;
    }
    try {
        return OSAPI::open(path.c_str(), OSAPI::kRead);
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(path, failure));
    }
}

}  // namespace

LineReader::LineReader(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      file_(open_input(path)),
      source_(file_),
      input_(source_, kStreamBuffer),
      buffer_(kLongestLine + kReadBytes) {
    struct stat status = {};
    if (fstat(file_.fd(), &status) == 0 && S_ISREG(status.st_mode)) {
        file_bytes_ = static_cast<unsigned long long>(status.st_size);
    }
}

LineReader::~LineReader() {
    if (file_.fd() == STDIN_FILENO) {
        file_.release();  // the program's, not ours to close
    }
}

bool LineReader::fill() {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    try {
        const int count = input_.read(
            buffer_.data() + end_, static_cast<int>(std::min(kReadBytes, buffer_.size() - end_)));
        end_ += static_cast<std::size_t>(count);
        return count > 0;
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(name_, failure));
    }
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = 0;
    for (;;) {
        const char* start = buffer_.data() + begin_;
        const std::size_t length = end_ - begin_;
        const void* found =
            length > searched ? std::memchr(start + searched, '\n', length - searched) : nullptr;
        bool last = false;
        if (found == nullptr) {
            if (length > kLongestLine) {
                throw Failure(name_ + ":" + std::to_string(number_ + 1) +
                              ": a line of more than a megabyte: this is no text file");
            }
            searched = length;
            if (fill()) {
                continue;
            }
            if (length == 0) {
                return false;
            }
            start = buffer_.data() + begin_;
            last = true;
        }
        const std::size_t size =
            last ? length : static_cast<std::size_t>(static_cast<const char*>(found) - start);
        line = std::string_view(start, size);
        begin_ += last ? size : size + 1;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (++number_ == 1 && line.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
            line.remove_prefix(kByteOrderMark.size());
        }
        return true;
    }
}

}  // namespace lumivar
