// Writes the float image into the host's pixels.
//
// The format is decided once a frame; each format has its own conversion of a row. Those to integer
// codes are in `libimgops/codes.h`: the host's pixels have their channels in the image's order.
#include <AE/messages.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <libimgops/codes.h>
#include <osapi/discarding.h>

#include <cstddef>
#include <cstring>

namespace {

constexpr int kUnhandledFormatLine = 821;

// From this size on an image gives its rows back while they are written, so many bytes at a time:
// else it and an output of floats, filled by then, would take twice the frame's memory.
constexpr uword kLargeImage = uword{1} << 27;
constexpr uword kDiscardedAtOnce = uword{1} << 24;

/// `pixels` pixels of floats, alpha first, into pixels of the host, of any alignment.
using RowConverter = void (*)(const float* argb, void* to, std::size_t pixels);

void to_opaque_floats(const float* argb, void* to, std::size_t pixels) {
    char* at = static_cast<char*>(to);
    for (; pixels > 0; --pixels, argb += kFloatsPerPixel) {
        const PF_PixelFloat pixel = {1.0F, argb[1], argb[2], argb[3]};
        std::memcpy(at, &pixel, sizeof pixel);
        at += sizeof pixel;
    }
}

/// Gives back the rows of a large image that have been written, some at a time.
class WrittenRows {
public:
    explicit WrittenRows(Kelv::Image& image)
        : image_(image), is_large_(image.allocated_size >= kLargeImage) {}

    void end_at(int row) {
        const uword bytes = static_cast<uword>(row - first_) * image_.stride;
        if (is_large_ && bytes >= kDiscardedAtOnce) {
            OSAPI::discard(image_.line_float(first_), bytes);
            first_ = row;
        }
    }

private:
    Kelv::Image& image_;
    bool is_large_;
    int first_ = 0;  ///< not given back yet
};

void convert_rows(Kelv::Image& image, RowConverter convert, PF_EffectWorld* output) {
    char* const first_row = reinterpret_cast<char*>(output->data);
    WrittenRows written(image);
    for (int y = 0; y < image.height; ++y) {
        char* row = first_row + static_cast<std::ptrdiff_t>(y) * output->rowbytes;
        convert(image.line_float(y), row, static_cast<std::size_t>(image.width));
        written.end_at(y + 1);
    }
}

}  // namespace

void convert_image(Kelv::Image& image, PF_PixelFormat format, PF_EffectWorld* output) {
    switch (format) {
        case PF_PixelFormat_ARGB32:
            convert_rows(image, to_8_bit_codes, output);
            break;
        case PF_PixelFormat_ARGB64:
            convert_rows(image, to_16_bit_codes, output);
            break;
        case PF_PixelFormat_ARGB128:
            convert_rows(image, to_opaque_floats, output);
            break;
        default:
            throw StrXception(kShellSource, kRenderFunction, kUnhandledFormatLine,
                              "unhandled PF_Pixelformat %d", format);
    }
}
