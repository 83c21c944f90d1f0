// Which segments a star is drawn as: the same for the plain and the fast path.
#pragma once

#include <base/newmatrix.h>
#include <base/words.h>

/// Calls `draw(from, to)` for the segments between consecutive camera samples that have at least
/// one visible end, or for a still star with both ends the same. Returns whether any call did.
///
/// `samples`  at least 1.
/// `project`  `bool (uword sample, Vector2& position)`: writes the star's place in pixels, returns
///            whether it is visible; called once a sample, in order.
/// `draw`     `bool (const Vector2& from, const Vector2& to)`
template <class Project, class Draw>
inline bool draw_segments(uword samples, const Project& project, const Draw& draw) {
    Vector2 from;
    bool from_visible = project(0, from);
    if (samples == 1) {
        return from_visible && draw(from, from);
    }
    bool drew = false;
    for (uword sample = 1; sample != samples; ++sample) {
        Vector2 to;
        const bool to_visible = project(sample, to);
        // One visible end is enough, so that streaks leave the picture instead of ending short of
        // its edge. One that crosses the camera's plane goes straight to its mirrored end.
        if (to_visible || from_visible) {
            const bool drew_segment = draw(from, to);
            drew = drew || drew_segment;
        }
        from = to;
        from_visible = to_visible;
    }
    return drew;
}
