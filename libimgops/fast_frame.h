// All stars of a frame at once: the fast path.
#pragma once

#include "kernels/kernels.h"
#include "renderer_private.h"
#include "segment_batch.h"

/// Draws the stars that a renderer has left. Stars that surely leave no light are found some
/// hundreds at a time, from rough places; only the others are projected as the plain path does it,
/// and only what reaches the frame is shaded.
class FastFrame {
public:
    /// Whether the frame and its settings are ones that this path can draw; the plain path can
    /// draw all.
    static bool can_draw(const StarRendererData& data, const StarFramebuffer& fb);

    FastFrame(const StarRendererData& data, StarRenderer::PrivateData& priv,
              const star_kernels::Kernels& kernels);

    void draw(bool& drew);

private:
    /// Stars above the threshold, side by side.
    struct Gathered;

    void gather(const star* records, u32 count, Gathered& stars) const;
    void draw_gathered(Gathered& stars, bool& drew);
    void draw_star(const star& s, bool& drew);

    const StarRendererData& data_;
    StarRenderer::PrivateData& priv_;
    const star_kernels::Kernels& kernels_;
    bool has_depth_;
    /// Linear light of the 256 codes of red, of green and of blue.
    float colour_tables_[3 * 256];
    Array<star_kernels::Plane> planes_;
    SegmentBatch batch_;
};
