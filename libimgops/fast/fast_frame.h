// All stars of a frame at once: the fast path.
#pragma once

#include "kernels/kernels.h"
#include "renderer_private.h"
#include "segment_batch.h"

/// Draws the stars that a renderer has left. Stars that surely leave no light are found some
/// hundreds at a time, from rough places. Of the others the luminance is shaded first: what is too
/// faint to draw is not projected. The rest is projected as the plain path does it, and only what
/// reaches the frame gets its colour.
class FastFrame {
public:
    /// Returns an object for the caller to delete. Returns null if the plain path has to draw the
    /// frame: it is the one in use, the frame's layout or settings are not among those that the
    /// fast path knows, or there is no memory for its buffers.
    static FastFrame* of(const StarRendererData& data, StarRenderer::PrivateData& priv);

    /// Draws all stars that are left and sets `is_lit` when one of them leaves light. If a star or
    /// the input throws, the stars before it are drawn, `is_lit` is as they left it, and the input
    /// stands where the plain path leaves it.
    void draw(bool& is_lit);

private:
    /// Stars above the threshold, side by side.
    struct Gathered;

    FastFrame(const StarRendererData& data, StarRenderer::PrivateData& priv,
              const star_kernels::Kernels& kernels);

    /// The input's next records. If the input throws, draws what is gathered first.
    const star* next_in_row(u32& count, Gathered& stars, bool& is_lit);
    void gather(const star* records, u32 count, Gathered& stars) const;
    void draw_gathered(Gathered& stars, bool& is_lit);
    void draw_star(const star& s, bool& is_lit);
    /// Moves the input back to the record after `s`, which it has handed out already.
    void go_back_behind(const star* s);

    const StarRendererData& data_;
    StarRenderer::PrivateData& priv_;
    const star_kernels::Kernels& kernels_;
    bool has_depth_;
    /// Linear light of the 256 codes of red, of green and of blue.
    float colour_tables_[3 * 256];
    scoped_array<star_kernels::Plane> planes_;
    SegmentBatch batch_;
};
