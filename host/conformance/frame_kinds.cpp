#include "frame_kinds.h"

#include <host/pixel_format.h>
#include <host_api/effect_interface.h>

#include "examination.h"

namespace conformance {

using host::Application;
using host::Depth;

namespace {

struct PremiereKind {
    const char* name;
    const char* sent;
    Depth depth;
};

constexpr PremiereKind kPremiereKinds[] = {
    {"premiere", "an 8-bit render in Premiere Pro", Depth::Bits8},
    {"premiere-16-bit", "a 16-bit render in Premiere Pro", Depth::Bits16},
    {"premiere-float", "a float render in Premiere Pro", Depth::Float},
};

}  // namespace

host::RenderOptions FrameKind::options() const {
    host::RenderOptions options;
    options.depth = depth;
    options.plain = plain;
    return options;
}

std::vector<FrameKind> frame_kinds(const Declared& declared) {
    const bool deep = declared.has(PF_OutFlag_DEEP_COLOR_AWARE);
    std::vector<FrameKind> kinds;
    const auto add = [&kinds](const char* name, const char* sent, Application application,
                              Depth depth, bool smart) {
        const bool plain = application == Application::AfterEffects && !smart;
        kinds.push_back({name, sent, application, depth, plain, smart});
    };
    const auto ae = Application::AfterEffects;
    if (declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER)) {
        add("8-bit", "an 8-bit frame", ae, Depth::Bits8, true);
        if (deep) {
            add("16-bit", "a 16-bit frame", ae, Depth::Bits16, true);
        }
        if (declared.has2(PF_OutFlag2_FLOAT_COLOR_AWARE)) {
            add("float", "a float frame", ae, Depth::Float, true);
        }
    }
    add("plain-8-bit", "a plain 8-bit render", ae, Depth::Bits8, false);
    if (deep) {
        add("plain-16-bit", "a plain 16-bit render", ae, Depth::Bits16, false);
    }
    for (const PremiereKind& kind : kPremiereKinds) {
        if (host::premiere_format(declared.premiere_formats, kind.depth)) {
            add(kind.name, kind.sent, Application::Premiere, kind.depth, false);
        }
    }
    return kinds;
}

const FrameKind* deepest(const std::vector<FrameKind>& kinds) {
    const FrameKind* last = nullptr;
    for (const FrameKind& kind : kinds) {
        last = kind.smart ? &kind : last;
    }
    return last;
}

}  // namespace conformance
