#include "gltf_buffers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base64.h"
#include "failure.h"
#include "json_place.h"
#include "whole_text.h"

namespace lumivar {
namespace {

/// A little-endian number of so many bytes, whatever the machine.
std::uint32_t little_endian(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i]))
                  << static_cast<unsigned>(8 * i);
    }
    return number;
}

/// How the numbers of an accessor are stored.
struct Component {
    std::size_t size;  ///< bytes
    double largest;    ///< the integer that stands for 1; 0: floats
    bool is_signed;
};

Component component_of(const JsonPlace& accessor) {
    const JsonPlace type = accessor["componentType"];
    const double code = type.number();
    const bool normalized = accessor.has("normalized") && accessor["normalized"].is_true();
    if (code == 5126.0) {
        return {4, 0.0, true};
    }
    if (code == 5120.0 || code == 5121.0 || code == 5122.0 || code == 5123.0) {
        if (!normalized) {
            type.complain("expected floats or normalized integers");
        }
        if (code == 5120.0) {
            return {1, 127.0, true};
        }
        if (code == 5121.0) {
            return {1, 255.0, false};
        }
        return code == 5122.0 ? Component{2, 32767.0, true} : Component{2, 65535.0, false};
    }
    type.fail("5126 (float) or a normalized integer type, 5120 to 5123");
}

double number_at(std::string_view bytes, std::size_t at, const Component& component) {
    const std::uint32_t raw = little_endian(bytes, at, component.size);
    if (component.largest == 0.0) {
        return static_cast<double>(std::bit_cast<float>(raw));
    }
    double number = raw;
    if (component.is_signed && number > component.largest) {
        number -= 2.0 * (component.largest + 1.0);
    }
    return std::max(number / component.largest, -1.0);
}

/// %20 and the like as the bytes that they stand for.
std::string unescaped(std::string_view uri) {
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    const auto value = [&](char digit) {
        const std::size_t at = kDigits.find(digit);
        return at > 15 ? at - 6 : at;
    };
    std::string text;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() &&
            kDigits.find(uri[i + 1]) != std::string_view::npos &&
            kDigits.find(uri[i + 2]) != std::string_view::npos) {
            text.push_back(static_cast<char>(16 * value(uri[i + 1]) + value(uri[i + 2])));
            i += 2;
        } else {
            text.push_back(uri[i]);
        }
    }
    return text;
}

constexpr std::size_t kNoEnd = std::size_t{1} << 31U;  // larger than any file that is read

std::size_t optional_size(const JsonPlace& object, const char* member) {
    const auto found = object.find(member);
    return found ? found->index(kNoEnd) : 0;
}

}  // namespace

GltfDocument::GltfDocument(const std::string& path) : path_(path) {
    const std::string file = whole_text(path);
    constexpr std::string_view kMagic = "glTF";
    constexpr std::uint32_t kJsonChunk = 0x4E4F534A;
    constexpr std::uint32_t kBinaryChunk = 0x004E4942;
    std::string_view json = file;
    if (json.starts_with(kMagic)) {
        constexpr std::size_t kHeader = 12;
        constexpr std::size_t kChunkHeader = 8;
        if (file.size() < kHeader + kChunkHeader) {
            throw Failure(path + ": the file ends within its header");
        }
        if (const std::uint32_t version = little_endian(file, 4, 4); version != 2) {
            throw Failure(path + ": expected version 2 of the format, found " +
                          std::to_string(version));
        }
        std::size_t at = kHeader;
        json = {};
        for (int chunk = 0; file.size() - at >= kChunkHeader; ++chunk) {
            const std::size_t size = little_endian(file, at, 4);
            const std::uint32_t kind = little_endian(file, at + 4, 4);
            at += kChunkHeader;
            if (size > file.size() - at) {
                throw Failure(path + ": the file ends within a chunk: it lacks " +
                              std::to_string(size - (file.size() - at)) + " bytes");
            }
            if (chunk == 0 && kind == kJsonChunk) {
                json = std::string_view(file).substr(at, size);
            } else if (chunk == 1 && kind == kBinaryChunk) {
                chunk_ = file.substr(at, size);
                has_chunk_ = true;
            }
            at += size;
        }
        if (json.empty()) {
            throw Failure(path + ": its first chunk is not JSON");
        }
    }
    json_ = parse_document(json, path);
    const JsonPlace version = root()["asset"]["version"];
    if (!version.text().starts_with("2.")) {
        version.fail("version 2 of the format");
    }
}

const std::string& GltfDocument::buffer(const JsonPlace& place) const {
    const JsonPlace buffers = root()["buffers"];
    const std::size_t index = place.index(buffers.array().size());
    if (const auto found = buffers_.find(index); found != buffers_.end()) {
        return found->second;
    }
    const JsonPlace description = buffers[index];
    std::string bytes;
    if (const auto uri = description.find("uri")) {
        const std::string text = uri->text();
        if (text.starts_with("data:")) {
            const std::size_t comma = text.find(";base64,");
            const auto decoded = comma == std::string::npos
                                     ? std::nullopt
                                     : from_base64(std::string_view(text).substr(comma + 8));
            if (!decoded) {
                uri->complain("expected data in base64, found something else");
            }
            bytes = *decoded;
        } else {
            const std::filesystem::path beside = unescaped(text);
            if (text.find("://") != std::string::npos || beside.is_absolute()) {
                uri->complain("expected the name of a file beside this one, found \"" + text +
                              "\"; nothing is fetched from elsewhere");
            }
            bytes = whole_text((std::filesystem::path(path_).parent_path() / beside).string());
        }
    } else if (index == 0 && has_chunk_) {
        bytes = chunk_;
    } else {
        description.complain("expected a uri, found none");
    }
    const JsonPlace length = description["byteLength"];
    if (bytes.size() < length.index(kNoEnd)) {
        length.complain("the buffer is cut short: it has " + std::to_string(bytes.size()) +
                        " bytes of " + std::to_string(length.index(kNoEnd)));
    }
    return buffers_[index] = bytes;
}

std::vector<double> GltfDocument::numbers(const JsonPlace& place, std::size_t components) const {
    const JsonPlace accessors = root()["accessors"];
    const JsonPlace accessor = accessors[place.index(accessors.array().size())];
    if (const auto sparse = accessor.find("sparse")) {
        sparse->complain("sparse accessors are not read; export the animation without them");
    }
    const std::string type = components == 1 ? "SCALAR" : "VEC" + std::to_string(components);
    if (accessor["type"].text() != type) {
        accessor["type"].fail("\"" + type + "\"");
    }
    const Component component = component_of(accessor);
    const JsonPlace views = root()["bufferViews"];
    const JsonPlace view = views[accessor["bufferView"].index(views.array().size())];
    const std::string& bytes = buffer(view["buffer"]);
    const std::size_t view_start = optional_size(view, "byteOffset");
    const std::size_t view_size = view["byteLength"].index(kNoEnd);
    if (view_start > bytes.size() || view_size > bytes.size() - view_start) {
        view.complain("it reaches beyond its buffer of " + std::to_string(bytes.size()) + " bytes");
    }
    const std::size_t element = components * component.size;
    std::size_t stride = element;
    if (const auto given = view.find("byteStride")) {
        stride = given->index(kNoEnd);
        if (stride < element) {
            given->complain("expected " + std::to_string(element) +
                            " bytes at least, the size of an element, found " +
                            std::to_string(stride));
        }
    }
    const std::size_t start = optional_size(accessor, "byteOffset");
    const std::size_t count = accessor["count"].index(kNoEnd);
    // Divided, not multiplied: a product of numbers from a file may not fit.
    if (count > 0 && (start > view_size || element > view_size - start ||
                      (view_size - start - element) / stride < count - 1)) {
        accessor.complain("it reaches beyond its bufferView of " + std::to_string(view_size) +
                          " bytes");
    }
    std::vector<double> numbers;
    numbers.reserve(count * components);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < components; ++c) {
            const double number =
                number_at(bytes, view_start + start + i * stride + c * component.size, component);
            if (!std::isfinite(number)) {
                accessor.complain("element " + std::to_string(i) + " is not finite");
            }
            numbers.push_back(number);
        }
    }
    return numbers;
}

}  // namespace lumivar
