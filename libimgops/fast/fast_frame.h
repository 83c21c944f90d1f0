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
    /// For the caller to delete; null if the plain path is in use, or if only that can draw this
    /// frame: its layout or settings are none of ours, or there is no memory for more.
    static FastFrame* of(const StarRendererData& data, StarRenderer::PrivateData& priv);

    /// Draws them. Whatever throws, the stars before are drawn, `drew` is as they left it, and the
    /// input stands where it does on the plain path.
    void draw(bool& drew);

private:
    /// Stars above the threshold, side by side.
    struct Gathered;

    FastFrame(const StarRendererData& data, StarRenderer::PrivateData& priv,
              const star_kernels::Kernels& kernels);

    /// The input's next records; before it throws, what is gathered is drawn.
    const star* next_in_row(u32& count, Gathered& stars, bool& drew);
    void gather(const star* records, u32 count, Gathered& stars) const;
    void draw_gathered(Gathered& stars, bool& drew);
    void draw_star(const star& s, bool& drew);
    /// Puts the input behind a star that it has handed out already.
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
