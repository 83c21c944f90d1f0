#include "listener.h"

#include <osapi/polling.h>
#include <poll.h>

#include <array>
#include <cstddef>
#include <utility>

namespace conformance {
namespace {

using nlohmann::json;

/// What of its standard error is kept.
constexpr std::size_t kTail = 4096;

std::string last_line(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text.substr(text.rfind('\n') + 1).substr(0, 300);
}

}  // namespace

Listener::News Listener::listen(std::chrono::milliseconds time) {
    // A closed end, -1, is passed over by the call.
    std::array<pollfd, 2> ends = {pollfd{lines_.fd(), POLLIN, 0}, pollfd{words_.fd(), POLLIN, 0}};
    if (OSAPI::poll(ends.data(), ends.size(), static_cast<int>(time.count()), false) == 0) {
        return News::None;
    }
    if (ends[1].revents != 0) {
        take(words_, errors_);
        if (errors_.size() > 2 * kTail) {
            errors_.erase(0, errors_.size() - kTail);
        }
    }
    if (ends[0].revents == 0) {
        return News::Words;
    }
    take(lines_, text_);
    hear_lines();
    return News::Lines;
}

Heard Listener::heard() {
    heard_.last_words = last_line(std::move(errors_));
    return std::move(heard_);
}

void Listener::take(OSAPI::FileDescriptor& end, std::string& text) {
    std::array<char, 4096> piece{};
    const sword size = OSAPI::read_short(end.fd(), piece.data(), piece.size());
    text.append(piece.data(), static_cast<std::size_t>(size));
    if (size == 0) {
        end.close();
    }
}

void Listener::hear_lines() {
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text_.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string line = text_.substr(begin, end - begin);
        try {
            hear(json::parse(line));
        } catch (const json::exception&) {
            // A module can write to any descriptor.
            heard_.findings.push_back({"",
                                       "between the answers stands \"" + line.substr(0, 60) + "\"",
                                       "", heard_.doing});
        }
    }
    text_.erase(0, begin);
}

void Listener::hear(const json& line) {
    const std::string kind = line.at(0);
    if (kind == "end") {
        last_word_ = true;
    } else if (kind == "exit") {
        exited_ = true;
    } else if (kind == "doing") {
        heard_.doing = line.at(1);
    } else if (kind == "lacking") {
        heard_.lacking = line.at(1);
    } else if (kind == "say") {
        heard_.said = line.at(1);
    } else if (kind == "find") {
        heard_.findings.push_back({line.at(1), line.at(2), line.at(3), heard_.doing});
    } else {
        heard_.kept[line.at(1).get<std::string>()] = line.at(2);
    }
}

}  // namespace conformance
