#include "exr_attributes.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

/// Names in a file are shorter, long ones included.
constexpr std::size_t kLongestName = 255;

/// Up to the zero byte at its end, which goes with it.
std::string next_name(std::istream& file) {
    std::string name;
    for (char character = 0; file.get(character) && character != '\0';) {
        if (name.size() == kLongestName) {
            file.setstate(std::ios::failbit);
        }
        name += character;
    }
    return name;
}

std::uint32_t next_size(std::istream& file) {
    std::uint32_t size = 0;
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        size |= static_cast<std::uint32_t>(file.get() & 0xFF) << shift;
    }
    return size;
}

/// Bytes of the types that this program's pictures have; 0: any number.
const std::map<std::string, std::uint32_t>& sizes_of_types() {
    static const std::map<std::string, std::uint32_t> sizes = {
        {"box2i", 16}, {"chlist", 0},    {"compression", 1}, {"float", 4},
        {"int", 4},    {"lineOrder", 1}, {"m44f", 64},       {"rational", 8},
        {"string", 0}, {"timecode", 8},  {"v2f", 8}};
    return sizes;
}

/// Whether a list of channels takes so many bytes: the library reads it up to its end, whatever
/// its size is said to be.
bool is_channel_list(std::istream& file, std::uint32_t size) {
    constexpr std::streamoff kBehindName = 16;
    const std::streamoff end = file.tellg() + static_cast<std::streamoff>(size);
    bool has_ended = false;
    while (file && !has_ended && file.tellg() < end) {
        has_ended = next_name(file).empty();
        if (!has_ended) {
            file.seekg(kBehindName, std::ios::cur);
        }
    }
    return file && has_ended && file.tellg() == end;
}

}  // namespace

void require_plausible_attributes(const fs::path& path) {
    std::error_code error;
    const std::uintmax_t length = fs::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    const auto fail = [&path]() -> Failure {
        return Failure("cannot read the picture " + path.string() +
                       ": it is damaged, or of another program");
    };
    constexpr std::streamoff kVersion = 4;
    constexpr std::uint32_t kLongNames = 0x400;
    file.seekg(kVersion);
    // A picture of several parts has several lists of attributes.
    if (const std::uint32_t version = next_size(file); file && (version & ~kLongNames) != 2) {
        throw fail();
    }
    for (;;) {
        const std::string name = next_name(file);
        if (name.empty() || !file) {
            return;
        }
        const std::string type = next_name(file);
        const std::uint32_t size = next_size(file);
        const auto known = sizes_of_types().find(type);
        const std::streamoff place = file ? std::streamoff{file.tellg()} : 0;
        const bool fits = file && size <= length - static_cast<std::uintmax_t>(place) &&
                          known != sizes_of_types().end() &&
                          (known->second == 0 || known->second == size) &&
                          (type != "chlist" || is_channel_list(file, size));
        if (!fits) {
            throw fail();
        }
        file.seekg(place + static_cast<std::streamoff>(size));
    }
}

}  // namespace lumivar
