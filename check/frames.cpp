#include "frames.h"

#include <base/string.h>
#include <check/report.h>
#include <host/camera.h>
#include <host/pixel_format.h>
#include <host_api/effect_interface.h>

#include <cmath>
#include <utility>

namespace check {

using host::Application;
using host::Depth;
using host::Frame;
using host::Rule;

namespace {

const FrameKind kKinds[] = {
    {"8-bit", "an 8-bit frame", Application::AfterEffects, Depth::Bits8, true},
    {"16-bit", "a 16-bit frame", Application::AfterEffects, Depth::Bits16, true},
    {"float", "a float frame", Application::AfterEffects, Depth::Float, true},
    {"plain-8-bit", "a plain 8-bit render", Application::AfterEffects, Depth::Bits8, false},
    {"plain-16-bit", "a plain 16-bit render", Application::AfterEffects, Depth::Bits16, false},
    {"premiere", "an 8-bit render in Premiere Pro", Application::Premiere, Depth::Bits8, false},
    {"premiere-16-bit", "a 16-bit render in Premiere Pro", Application::Premiere, Depth::Bits16,
     false},
    {"premiere-float", "a float render in Premiere Pro", Application::Premiere, Depth::Float,
     false},
};

bool declares(const Declared& effect, const FrameKind& kind) {
    if (kind.application == Application::Premiere) {
        return host::premiere_format(effect.premiere_formats, kind.depth).has_value();
    }
    return (!kind.smart || effect.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER)) &&
           (kind.depth != Depth::Bits16 || effect.has(PF_OutFlag_DEEP_COLOR_AWARE)) &&
           (kind.depth != Depth::Float || effect.has2(PF_OutFlag2_FLOAT_COLOR_AWARE));
}

constexpr std::pair<PF_PixelFormat, const char*> kFormatNames[] = {
    {PF_PixelFormat_BGRA32, "8-bit BGRA"},
    {PF_PixelFormat_ARGB32, "8-bit ARGB"},
    {PF_PixelFormat_ARGB64, "16-bit ARGB"},
    {PF_PixelFormat_ARGB128, "float ARGB"},
};

std::string format_name(std::int32_t format) {
    for (const auto& [number, name] : kFormatNames) {
        if (number == format) {
            return name;
        }
    }
    return String::fmt("the format 0x%08X", static_cast<unsigned>(format)).c_str();
}

bool is_valid(std::uint16_t channel) { return channel <= 32768; }
bool is_valid(float channel) { return std::isfinite(channel); }

/// How many channels have a value that their type holds but no pixel may, with the place of the
/// first; empty when none has.
template <class Channel>
std::string invalid_channels(const host::World& world, const char* fault) {
    std::vector<Channel> row(4 * static_cast<std::size_t>(world.width()));
    std::size_t count = 0;
    std::string first;
    for (int y = 0; y < world.height(); ++y) {
        world.read_row<Channel>(y, row);
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!is_valid(row[i]) && count++ == 0) {
                first = "row " + std::to_string(y) + ", column " + std::to_string(i / 4);
            }
        }
    }
    return count == 0 ? ""
                      : std::to_string(count) + " channels are " + fault + ", first in " + first;
}

std::string invalid_channels(const host::World& world) {
    return world.depth() == Depth::Bits16  ? invalid_channels<std::uint16_t>(world, "above 32768")
           : world.depth() == Depth::Float ? invalid_channels<float>(world, "not finite")
                                           : "";
}

std::size_t all_pixels(const Frame& frame) {
    return static_cast<std::size_t>(frame.world.width()) *
           static_cast<std::size_t>(frame.world.height());
}

std::string not_drawn(const Frame& frame) {
    return std::to_string(frame.undrawn_pixels) + " of " + std::to_string(all_pixels(frame)) +
           " pixels are not drawn";
}

/// The picture of a frame for which nothing failed.
void judge_picture(const Frame& frame, Drawing drawing, Notes& notes, const std::string& where) {
    const bool none = frame.undrawn_pixels == all_pixels(frame);
    if (frame.status != PF_Err_NONE) {
        notes.find(where + status_text(frame));
    } else if (drawing != Drawing::NotAsked && !frame.rendered) {
        notes.find(where + "nothing to render: the result is empty");
    } else if (frame.rendered && frame.undrawn_pixels != 0 &&
               (drawing == Drawing::Whole || !none)) {
        notes.find(where + not_drawn(frame));
    } else if (frame.rendered && frame.undrawn_pixels == 0) {
        if (const std::string invalid = invalid_channels(frame.world); !invalid.empty()) {
            notes.find(where + invalid);
        }
    }
    if (frame.status == PF_Err_NONE && frame.message.is_error) {
        notes.find(Rule::Messages, where + "an error message with status 0: " + frame.message.text);
    }
    notes.say("status 0" + (!frame.rendered ? ""
                            : none          ? ", no pixel drawn"
                                   : ", all of " + std::to_string(frame.world.width()) + " x " +
                                         std::to_string(frame.world.height()) + " pixels drawn"));
}

/// The answer to a frame in which a call failed.
void judge_answer(const Frame& frame, const Owed& owed, Notes& notes) {
    const bool none = frame.undrawn_pixels == all_pixels(frame);
    const bool whole = frame.rendered && frame.undrawn_pixels == 0;
    const bool fallback = whole || (owed.drawing == Drawing::WholeOrNone && none);
    if (frame.status == PF_Err_NONE && (owed.debt == Debt::Error || !fallback)) {
        notes.find(whole ? "status 0, a picture without what failed" : "status 0, no picture",
                   kStatusZero);
    }
    if (owed.cancelled && owed.debt == Debt::Error && frame.status != PF_Err_NONE &&
        frame.status != PF_Interrupt_CANCEL) {
        notes.find("status " + std::to_string(frame.status) +
                   " instead of 517, the user's cancellation");
    }
    if (frame.rendered && frame.undrawn_pixels != 0 && !none) {
        notes.find("half a picture: " + not_drawn(frame));
    }
}

}  // namespace

host::Scene pan_scene() {
    host::Scene scene;
    scene.source = "check";
    scene.composition.width = 48;
    scene.composition.height = 27;
    scene.composition.duration = 2.0;
    scene.composition.motion_blur = true;
    scene.camera = host::look_at_camera(host::Track({{0.0, 80.0}, {2.0, 86.0}}), 0.0, 0.0,
                                        host::Lens::vertical_fov(40.0, scene.composition.height));
    return scene;
}

host::RenderOptions FrameKind::options() const {
    host::RenderOptions options;
    options.depth = depth;
    options.plain = application == Application::AfterEffects && !smart;
    return options;
}

std::vector<FrameKind> frame_kinds(const Declared& declared) {
    std::vector<FrameKind> kinds;
    for (FrameKind kind : kKinds) {
        if (declares(declared, kind)) {
            // With smart rendering at hand the plain commands need not draw, outside Premiere Pro.
            if (kind.options().plain && declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER)) {
                kind.drawing = Drawing::WholeOrNone;
            }
            kinds.push_back(std::move(kind));
        }
    }
    return kinds;
}

std::string formats_not_drawn(const std::vector<std::int32_t>& declared) {
    std::vector<std::string> names;
    for (const std::int32_t format : declared) {
        const bool drawn = std::ranges::any_of(kKinds, [&](const FrameKind& kind) {
            const auto chosen = host::premiere_format(declared, kind.depth);
            return chosen && chosen->number == format;
        });
        if (!drawn) {
            note_once(names, format_name(format));
        }
    }
    return joined(names);
}

std::string status_text(const Frame& frame) {
    return "status " + std::to_string(frame.status) +
           (frame.message.text.empty() ? "" : ": " + frame.message.text);
}

void judge(const Frame& frame, const Owed& owed, Notes& notes, const std::string& where) {
    if (owed.debt == Debt::None) {
        judge_picture(frame, owed.drawing, notes, where);
    } else {
        judge_answer(frame, owed, notes);
    }
    if (frame.open_param_checkouts > owed.open_param_checkouts) {
        notes.find(Rule::Parameters,
                   where + std::to_string(frame.open_param_checkouts) +
                       " parameters checked out and not in again",
                   owed.debt == Debt::None ? kParametersStayOut : "");
    }
    if (frame.handle_left && !owed.handle_left) {
        notes.find(Rule::Records, where + "a handle stands in the slot of the callbacks",
                   kHandleInRecord);
    }
}

}  // namespace check
