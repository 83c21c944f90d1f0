#include <cstring>
#include <vector>

#include "effect.h"

namespace test_effect {
namespace {

constexpr PF_PixelFormat kUnknownFormat = 0x12345678;

std::vector<PF_PixelFormat> formats() {
    constexpr PF_PixelFormat eight = PF_PixelFormat_BGRA32;
    constexpr PF_PixelFormat sixteen = PF_PixelFormat_BGRA64;
    constexpr PF_PixelFormat floating = PF_PixelFormat_BGRA128;
    switch (asked_mischief()) {
        case kNoPremiereFormats:
            return {};
        case kPremiereFloatAlone:
            return {floating};
        case kPremiereFloat:
            return {eight, floating};
        case kPremiereFormats:
            return {eight, floating, sixteen, kUnknownFormat};
        case kPremiereArgb:
            return {PF_PixelFormat_ARGB128, PF_PixelFormat_ARGB64, PF_PixelFormat_ARGB32, eight};
        case kPremiereUnknown:
            return {kUnknownFormat};
        case kWriteInPremiere:
        case kAskPixels16InPremiere:
        case kLeakInPremiereFloat:
        case kFailInPremiere16:
        case kIgnoreFillInPremiere16:
        case kWritePastRowInPremiere16:
            return {floating, sixteen, eight};
        default:
            return {eight};
    }
}

/// Rows of more than a few pixels are padded by less than a channel each.
int bytes_a_pixel(const PF_EffectWorld& world) {
    const int bytes = world.rowbytes / world.width;
    return bytes >= 16 ? 16 : bytes >= 8 ? 8 : 4;
}

/// Blue is the column, green the row, red 7, alpha full.
template <class Channel>
void write_pixels(const PF_EffectWorld& world, Channel full) {
    char* const first = reinterpret_cast<char*>(world.data);
    for (int y = 0; y < world.height; ++y) {
        for (int x = 0; x < world.width; ++x) {
            const Channel bgra[] = {static_cast<Channel>(x), static_cast<Channel>(y), Channel{7},
                                    full};
            std::memcpy(first + y * world.rowbytes + x * static_cast<int>(sizeof bgra), bgra,
                        sizeof bgra);
        }
    }
}

}  // namespace

void declare_premiere_formats(PF_InData* in) {
    const Suite<PF_PixelFormatSuite1> suite(in, kPFPixelFormatSuite, 1);
    if (!suite) {
        return;
    }
    suite->ClearSupportedPixelFormats(in->effect_ref);
    for (const PF_PixelFormat format : formats()) {
        suite->AddSupportedPixelFormat(in->effect_ref, format);
    }
}

PF_Err premiere_render(PF_InData* in, PF_EffectWorld* output, const PF_Pixel& colour) {
    const Mischief mischief = asked_mischief();
    const int bytes = bytes_a_pixel(*output);
    if ((output->world_flags & PF_WorldFlag_DEEP) != 0) {
        return PF_Err_BAD_CALLBACK_PARAM;  // is After Effects' flag
    }
    if (mischief == kWriteInPremiere) {
        bytes == 16  ? write_pixels(*output, 1.0F)
        : bytes == 8 ? write_pixels(*output, A_u_short{32768})
                     : write_pixels(*output, A_u_char{255});
        return PF_Err_NONE;
    }
    if (mischief == kLeakInPremiere || (mischief == kLeakInPremiereFloat && bytes == 16)) {
        lose_memory();
    }
    if (mischief == kFailInPremiere16 && bytes == 8) {
        return PF_Err_BAD_CALLBACK_PARAM;
    }
    if (mischief == kWritePastRowInPremiere16 && bytes == 8) {
        reinterpret_cast<char*>(output->data)[output->width * bytes + 3] = 1;
    }
    const PF_Err err = in->utils->fill(in->effect_ref, &colour, nullptr, output);
    return mischief == kIgnoreFillInPremiere16 && bytes == 8 ? PF_Err{PF_Err_NONE} : err;
}

}  // namespace test_effect
