// Segments on their way to the frame, drawn a band of rows at a time.
#pragma once

#include <base/scoped_ptr.h>
#include <base/words.h>
#include <libimgops/records.h>

#include <cstdint>

#include "closeness.h"
#include "kernels/kernels.h"
#include "segment_shape.h"
#include "spot_light.h"

/// Gathers segments and draws them so that a frame larger than the processor's caches is walked
/// through a few times only: band after band of rows, each as high as a cache holds, and in every
/// band the segments that touch it, in the order in which they came. Every pixel thus receives its
/// light in that order.
///
/// Holds less than 4 MiB. Draws what it holds when it is full and in `draw`. Segments that it still
/// holds when it is destroyed are lost.
class SegmentBatch {
public:
    /// What all segments of a frame share. `colour_tables`: 256 floats for each of red, green and
    /// blue, the linear light of a star's codes. The frame has coverage and colours side by side.
    /// `is_still`: whether the frame has one camera sample. With more of them a star that does not
    /// move is drawn as many equal spots. The kernels' small error would add up over these, so that
    /// the plain streak draws them.
    SegmentBatch(const StarFramebuffer& dst, const star_kernels::Kernels& kernels, float spot_w,
                 float spot_h, const float* colour_tables, bool is_still);

    /// Adds a segment that `op_star_streak` would draw. `reach`: `reach_of(energy)`, not negative;
    /// `codes`: the star's colour codes, red lowest. `is_lit`: whether the frame has any light
    /// yet. Until it has, the plain streak draws each segment at once and says whether it has now.
    void add(const Vector2& a, const Vector2& b, float energy, float reach, u32 codes,
             bool& is_lit);

    /// Draws what is gathered.
    void draw();

private:
    struct Entry {
        Vector2 a;
        Vector2 b;
        float energy;
        float reach;
        u32 codes;
        /// Offset from the midpoint of the row to draw next.
        float ry;
        /// The box, clipped to the frame.
        std::int16_t x0, y0, x1, y1;
    };

    /// Whether the segment is a still spot equal to the last entry.
    bool repeats_last(const Vector2& a, const Vector2& b, float energy, u32 codes) const;
    /// `begin`, `end`: of those entries in `order_` that begin in the band whose first row is `y`.
    void draw_band(int y, u32 begin, u32 end);
    void draw_rows(Entry& entry, int y0, int y1);
    void draw_streak(const star_kernels::Segment& segment, Entry& entry, const Vector2& dir,
                     float length, const SweptSpot& swept, Closeness closeness);
    /// Keeps the streak for `draw_trail`, after drawing those with which it does not go.
    void add_to_trail(const star_kernels::Streak& streak);
    /// Draws what `add_to_trail` has kept: before anything else is drawn, so that every pixel
    /// receives its light in order.
    void draw_trail();
    Color3 colour_of(u32 codes) const;

    const StarFramebuffer& dst_;
    const star_kernels::Kernels& kernels_;
    star_kernels::Pixels pixels_;
    float spot_w_;
    float spot_h_;
    bool is_still_;
    const float* colour_tables_;
    int band_rows_;
    scoped_array<Entry> entries_;
    u32 count_ = 0;
    /// Numbers of entries: those of each band, by the band in which they begin; and those that
    /// reach on from the band before, for this band and the next.
    scoped_array<u32> order_;
    scoped_array<u32> going_on_;
    scoped_array<u32> next_going_on_;
    u32 going_on_count_ = 0;
    scoped_array<u32> band_starts_;
    /// Whether any pixel of a band has coverage, which stays as it is while stars are drawn.
    enum class Coverage : unsigned char { Unknown, None, Some };
    scoped_array<Coverage> band_coverage_;
    /// Streaks that wait for others of their colour on the same place, as a star's next one is, and
    /// the pixels that the smallest of them visits.
    star_kernels::Trail trail_ = {};
    float smallest_in_trail_ = 0;
};
