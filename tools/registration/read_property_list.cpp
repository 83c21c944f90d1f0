#include "read_property_list.h"

#include <algorithm>
#include <utility>

namespace bundle {
namespace {

/// The list with blanks in place of its comments: what they hold is not there, and what is there
/// keeps its line.
std::string without_comments(std::string list) {
    static const std::string end = "-->";
    for (std::size_t at = list.find("<!--"); at != std::string::npos; at = list.find("<!--", at)) {
        const std::size_t close = list.find(end, at + 4);
        const std::size_t behind = close == std::string::npos ? list.size() : close + end.size();
        std::replace_if(
            list.begin() + static_cast<std::ptrdiff_t>(at),
            list.begin() + static_cast<std::ptrdiff_t>(behind), [](char c) { return c != '\n'; },
            ' ');
    }
    return list;
}

}  // namespace

PropertyList::PropertyList(std::string text) : text_(without_comments(std::move(text))) {}

Entry PropertyList::entry(const std::string& key) const {
    static const std::string open = "<string>";
    const std::string name = "<key>" + key + "</key>";
    const std::size_t at = text_.find(name);
    if (at == std::string::npos) {
        return {};
    }
    const auto lines =
        std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    Entry entry{static_cast<std::size_t>(lines) + 1, std::nullopt};
    const std::size_t next = text_.find_first_not_of(" \t\r\n", at + name.size());
    if (next != std::string::npos && text_.compare(next, open.size(), open) == 0) {
        const std::size_t begin = next + open.size();
        const std::size_t end = text_.find("</string>", begin);
        if (end != std::string::npos) {
            entry.value = text_.substr(begin, end - begin);
        }
    }
    return entry;
}

}  // namespace bundle
