#include "registration.h"

#include <cstddef>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

namespace conformance {
namespace {

namespace fs = std::filesystem;

std::string_view piece(std::string_view bytes, std::size_t at, std::size_t size) {
    if (at > bytes.size() || size > bytes.size() - at) {
        throw ResourceError("it ends at byte " + std::to_string(bytes.size()) +
                            ", in the middle of something at byte " + std::to_string(at));
    }
    return bytes.substr(at, size);
}

/// Most significant byte first, whatever machine reads it.
std::uint32_t number_at(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (const char byte : piece(bytes, at, size)) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// The first resource of the type that registers effects, found through the map.
std::string_view registration_resource(std::string_view file) {
    const std::size_t data = number_at(file, 0, 4);
    const std::size_t map = number_at(file, 4, 4);
    const std::size_t types = map + number_at(file, map + 24, 2);
    const std::size_t count = number_at(file, types, 2) + std::size_t{1};
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t type = types + 2 + 8 * i;
        if (piece(file, type, 4) == "PiPL") {
            const std::size_t reference = types + number_at(file, type + 6, 2);
            const std::size_t place = data + number_at(file, reference + 5, 3);
            return piece(file, place + 4, number_at(file, place, 4));
        }
    }
    throw ResourceError("it has no resource of the type PiPL");
}

std::optional<std::string> contents_of(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        return std::nullopt;
    }
    std::ifstream in(file, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

Registration::Registration(const std::string& file) {
    const std::string_view resource = registration_resource(file);
    if (number_at(resource, 0, 4) != 0) {
        throw ResourceError("its registration is of another version than 0");
    }
    const std::uint32_t count = number_at(resource, 4, 4);
    std::size_t at = 8;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string key(piece(resource, at + 4, 4));
        const std::size_t length = number_at(resource, at + 12, 4);
        properties_[key] = piece(resource, at + 16, length);
        // Each property is padded to whole words.
        at += 16 + (length + 3) / 4 * 4;
    }
}

std::string Registration::bytes(const std::string& key) const {
    const auto found = properties_.find(key);
    return found == properties_.end() ? "" : found->second;
}

std::optional<std::string> Registration::text(const std::string& key) const {
    const std::string data = bytes(key);
    if (data.empty() || static_cast<unsigned char>(data[0]) != data.size() - 1) {
        return std::nullopt;
    }
    return data.substr(1);
}

std::optional<std::uint32_t> Registration::number(const std::string& key) const {
    const std::string data = bytes(key);
    if (data.size() != 4) {
        return std::nullopt;
    }
    return number_at(data, 0, 4);
}

BundleFiles::BundleFiles(const fs::path& module) {
    // NAME.plugin/Contents/MacOS/NAME
    const fs::path contents = module.parent_path().parent_path();
    if (module.parent_path().filename() != "MacOS" || contents.filename() != "Contents") {
        return;
    }
    info_list = contents_of(contents / "Info.plist");
    package_info = contents_of(contents / "PkgInfo");
    resource = contents_of(contents / "Resources" / (module.filename().string() + ".rsrc"));
}

}  // namespace conformance
