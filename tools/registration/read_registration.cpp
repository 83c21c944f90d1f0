#include "read_registration.h"

#include <cstddef>
#include <string_view>

namespace bundle {
namespace {

/// Sums of what a file says stay far below its end, whatever the processor's word is.
using Place = std::uint64_t;

/// Most significant byte first, whatever machine reads it.
std::uint32_t number_of(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Bytes from the beginning of a file, asked for by their place there and with the name of what
/// they are.
class FileBytes {
public:
    /// `whole` is what ends where the bytes end.
    FileBytes(std::string_view bytes, const char* whole) : bytes_(bytes), whole_(whole) {}

    std::string_view piece(const std::string& what, Place at, Place size) const {
        if (at > bytes_.size() || size > bytes_.size() - at) {
            throw ResourceError(what + ", " + std::to_string(size) + " bytes from byte " +
                                std::to_string(at) + " on, reaches beyond " + whole_ +
                                ", which ends at byte " + std::to_string(bytes_.size()));
        }
        return bytes_.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(size));
    }
    std::uint32_t number(const std::string& what, Place at, Place size) const {
        return number_of(piece(what, at, size));
    }

private:
    std::string_view bytes_;
    const char* whole_;
};

struct Extent {
    Place at;
    Place size;
};

/// The first resource of the type that registers effects, found through the map.
Extent registration_resource(const FileBytes& file) {
    const Place data = file.number("the offset of the resources", 0, 4);
    const Place map = file.number("the offset of the resource map", 4, 4);
    const Place types = map + file.number("the offset of the list of types", map + 24, 2);
    // What is stored is one less, so that -1 is none.
    const Place count = (file.number("the number of types", types, 2) + Place{1}) & 0xFFFFU;
    for (Place i = 0; i < count; ++i) {
        const std::string which = "type " + std::to_string(i + 1) + " of " + std::to_string(count);
        const Place type = types + 2 + 8 * i;
        if (file.piece(which, type, 8).substr(0, 4) == "PiPL") {
            const Place reference = types + file.number(which, type + 6, 2);
            const Place place =
                data + file.number("the reference to the resource PiPL", reference + 5, 3);
            return {place + 4, file.number("the length of the resource PiPL", place, 4)};
        }
    }
    throw ResourceError("none of the " + std::to_string(count) +
                        " types of resource, listed at byte " + std::to_string(types) +
                        ", is PiPL");
}

}  // namespace

Registration::Registration(const std::string& bytes) {
    const FileBytes file(bytes, "the file");
    const Extent resource = registration_resource(file);
    const Place end = resource.at + resource.size;
    file.piece("the resource PiPL", resource.at, resource.size);
    const FileBytes inside(std::string_view(bytes).substr(0, static_cast<std::size_t>(end)),
                           "the resource PiPL");
    const std::uint32_t version = inside.number("the version of the resource PiPL", resource.at, 4);
    if (version != 0) {
        throw ResourceError("the resource PiPL at byte " + std::to_string(resource.at) +
                            " has the version " + std::to_string(version) + "; known is 0");
    }
    const std::uint32_t count =
        inside.number("the number of properties of the resource PiPL", resource.at + 4, 4);
    Place at = resource.at + 8;
    // Each takes 16 bytes at least, so that a count that is none ends at the end of the resource.
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string which =
            "property " + std::to_string(i + 1) + " of " + std::to_string(count);
        const std::string key(inside.piece(which, at, 16).substr(4, 4));
        const Place length = inside.number(which, at + 12, 4);
        properties_[key] = inside.piece(which, at + 16, length);
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
    return data.size() == 4 ? std::optional(number_of(data)) : std::nullopt;
}

}  // namespace bundle
