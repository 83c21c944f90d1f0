#include "picture_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <variant>

#include "exr_file.h"
#include "failure.h"
#include "halo.h"
#include "jpeg_file.h"
#include "linear_image.h"
#include "png_file.h"
#include "sample_rows.h"
#include "tiff_file.h"

namespace lumivar {

using host::Depth;

namespace {

// The host's order is alpha, red, green, blue; files hold red, green, blue(, alpha).
constexpr std::size_t host_channel(int file_channel) {
    return static_cast<std::size_t>(file_channel + 1) % 4;
}

/// Calls `take(x, channel)` for the samples of a row in the file's order; the channel is the
/// host's.
template <class Function>
void for_each_sample(int width, int channels, Function take) {
    for (int x = 0; x < width; ++x) {
        for (int c = 0; c < channels; ++c) {
            take(x, host_channel(c));
        }
    }
}

/// Behind the sample that it has put at `out`.
template <class Sample>
std::byte* put(Sample sample, std::byte* out) {
    std::memcpy(out, &sample, sizeof sample);
    return out + sizeof sample;
}

template <class Code>
SampleRows rows_of_codes(const FrameView& frame, int channels) {
    return {frame.width,
            frame.height,
            channels,
            sizeof(Code) == 1 ? SampleKind::Codes8 : SampleKind::Codes16,
            SampleSpace::Linear,
            [frame, channels](int y, std::byte* out) {
                for_each_sample(frame.width, channels, [&](int x, std::size_t channel) {
                    out = put(stored_sample<Code>(frame, x, y, channel), out);
                });
            }};
}

SampleRows rows_of_look(const FrameView& frame, const Look& look) {
    const auto codes = std::make_shared<const LookedAt>(look_at(linear_image(frame), look));
    // What a display of a configuration is sent, the configuration alone knows.
    SampleRows rows{frame.width,
                    frame.height,
                    3,
                    look.bits == 16 ? SampleKind::Codes16 : SampleKind::Codes8,
                    look.view == Look::View::Managed ? SampleSpace::Unsaid : SampleSpace::Srgb,
                    {}};
    const std::size_t row_bytes = rows.row_bytes();
    rows.read = [codes, row_bytes](int y, std::byte* out) {
        std::visit(
            [&](const auto& all) {
                const auto bytes = std::as_bytes(std::span(all));
                std::memcpy(out, bytes.data() + static_cast<std::size_t>(y) * row_bytes, row_bytes);
            },
            *codes);
    };
    return rows;
}

SampleRows rows_of_light(const FrameView& frame, double halo) {
    constexpr int kChannels = 4;
    std::shared_ptr<LinearImage> light;
    if (halo != 0.0) {
        light = std::make_shared<LinearImage>(linear_image(frame));
        add_halo(*light, halo);
    }
    return {frame.width,
            frame.height,
            kChannels,
            SampleKind::Floats,
            SampleSpace::Linear,
            [frame, light](int y, std::byte* out) {
                for_each_sample(frame.width, kChannels, [&](int x, std::size_t channel) {
                    const std::size_t pixel =
                        static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) +
                        static_cast<std::size_t>(x);
                    out = put(light && channel != 0 ? light->samples[3 * pixel + channel - 1]
                                                    : linear_sample(frame, x, y, channel),
                              out);
                });
            }};
}

SampleRows rows_of(const FrameView& frame, PictureFormat format, const PictureContent& content) {
    if (content.raw) {
        const int channels = format == PictureFormat::Tiff ? 4 : 3;
        return frame.depth == Depth::Bits8 ? rows_of_codes<std::uint8_t>(frame, channels)
                                           : rows_of_codes<std::uint16_t>(frame, channels);
    }
    return content.look ? rows_of_look(frame, *content.look)
                        : rows_of_light(frame, content.linear_halo);
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
    if (format != PictureFormat::Exr && (content.half || content.compression)) {
        throw UsageError(
            "--half and --compression are of .exr; leave them out, or name the picture .exr");
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
    const auto write = [&] {
        switch (format) {
            case PictureFormat::Exr:
                return write_exr(file, frame, info, held);
            case PictureFormat::Tiff:
                return write_tiff(file, rows_of(frame, format, held), info);
            case PictureFormat::Png:
                return write_png(file, rows_of(frame, format, held), info);
            case PictureFormat::Jpeg:
                return write_jpeg(file, rows_of(frame, format, held), info);
        }
    };
    write();
}

void write_picture(const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, const PictureContent& content) {
    AtomicFile file(path);
    write_picture(file, path, frame, info, content);
    file.publish();
}

}  // namespace lumivar
