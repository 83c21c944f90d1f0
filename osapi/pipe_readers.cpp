#include <osapi/pipe_readers.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace OSAPI {
namespace {

constexpr std::size_t kPiece = 4096;
constexpr std::size_t kTail = 2 * kPiece;

}  // namespace

bool append_what_came(FileDescriptor& end, std::string& text) {
    std::array<char, kPiece> piece{};
    const sword size = read_short(end.fd(), piece.data(), piece.size());
    text.append(piece.data(), static_cast<std::size_t>(size));
    if (size == 0) {
        end.close();
    }
    return size != 0;
}

bool LineReader::read(const std::function<void(const std::string&)>& take) {
    const bool goes_on = append_what_came(end_, rest_);
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = rest_.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        take(rest_.substr(begin, end - begin));
    }
    rest_.erase(0, begin);
    return goes_on;
}

void TailReader::read() {
    append_what_came(end_, tail_);
    tail_.erase(0, tail_.size() - std::min(tail_.size(), kTail));
}

std::string TailReader::last_line() const {
    const std::size_t last = tail_.find_last_not_of("\r\n");
    if (last == std::string::npos) {
        return "";
    }
    const std::size_t feed = tail_.rfind('\n', last);
    const std::size_t begin = feed == std::string::npos ? 0 : feed + 1;
    return tail_.substr(begin, last + 1 - begin);
}

}  // namespace OSAPI
