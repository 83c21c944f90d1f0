#include "picture.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

#include "astronomy/srgb.h"
#include "atomic_file.h"
#include "failure.h"
#include "program_version.h"

namespace lumivar {

using host::Depth;

namespace {

enum class Format { Exr, Tiff, Png, Jpeg };

std::optional<Format> format_of(const std::filesystem::path& path) {
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".exr") {
        return Format::Exr;
    }
    if (ending == ".tif" || ending == ".tiff") {
        return Format::Tiff;
    }
    if (ending == ".png") {
        return Format::Png;
    }
    if (ending == ".jpg" || ending == ".jpeg") {
        return Format::Jpeg;
    }
    return std::nullopt;
}

/// One channel of a pixel as the host stores it.
template <class Code>
Code code_at(const FrameView& frame, int x, int y, std::size_t channel) {
    Code code;
    std::memcpy(&code,
                static_cast<const std::byte*>(frame.pixels) + y * frame.row_bytes +
                    (static_cast<std::size_t>(x) * 4 + channel) * sizeof(Code),
                sizeof(Code));
    return code;
}

float linear_at(const FrameView& frame, int x, int y, std::size_t channel) {
    switch (frame.depth) {
        case Depth::Bits8:
            return static_cast<float>(code_at<std::uint8_t>(frame, x, y, channel)) / 255.0F;
        case Depth::Bits16:
            return static_cast<float>(code_at<std::uint16_t>(frame, x, y, channel)) / 32768.0F;
        case Depth::Float:
            break;
    }
    // A copy through the same type keeps every bit, of not-a-numbers too.
    return code_at<float>(frame, x, y, channel);
}

// The host's order is alpha, red, green, blue; files hold red, green, blue(, alpha).
constexpr std::size_t host_channel(int file_channel) {
    return static_cast<std::size_t>(file_channel + 1) % 4;
}

/// Calls `value(x, y, channel)` for every sample in the file's order and collects the results.
template <class Sample, class Function>
std::vector<std::byte> collect(const FrameView& frame, int channels, Function value) {
    std::vector<std::byte> bytes(static_cast<std::size_t>(frame.width) *
                                 static_cast<std::size_t>(frame.height) *
                                 static_cast<std::size_t>(channels) * sizeof(Sample));
    std::byte* out = bytes.data();
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            for (int c = 0; c < channels; ++c) {
                const Sample sample = value(x, y, host_channel(c));
                std::memcpy(out, &sample, sizeof sample);
                out += sizeof sample;
            }
        }
    }
    return bytes;
}

struct Encoded {
    OIIO::TypeDesc type;
    int channels;
    std::vector<std::byte> samples;
    bool linear;
};

Encoded encode(const FrameView& frame, Format format, bool raw) {
    const bool for_looking = format == Format::Png || format == Format::Jpeg;
    const int channels = for_looking ? 3 : 4;
    if (raw && frame.depth == Depth::Bits8) {
        return {OIIO::TypeUInt8, channels,
                collect<std::uint8_t>(frame, channels,
                                      [&](int x, int y, std::size_t c) {
                                          return code_at<std::uint8_t>(frame, x, y, c);
                                      }),
                true};
    }
    if (raw) {
        return {OIIO::TypeUInt16, channels,
                collect<std::uint16_t>(frame, channels,
                                       [&](int x, int y, std::size_t c) {
                                           return code_at<std::uint16_t>(frame, x, y, c);
                                       }),
                true};
    }
    if (for_looking) {
        return {OIIO::TypeUInt8, channels,
                collect<std::uint8_t>(frame, channels,
                                      [&](int x, int y, std::size_t c) {
                                          return srgb_code(
                                              static_cast<double>(linear_at(frame, x, y, c)));
                                      }),
                false};
    }
    return {OIIO::TypeFloat, channels,
            collect<float>(frame, channels,
                           [&](int x, int y, std::size_t c) { return linear_at(frame, x, y, c); }),
            true};
}

OIIO::ImageSpec describe(const FrameView& frame, const Encoded& encoded, Format format,
                         const PictureInfo& info) {
    OIIO::ImageSpec spec(frame.width, frame.height, encoded.channels, encoded.type);
    spec.attribute("Software", kProgramVersion);
    std::string description = info.title;
    for (const auto& [key, value] : info.details) {
        spec.attribute("lumivar:" + key, value);
        description.append("\n").append(key).append(": ").append(value);
    }
    if (!description.empty()) {
        spec.attribute("ImageDescription", description);
    }
    if (!info.settings.empty()) {
        spec.attribute("lumivar:settings", info.settings);
    }
    spec.attribute("oiio:ColorSpace", encoded.linear ? "Linear" : "sRGB");
    if (format == Format::Jpeg) {
        spec.attribute("Compression", "jpeg:95");
        spec.attribute("jpeg:subsampling", "4:4:4");  // a star's colour is as sharp as its light
    } else if (format != Format::Png) {
        spec.attribute("Compression", "zip");
    }
    return spec;
}

}  // namespace

void check_picture_request(const std::filesystem::path& path, Depth depth, bool raw) {
    const std::optional<Format> format = format_of(path);
    if (!format) {
        throw UsageError("cannot tell the kind of picture from the name \"" + path.string() +
                         "\"; end it with .exr, .tif, .png or .jpg");
    }
    if (!raw) {
        return;
    }
    if (depth == Depth::Float) {
        throw UsageError(
            "--raw writes integer codes, and a float frame has none; add --depth 8 or 16");
    }
    if (format == Format::Exr) {
        throw UsageError(
            "--raw writes integer codes, and .exr has no channels for them; use .png or .tif");
    }
    if (format == Format::Jpeg && depth == Depth::Bits16) {
        throw UsageError("--raw with 16 bits does not fit .jpg; use .png or .tif, or --depth 8");
    }
}

void write_picture(const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, bool raw) {
    check_picture_request(path, frame.depth, raw);
    const Format format = *format_of(path);
    AtomicFile file(path);
    const Encoded encoded = encode(frame, format, raw);

    // Into memory first: the file formats' own writers are careless about a disk that is full.
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    const std::string shown = "cannot write " + path.string() + ": ";
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(path.string());
    if (!output) {
        throw Failure(shown + OIIO::geterror());
    }
    if (!output->set_ioproxy(&memory) ||
        !output->open(path.string(), describe(frame, encoded, format, info)) ||
        !output->write_image(encoded.type, encoded.samples.data()) || !output->close()) {
        throw Failure(shown + output->geterror());
    }
    file.write(std::as_bytes(std::span(bytes)));
    file.publish();
}

}  // namespace lumivar
