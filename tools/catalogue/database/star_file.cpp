#include "database/star_file.h"

#include <fcntl.h>
#include <libimgops/star_database_name.h>
#include <libimgops/star_record.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace {

/// The first bytes of a regular file, as many as there are. Returns what went wrong, or nothing.
std::string read_head(const std::filesystem::path& path, std::string& head) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return std::generic_category().message(errno);
    }
    struct stat status = {};
    std::string problem;
    if (fstat(descriptor, &status) != 0) {
        problem = std::generic_category().message(errno);
    } else if (!S_ISREG(status.st_mode)) {
        problem = S_ISDIR(status.st_mode) ? "it is no regular file but a folder"
                                          : "it is no regular file";
    } else {
        head.resize(kStarHeaderWordBytes);
        const ssize_t count = pread(descriptor, head.data(), head.size(), 0);
        if (count < 0) {
            problem = std::generic_category().message(errno);
        }
        head.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    close(descriptor);
    return problem;
}

}  // namespace

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
    const std::string problem = read_head(path, head);
    if (!problem.empty()) {
        return {0, "cannot read " + name + ": " + problem};
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
