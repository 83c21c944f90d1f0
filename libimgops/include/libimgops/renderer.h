// Draws the stars of one frame.
#pragma once

#include <base/array.h>
#include <base/scoped_ptr.h>
#include <libimgops/records.h>

class StarInput;
struct star;

/// One frame's renderer, made after the framebuffer has been cleared. Everything handed to the
/// constructor stays the caller's and must outlive the renderer.
class StarRenderer {
public:
    /// Prepares one matrix per camera sample and the spot, and takes the header from `input`.
    ///
    /// Throws `AssertXception` "priv->cams.len() > 0" without a camera sample and `StrXception`
    /// "error in star database file" for a header that is none, or for an input not rewound.
    StarRenderer(const StarRendererData& data, const StarFramebuffer& fb, StarInput& input,
                 const Array<camera>& cams);
    StarRenderer(const StarRenderer&) = delete;
    StarRenderer& operator=(const StarRenderer&) = delete;
    ~StarRenderer();

    /// Draws the next star and returns whether more remain. Sets `drew` when the star left light on
    /// the frame and never clears it. Leaves the input where it is after the last star.
    bool render_star(bool& drew);

    /// Draws all stars that are left, as calling `render_star` until it returns false would: the
    /// same light on the frame within what `DrawPath` promises, the same `drew`, the input where
    /// that leaves it, after an exception too.
    void render_stars(bool& drew);

    /// Draws one star through all camera samples: as a still spot for one sample, else as the
    /// segments between consecutive samples that have at least one visible end. Returns whether it
    /// left light. Throws `StrXception` "unknown projection" for a star above the threshold.
    bool do_render_star(const star* s);

    /// The room's own.
    struct PrivateData;

private:
    const StarRendererData& data;
    scoped_ptr<PrivateData> priv;
};
