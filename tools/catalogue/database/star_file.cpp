#include "database/star_file.h"

#include <libimgops/star_database_name.h>
#include <libimgops/star_record.h>
#include <osapi/whole_file.h>

#include <algorithm>
#include <cstddef>
#include <system_error>

#include "failure.h"

namespace lumivar {

std::vector<std::string> star_files_in(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (is_star_database_name(name.c_str())) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string shown_bytes(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    std::string hex;
    for (const char character : bytes) {
        const auto code = static_cast<unsigned char>(character);
        text += character >= ' ' && character <= '~' ? character : '.';
        hex += hex.empty() ? "" : " ";
        hex += kDigits[code >> 4U];
        hex += kDigits[code & 15U];
    }
    return "\"" + text + "\" (" + hex + ")";
}

StarFile look_at_star_file(const std::filesystem::path& path) {
    const std::string name = path.string();
    std::string head;
    try {
        head = OSAPI::read_head(path.c_str(), kStarHeaderWordBytes);
    } catch (const StrXception& failure) {
        return {0, OSAPI::cannot_read(name, failure)};
    }
    const int version = head.size() == kStarHeaderWordBytes ? star_header_version(head.data()) : 0;
    if (version != 0) {
        return {version, {}};
    }
    const std::string words =
        std::string("\"") + kStarHeaderWord1 + "\" or \"" + kStarHeaderWord2 + "\"";
    if (head.empty()) {
        return {0, name + " is empty: a star database begins with " + words};
    }
    return {0, name + " is not a star database: it begins with " + shown_bytes(head) +
                   " instead of " + words};
}

int star_file_version(const std::filesystem::path& path) {
    const StarFile found = look_at_star_file(path);
    if (found.version == 0) {
        throw Failure(found.problem);
    }
    return found.version;
}

}  // namespace lumivar
