#include "line_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 16;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

LineReader::LineReader(const std::string& path)
    : name_(path == "-" ? "standard input" : path), buffer_(kLongestLine + kReadBytes) {
    descriptor_ = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) {
        throw system_failure("cannot read " + name_, errno);
    }
    struct stat status = {};
    if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        file_bytes_ = static_cast<unsigned long long>(status.st_size);
    }
}

LineReader::~LineReader() {
    if (descriptor_ > STDIN_FILENO) {
        close(descriptor_);
    }
}

bool LineReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    for (;;) {
        const std::size_t room = std::min(kReadBytes, buffer_.size() - end_);
        const ssize_t count = read(descriptor_, buffer_.data() + end_, room);
        if (count >= 0) {
            end_ += static_cast<std::size_t>(count);
            read_bytes_ += static_cast<unsigned long long>(count);
            return count > 0;
        }
        if (errno != EINTR) {
            throw system_failure("cannot read " + name_, errno);
        }
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
