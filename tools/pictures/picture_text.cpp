#include "picture_text.h"

#include <cstddef>
#include <sstream>

namespace lumivar {

std::string description_of(const PictureInfo& info) {
    std::string text = info.title;
    for (const auto& [key, value] : info.details) {
        text.append("\n").append(key).append(": ").append(value);
    }
    return text;
}

void add_described(const std::string& description, PictureDetails& details) {
    std::istringstream lines(description);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (colon != std::string::npos) {
            details.emplace(line.substr(0, colon), line.substr(colon + 2));
        }
    }
}

void add_attribute(std::string_view name, std::string_view value, PictureDetails& details) {
    if (name.substr(0, kDetailPrefix.size()) == kDetailPrefix) {
        details[std::string(name.substr(kDetailPrefix.size()))] = std::string(value);
    }
}

}  // namespace lumivar
