#include "database/star_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kMagicBytes = 8;

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
        head.resize(kMagicBytes);
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

bool is_star_file_name(const std::string& name) { return name.find(".stars") != std::string::npos; }

std::vector<std::string> star_files_in(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (is_star_file_name(name)) {
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
    if (head == "LUMIVAR1") {
        return {1, {}};
    }
    if (head == "LUMIVAR2") {
        return {2, {}};
    }
    if (head.empty()) {
        return {0, name + " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\""};
    }
    return {0, name + " is not a star database: it begins with " + shown_bytes(head) +
                   " instead of \"LUMIVAR1\" or \"LUMIVAR2\""};
}

int star_file_version(const std::filesystem::path& path) {
    const StarFile found = look_at_star_file(path);
    if (found.version == 0) {
        throw Failure(found.problem);
    }
    return found.version;
}

}  // namespace lumivar
