#include "star_file_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kMagicBytes = 8;

/// As text with dots for what cannot be printed, then in hexadecimal.
std::string shown_bytes(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
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

}  // namespace

int star_file_version(const std::filesystem::path& path) {
    const std::string name = path.string();
    const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        throw system_failure("cannot read " + name, errno);
    }
    struct stat status = {};
    std::array<char, kMagicBytes> head{};
    ssize_t count = -1;
    int error = fstat(descriptor, &status) == 0 ? 0 : errno;
    if (error == 0 && S_ISREG(status.st_mode)) {
        count = pread(descriptor, head.data(), head.size(), 0);
        error = count < 0 ? errno : 0;
    }
    close(descriptor);
    if (error != 0) {
        throw system_failure("cannot read " + name, error);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure("cannot read " + name + ": it is no regular file" +
                      (S_ISDIR(status.st_mode) ? " but a folder" : ""));
    }
    if (count == 0) {
        throw Failure(name + " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\"");
    }
    const std::string_view magic(head.data(), static_cast<std::size_t>(count));
    if (magic == "LUMIVAR1") {
        return 1;
    }
    if (magic == "LUMIVAR2") {
        return 2;
    }
    throw Failure(name + " is not a star database: it begins with " + shown_bytes(magic) +
                  " instead of \"LUMIVAR1\" or \"LUMIVAR2\"");
}

}  // namespace lumivar
