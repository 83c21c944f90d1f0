#include "frame_range.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace {

/// One part of a range, read from its front to its end.
class Part {
public:
    Part(std::string_view text, const std::string& whole, const std::string& option)
        : text_(text), rest_(text), whole_(whole), option_(option) {}

    [[noreturn]] void fail(const std::string& why) const {
        std::string message = option_;
        message += " \"" + whole_ + "\": ";
        if (text_ != whole_) {
            message += "in \"" + std::string(text_) + "\" ";
        }
        throw UsageError(message + why);
    }
    int number(const char* what) {
        int value = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (error == std::errc::result_out_of_range) {
            fail(std::string(what) + " is too large");
        }
        if (error != std::errc()) {
            fail(std::string(what) +
                 " is missing; give frames such as 1001-1240, 1-100x2 or 1,5,9-12");
        }
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return value;
    }
    /// Whether the character comes next; it is passed over then.
    bool takes(char character) {
        const bool next = !rest_.empty() && rest_.front() == character;
        rest_.remove_prefix(next ? 1 : 0);
        return next;
    }
    void end() const {
        if (!rest_.empty()) {
            fail("\"" + std::string(rest_) +
                 "\" is too much; give frames such as 1001-1240, 1-100x2 or 1,5,9-12");
        }
    }

private:
    std::string_view text_;
    std::string_view rest_;
    const std::string& whole_;
    const std::string& option_;
};

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

void add_part(Part part, std::vector<int>& frames) {
    const std::int64_t first = part.number("the first frame");
    std::int64_t last = first;
    std::int64_t step = 1;
    if (part.takes('-')) {
        last = part.number("the last frame");
        if (part.takes('x')) {
            step = part.number("the step after the x");
        }
    }
    part.end();
    if (last < first) {
        part.fail("the last frame comes before the first");
    }
    if (step < 1) {
        part.fail("the step after the x is not above 0");
    }
    if ((last - first) / step + static_cast<std::int64_t>(frames.size()) >= kMostFrames) {
        part.fail("there are more than " + std::to_string(kMostFrames) + " frames");
    }
    for (std::int64_t frame = first; frame <= last; frame += step) {
        frames.push_back(static_cast<int>(frame));
    }
}

/// How many frames from `at` on are evenly apart.
std::size_t even_run(const std::vector<int>& frames, std::size_t at) {
    std::size_t end = std::min(at + 2, frames.size());
    while (end < frames.size() && std::int64_t{frames[end]} - frames[end - 1] ==
                                      std::int64_t{frames[at + 1]} - frames[at]) {
        ++end;
    }
    return end - at;
}

}  // namespace

std::vector<int> parse_frame_range(const std::string& text, const std::string& option) {
    std::vector<int> frames;
    std::string_view rest = text;
    while (true) {
        const std::size_t comma = rest.find(',');
        add_part(Part(trimmed(rest.substr(0, comma)), text, option), frames);
        if (comma == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(comma + 1);
    }
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
}

std::string frame_range_text(const std::vector<int>& frames) {
    std::string text;
    for (std::size_t at = 0; at < frames.size();) {
        text += (text.empty() ? "" : ",") + std::to_string(frames[at]);
        const std::size_t run = even_run(frames, at);
        const std::int64_t step =
            run > 1 ? std::int64_t{frames[at + 1]} - frames[at] : std::int64_t{1};
        // Two frames apart by more than one are shorter, and clearer, one by one.
        if (run > 2 || (run == 2 && step == 1)) {
            text += "-" + std::to_string(frames[at + run - 1]);
            if (step > 1) {
                text += "x" + std::to_string(step);
            }
            at += run;
        } else {
            ++at;
        }
    }
    return text;
}

}  // namespace lumivar
