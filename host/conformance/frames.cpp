#include "frames.h"

#include <conformance/deviations.h>
#include <host_api/effect_interface.h>

#include "examination.h"
#include "frame_kinds.h"

namespace conformance {

using host::Frame;

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
