#include "frames.h"

#include <conformance/deviations.h>
#include <host_api/effect_interface.h>

#include <cmath>
#include <cstdint>

#include "examination.h"
#include "frame_kinds.h"

namespace conformance {

using host::Frame;

namespace {

constexpr std::uint16_t kWhite16 = 32768;

/// How many channels are not `fit`, with the place of the first; empty when all are.
template <class Channel, class Fit>
std::string unfit_channels(const host::World& world, const char* fault, Fit fit) {
    std::vector<Channel> row(4 * static_cast<std::size_t>(world.width()));
    std::size_t count = 0;
    std::string first;
    for (int y = 0; y < world.height(); ++y) {
        world.read_row<Channel>(y, row);
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!fit(row[i]) && count++ == 0) {
                first = "row " + std::to_string(y) + ", column " + std::to_string(i / 4);
            }
        }
    }
    return count == 0 ? ""
                      : std::to_string(count) + " channels are " + fault + ", first in " + first;
}

/// Of the values that a channel's type holds but no pixel may.
std::string invalid_channels(const host::World& world) {
    switch (world.depth()) {
        case host::Depth::Bits16:
            return unfit_channels<std::uint16_t>(
                world, "above 32768", [](std::uint16_t value) { return value <= kWhite16; });
        case host::Depth::Float:
            return unfit_channels<float>(world, "not finite",
                                         [](float value) { return std::isfinite(value); });
        default:
            return {};
    }
}

}  // namespace

std::vector<std::byte> pixels(const Frame& frame) {
    std::vector<std::byte> all;
    const std::size_t row = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(bytes_per_pixel(frame.world.depth()));
    for (int y = 0; y < frame.world.height(); ++y) {
        all.insert(all.end(), frame.world.row(y), frame.world.row(y) + row);
    }
    return all;
}

std::string status_text(const Frame& frame) {
    return "status " + std::to_string(frame.status) +
           (frame.message.text.empty() ? "" : ": " + frame.message.text);
}

Drawing due(const FrameKind& kind, const Declared& declared) {
    // With smart rendering at hand the plain commands need not draw, outside Premiere Pro.
    const bool may_rest = kind.plain && declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    return may_rest ? Drawing::WholeOrNone : Drawing::Whole;
}

void inspect(const Frame& frame, Drawing drawing, Notes& notes, const std::string& where) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    if (frame.status != PF_Err_NONE) {
        notes.find("", where + status_text(frame));
    } else if (drawing != Drawing::NotAsked && !frame.rendered) {
        notes.find("", where + "nothing to render: the result is empty");
    } else if (frame.rendered && frame.undrawn_pixels != 0 &&
               (drawing == Drawing::Whole || frame.undrawn_pixels != all)) {
        notes.find("", where + std::to_string(frame.undrawn_pixels) + " of " + std::to_string(all) +
                           " pixels are not drawn");
    } else if (frame.rendered && frame.undrawn_pixels == 0) {
        if (const std::string invalid = invalid_channels(frame.world); !invalid.empty()) {
            notes.find("", where + invalid);
        }
    }
    if (frame.status == PF_Err_NONE && frame.message.is_error) {
        notes.find("messages", where + "an error message with status 0: " + frame.message.text);
    }
    if (frame.open_param_checkouts != 0) {
        notes.find("parameters",
                   where + std::to_string(frame.open_param_checkouts) +
                       " parameters checked out and not in again",
                   kParametersStayOut);
    }
    if (frame.handle_left) {
        notes.find("record", where + "a handle stands in the slot of the callbacks",
                   kHandleInRecord);
    }
    const bool none = frame.rendered && frame.undrawn_pixels == all;
    notes.say("status 0" + (!frame.rendered ? ""
                            : none          ? ", no pixel drawn"
                                   : ", all of " + std::to_string(frame.world.width()) + " x " +
                                         std::to_string(frame.world.height()) + " pixels drawn"));
}

}  // namespace conformance
