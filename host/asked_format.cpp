#include "asked_format.h"

#include <host/errors.h>

namespace host {
namespace {

const char* lacking_in_premiere(Depth depth) {
    switch (depth) {
        case Depth::Bits8:
            return "the effect declares neither 8-bit BGRA nor 8-bit ARGB to Premiere Pro";
        case Depth::Bits16:
            return "the effect does not declare 16-bit BGRA to Premiere Pro";
        case Depth::Float:
            break;
    }
    return "the effect does not declare float BGRA to Premiere Pro";
}

void refuse_depth(const EffectInfo& info, bool smart, Depth depth) {
    if (!smart && depth == Depth::Float) {
        throw FrameError("float pixels need smart rendering, which this host and effect lack");
    }
    const bool deep = (info.out_flags & PF_OutFlag_DEEP_COLOR_AWARE) != 0;
    const bool floating = (info.out_flags2 & PF_OutFlag2_FLOAT_COLOR_AWARE) != 0;
    if (depth == Depth::Bits16 && !deep) {
        throw FrameError("the effect does not declare that it draws 16-bit pixels");
    }
    if (depth == Depth::Float && !floating) {
        throw FrameError("the effect does not declare that it draws float pixels");
    }
}

}  // namespace

PixelFormat asked_format(const HostState& state, const EffectInfo& info, bool smart, Depth depth) {
    if (!state.premiere()) {
        refuse_depth(info, smart, depth);
        return after_effects_format(depth);
    }
    // Premiere Pro ignores the depth flags and goes by the formats that the effect declared.
    const std::optional<PixelFormat> format = premiere_format(state.pixel_formats, depth);
    if (!format) {
        throw FrameError(lacking_in_premiere(depth));
    }
    return *format;
}

}  // namespace host
