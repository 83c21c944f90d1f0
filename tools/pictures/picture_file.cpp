#include "picture_file.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <variant>

#include "atomic_file.h"
#include "failure.h"
#include "halo.h"
#include "linear_image.h"
#include "program_version.h"

namespace lumivar {

using host::Depth;

namespace {

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

constexpr const char* kLinear = "Linear";
constexpr const char* kSrgb = "sRGB";

struct Encoded {
    OIIO::TypeDesc type;
    int channels;
    std::vector<std::byte> samples;
    const char* space;  ///< as the library names it; null: a display's own
};

template <class Code>
Encoded encode_codes(const FrameView& frame, int channels) {
    return {OIIO::BaseTypeFromC<Code>::value, channels,
            collect<Code>(
                frame, channels,
                [&](int x, int y, std::size_t c) { return stored_sample<Code>(frame, x, y, c); }),
            kLinear};
}

Encoded encode_look(const FrameView& frame, const Look& look) {
    const LookedAt codes = look_at(linear_image(frame), look);
    // What a display of a configuration is sent, the configuration alone knows.
    const char* const space = look.view == Look::View::Managed ? nullptr : kSrgb;
    return std::visit(
        [space](const auto& all) -> Encoded {
            const auto bytes = std::as_bytes(std::span(all));
            return {OIIO::BaseTypeFromC<std::decay_t<decltype(all[0])>>::value, 3,
                    std::vector<std::byte>(bytes.begin(), bytes.end()), space};
        },
        codes);
}

Encoded encode_linear(const FrameView& frame, double halo) {
    constexpr int kChannels = 4;
    Encoded encoded{
        OIIO::TypeFloat, kChannels,
        collect<float>(frame, kChannels,
                       [&](int x, int y, std::size_t c) { return linear_sample(frame, x, y, c); }),
        kLinear};
    if (halo != 0.0) {
        LinearImage light = linear_image(frame);
        add_halo(light, halo);
        std::byte* out = encoded.samples.data();
        for (std::size_t pixel = 0; pixel < light.pixels(); ++pixel) {
            std::memcpy(out, &light.samples[3 * pixel], 3 * sizeof(float));
            out += kChannels * sizeof(float);
        }
    }
    return encoded;
}

Encoded encode(const FrameView& frame, PictureFormat format, const PictureContent& content) {
    if (content.raw) {
        const bool has_alpha = format == PictureFormat::Tiff;
        return frame.depth == Depth::Bits8 ? encode_codes<std::uint8_t>(frame, has_alpha ? 4 : 3)
                                           : encode_codes<std::uint16_t>(frame, has_alpha ? 4 : 3);
    }
    return content.look ? encode_look(frame, *content.look)
                        : encode_linear(frame, content.linear_halo);
}

/// Two decimal digits, four bits each.
std::uint32_t packed_digits(int number) {
    return static_cast<std::uint32_t>(number / 10 * 16 + number % 10);
}

/// The standard attributes of `.exr` that compositing programs read.
void describe_shot(OIIO::ImageSpec& spec, const ShotInfo& shot) {
    if (shot.frame_rate) {
        const std::array<int, 2> rate = {shot.frame_rate->first, shot.frame_rate->second};
        spec.attribute("framesPerSecond", OIIO::TypeRational, rate.data());
    }
    if (shot.frame) {
        spec.attribute("frame", *shot.frame);
    }
    // A time code counts whole frames a second, with two bits for the tens of a frame.
    constexpr int kFastest = 30;
    if (shot.frame && shot.frame_rate && shot.frame_rate->second == 1 &&
        shot.frame_rate->first <= kFastest && *shot.frame >= 0) {
        const int rate = shot.frame_rate->first;
        const int seconds = *shot.frame / rate;
        const std::array<std::uint32_t, 2> code = {
            packed_digits(seconds / 3600 % 24) << 24U | packed_digits(seconds / 60 % 60) << 16U |
                packed_digits(seconds % 60) << 8U | packed_digits(*shot.frame % rate),
            0};
        spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, code.data());
    }
    if (shot.world_to_camera) {
        spec.attribute("worldtocamera", OIIO::TypeMatrix, shot.world_to_camera->data());
    }
}

OIIO::ImageSpec describe(const FrameView& frame, const Encoded& encoded, PictureFormat format,
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
    if (format == PictureFormat::Exr) {
        describe_shot(spec, info.shot);
    }
    // For .tif the word "sRGB" would make the library write a second directory of values, and the
    // offsets in what it writes to memory are then wrong. Integer samples are sRGB by custom.
    if (encoded.space != nullptr && (encoded.space == kLinear || format != PictureFormat::Tiff)) {
        spec.attribute("oiio:ColorSpace", encoded.space);
    }
    if (format == PictureFormat::Jpeg) {
        spec.attribute("Compression", "jpeg:95");
        spec.attribute("jpeg:subsampling", "4:4:4");  // a star's colour is as sharp as its light
    } else if (format != PictureFormat::Png) {
        spec.attribute("Compression", "zip");
    }
    return spec;
}

bool is_for_looking(PictureFormat format) {
    return format == PictureFormat::Png || format == PictureFormat::Jpeg;
}

}  // namespace

std::optional<PictureFormat> picture_format(const std::filesystem::path& path) {
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".exr") {
        return PictureFormat::Exr;
    }
    if (ending == ".tif" || ending == ".tiff") {
        return PictureFormat::Tiff;
    }
    if (ending == ".png") {
        return PictureFormat::Png;
    }
    if (ending == ".jpg" || ending == ".jpeg") {
        return PictureFormat::Jpeg;
    }
    return std::nullopt;
}

void check_picture_request(const std::filesystem::path& path, Depth depth,
                           const PictureContent& content) {
    const std::optional<PictureFormat> format = picture_format(path);
    if (!format) {
        throw UsageError("cannot tell the kind of picture from the name \"" + path.string() +
                         "\"; end it with .exr, .tif, .png or .jpg");
    }
    if (content.look && format == PictureFormat::Exr) {
        throw UsageError(
            ".exr stays scene-linear, without exposure and view; use .png, .jpg or .tif for a "
            "picture to look at");
    }
    if (content.look && content.look->bits == 16 && format == PictureFormat::Jpeg) {
        throw UsageError(".jpg has no channels of 16 bits; use .png or .tif");
    }
    if (!content.raw) {
        return;
    }
    if (depth == Depth::Float) {
        throw UsageError(
            "--raw writes integer codes, and a float frame has none; add --depth 8 or 16");
    }
    if (format == PictureFormat::Exr) {
        throw UsageError(
            "--raw writes integer codes, and .exr has no channels for them; use .png or .tif");
    }
    if (format == PictureFormat::Jpeg && depth == Depth::Bits16) {
        throw UsageError("--raw with 16 bits does not fit .jpg; use .png or .tif, or --depth 8");
    }
}

double least_visible_light(const PictureContent& content) {
    if (!content.look || content.look->view == Look::View::Managed) {
        return 0.0;
    }
    // Both views are straight near black, where sRGB multiplies by 12.92; half a code rounds up.
    constexpr double kSlopeAtBlack = 12.92;
    const double white = content.look->bits == 16 ? 65535.0 : 255.0;
    return 0.5 / white / kSlopeAtBlack / std::exp2(content.look->exposure);
}

void write_picture(AtomicFile& file, const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, const PictureContent& content) {
    check_picture_request(path, frame.depth, content);
    const PictureFormat format = *picture_format(path);
    // What is for looking at alone holds no linear light.
    PictureContent held = content;
    if (!held.raw && !held.look && is_for_looking(format)) {
        held.look = Look{};
    }
    const Encoded encoded = encode(frame, format, held);

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
}

void write_picture(const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, const PictureContent& content) {
    AtomicFile file(path);
    write_picture(file, path, frame, info, content);
    file.publish();
}

}  // namespace lumivar
