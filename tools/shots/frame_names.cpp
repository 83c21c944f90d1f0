#include "frame_names.h"

#include <utility>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kWidest = 99;

bool is_digit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

FrameNames::FrameNames(std::string pattern) : pattern_(std::move(pattern)) {
    const std::size_t slash = pattern_.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    find_percent(name);
    if (length_ == 0) {
        find_hashes(name);
    } else if (pattern_.find("##", name) != std::string::npos) {
        throw UsageError("the name \"" + pattern_ + "\" has two places for a frame's number, " +
                         pattern_.substr(start_, length_) + " and ####; leave one");
    }
}

void FrameNames::find_percent(std::size_t name) {
    for (std::size_t at = pattern_.size(); at-- > name;) {
        if (pattern_[at] != '%') {
            continue;
        }
        std::size_t end = at + 1;
        std::size_t width = 0;
        while (end < pattern_.size() && is_digit(pattern_[end]) && width <= kWidest) {
            width = 10 * width + static_cast<std::size_t>(pattern_[end++] - '0');
        }
        // "%4d" would put blanks before the number, which no name of a sequence has.
        const bool has_zeros = end == at + 1 || pattern_[at + 1] == '0';
        if (end < pattern_.size() && pattern_[end] == 'd' && has_zeros && width <= kWidest) {
            start_ = at;
            length_ = end + 1 - at;
            width_ = width;
            return;
        }
    }
}

void FrameNames::find_hashes(std::size_t name) {
    const std::size_t last = pattern_.rfind('#');
    if (last == std::string::npos || last < name) {
        return;
    }
    start_ = last;
    while (start_ > name && pattern_[start_ - 1] == '#') {
        --start_;
    }
    length_ = last + 1 - start_;
    width_ = length_;
}

std::string FrameNames::name_of(int frame) const {
    if (!are_numbered()) {
        return pattern_;
    }
    std::string number = std::to_string(frame);
    if (number.size() < width_) {
        number.insert(frame < 0 ? 1 : 0, width_ - number.size(), '0');
    }
    std::string name = pattern_;
    return name.replace(start_, length_, number);
}

}  // namespace lumivar
