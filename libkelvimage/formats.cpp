// Pixel formats: names, sizes, natural strides.
#include <base/exceptions.h>
#include <libkelvimage/image.h>

namespace Kelv {

namespace {

struct FormatInfo {
    const char* name;
    ImageSpec::PixelFormat format;
    u32 bytes_per_pixel;
};

// The 3 bytes of YCBCR_422_8 are more than its samples need and are meant so: its rows have that
// size wherever they are kept.
const FormatInfo kFormats[] = {
    {"BGRA_U8", ImageSpec::BGRA_U8, 4},
    {"G_U8", ImageSpec::G_U8, 1},
    {"BGRA_FLOAT", ImageSpec::BGRA_FLOAT, 16},
    {"G_FLOAT", ImageSpec::G_FLOAT, 4},
    {"YCBCR_422_8", ImageSpec::YCBCR_422_8, 3},
    {"DV_NTSC", ImageSpec::DV_NTSC, 0},
    {"YCBCR_422_10", ImageSpec::YCBCR_422_10, 0},
    {"YCBCR_444_FLOAT", ImageSpec::YCBCR_444_FLOAT, 12},
    {"CINEON", ImageSpec::CINEON, 4},
    {"G_U16", ImageSpec::G_U16, 2},
    {"DV100_1080i60", ImageSpec::DV100_1080i60, 0},
    {"DV50_NTSC", ImageSpec::DV50_NTSC, 0},
    {"BGRA_U16", ImageSpec::BGRA_U16, 8},
    {"DNXHD_1080i60_10BIT", ImageSpec::DNXHD_1080i60_10BIT, 0},
};

const FormatInfo* find_format(ImageSpec::PixelFormat format) {
    for (const FormatInfo& info : kFormats) {
        if (info.format == format) {
            return &info;
        }
    }
    return nullptr;
}

u64 round_up(u64 bytes, u64 multiple) { return (bytes + multiple - 1) / multiple * multiple; }

}  // namespace

const char* ImageSpec::pixel_format_str(PixelFormat format) {
    const FormatInfo* info = find_format(format);
    if (info == nullptr) {
        XTHROW("unknown format");
    }
    return info->name;
}

u32 ImageSpec::bytes_per_pixel(PixelFormat format) {
    const FormatInfo* info = find_format(format);
    if (info == nullptr) {
        // Asking for the name throws first: "unknown format" is what callers see.
        XTHROW("unhandled format %s", pixel_format_str(format));
    }
    return info->bytes_per_pixel;
}

u32 ImageSpec::natural_stride(int width, PixelFormat format) {
    switch (format) {
        case DV_NTSC:
            XASSERT(width == 720);
            return 250;
        case DV50_NTSC:
            XASSERT(width == 720);
            return 500;
        case DV100_1080i60:
            XASSERT(width == 1280);
            return 445;
        case DNXHD_1080i60_10BIT:
            XASSERT(width == 1920);
            return 850;
        case YCBCR_422_10: {
            // Six pixels in 16 bytes, rows in whole 128 bytes.
            const u64 groups = (static_cast<u32>(width) + u64{5}) / 6;
            return static_cast<u32>(round_up(16 * groups, 128));
        }
        case YCBCR_422_8:
            return static_cast<u32>(round_up(u64{3} * static_cast<u32>(width), 12));
        default:
            return static_cast<u32>(width) * bytes_per_pixel(format);
    }
}

}  // namespace Kelv
