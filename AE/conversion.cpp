// Writes the float image into the host's pixels.
//
// The format is decided once a frame; each format has its own loop, beside which the renderer's
// room may have a faster one. Pixels are copied as bytes because nothing says how a host aligns its
// rows.
#include <AE/messages.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <libimgops/codes.h>

#include <cstddef>
#include <cstring>

namespace {

constexpr int kUnhandledFormatLine = 821;

// Floats of a pixel, whatever the image format's name says of their order.
constexpr int kFloatsPerPixel = 4;
constexpr int kRed = 1;
constexpr int kGreen = 2;
constexpr int kBlue = 3;

/// `f` of full scale `max`, rounded half up and clamped; 0 when it is not a number. Compared as a
/// number before it becomes an integer, so that nothing is out of the integer's range.
template <int max>
int to_code(float f) {
    const float scaled = 0.5F + f * static_cast<float>(max);
    if (scaled > 0.0F) {
        return scaled < static_cast<float>(max) ? static_cast<int>(scaled) : max;
    }
    return 0;
}

struct To8 {
    using Pixel = PF_Pixel;
    static bool convert_fast(const float* argb, void* to, std::size_t pixels) {
        return to_8_bit_codes(argb, to, pixels);
    }
    static Pixel convert(const float* argb) {
        constexpr int kMax = 255;
        return {kMax, static_cast<A_u_char>(to_code<kMax>(argb[kRed])),
                static_cast<A_u_char>(to_code<kMax>(argb[kGreen])),
                static_cast<A_u_char>(to_code<kMax>(argb[kBlue]))};
    }
};

struct To16 {
    using Pixel = PF_Pixel16;
    static bool convert_fast(const float* argb, void* to, std::size_t pixels) {
        return to_16_bit_codes(argb, to, pixels);
    }
    static Pixel convert(const float* argb) {
        constexpr int kMax = 32768;
        return {kMax, static_cast<A_u_short>(to_code<kMax>(argb[kRed])),
                static_cast<A_u_short>(to_code<kMax>(argb[kGreen])),
                static_cast<A_u_short>(to_code<kMax>(argb[kBlue]))};
    }
};

struct ToFloat {
    using Pixel = PF_PixelFloat;
    static bool convert_fast(const float* /*argb*/, void* /*to*/, std::size_t /*pixels*/) {
        return false;
    }
    static Pixel convert(const float* argb) {
        return {1.0F, argb[kRed], argb[kGreen], argb[kBlue]};
    }
};

template <class Converter>
void convert_rows(const Kelv::Image& image, PF_EffectWorld* output) {
    using Pixel = typename Converter::Pixel;
    char* const first_row = reinterpret_cast<char*>(output->data);
    for (int y = 0; y < image.height; ++y) {
        const float* from = image.line_float(y);
        char* to = first_row + static_cast<std::ptrdiff_t>(y) * output->rowbytes;
        if (Converter::convert_fast(from, to, static_cast<std::size_t>(image.width))) {
            continue;
        }
        for (int x = 0; x < image.width; ++x) {
            const Pixel pixel = Converter::convert(from);
            std::memcpy(to, &pixel, sizeof pixel);
            from += kFloatsPerPixel;
            to += sizeof pixel;
        }
    }
}

}  // namespace

void convert_image(const Kelv::Image& image, PF_PixelFormat format, PF_EffectWorld* output) {
    switch (format) {
        case PF_PixelFormat_ARGB32:
            convert_rows<To8>(image, output);
            break;
        case PF_PixelFormat_ARGB64:
            convert_rows<To16>(image, output);
            break;
        case PF_PixelFormat_ARGB128:
            convert_rows<ToFloat>(image, output);
            break;
        default:
            throw StrXception(kShellSource, __PRETTY_FUNCTION__, kUnhandledFormatLine,
                              "unhandled PF_Pixelformat %d", format);
    }
}
