#include "fast_frame.h"

#include <libimgops/byte_order.h>
#include <libimgops/projection.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "frustum.h"
#include "kernels/choice.h"
#include "star_segments.h"
#include "star_shading.h"

namespace {

using star_kernels::kFloatsPerPixel;
using star_kernels::kStarsAtOnce;

constexpr int kColours = 3;
constexpr int kCodes = 256;
/// Rows and columns are kept in 16 bits.
constexpr int kLargestSize = std::numeric_limits<std::int16_t>::max();

/// Whether coverage, red, green and blue of a pixel lie side by side, as do the pixels of a row,
/// and rows do not overlap.
bool is_interleaved(const StarFramebuffer& fb) {
    const bool rows_overlap = fb.height > 1 && std::abs(std::ptrdiff_t{fb.stride}) <
                                                   std::ptrdiff_t{kFloatsPerPixel} * fb.width;
    return fb.pixel_stride == kFloatsPerPixel && fb.r == fb.a + 1 && fb.g == fb.a + 2 &&
           fb.b == fb.a + 3 && !rows_overlap;
}

/// How far the light of the brightest possible star reaches, in spot radii.
double longest_reach(const StarRendererData& data, float intensity) {
    // The ceiling bounds no light if it is not a number, nor if the intensity is negative: stars of
    // negative luminance shine then, and the ceiling does not hold them.
    if (std::isnan(data.max_luminance) || intensity < 0.0F) {
        return std::numeric_limits<double>::infinity();
    }
    // A thousandth more than the brightest star's. Two roundings of the energy take 1.2e-7 of it.
    // The rest adds at least 5e-6 of itself to the reach (0.0005 / reach^2, with reach^2 = ln(6250
    // energy) below 98), which is more than the five roundings of reach, radius and the box's
    // sides.
    const double energy = 1.001 * static_cast<double>(intensity) * data.max_luminance;
    return static_cast<double>(max(0.0F, reach_of(static_cast<float>(energy))));
}

bool is_finite(const Color3& colour) {
    return std::isfinite(colour[0]) && std::isfinite(colour[1]) && std::isfinite(colour[2]);
}

/// Whether the frame and its settings are ones that this path can draw.
bool can_draw(const StarRendererData& data, const StarFramebuffer& fb) {
    const bool is_known =
        data.projection == Persp || data.projection == HemiSph || data.projection == AzEqu;
    // The colours of all other codes lie between these two.
    const bool has_colours =
        is_finite(shaped_colour(0, 0, 0, data)) && is_finite(shaped_colour(255, 255, 255, data));
    return is_known && has_colours && data.lines == STARS_LINES_ALL && is_interleaved(fb) &&
           fb.width > 0 && fb.height > 0 && fb.width <= kLargestSize && fb.height <= kLargestSize;
}

}  // namespace

struct FastFrame::Gathered {
    const star* records[kStarsAtOnce];
    float lon[kStarsAtOnce] = {};
    float lat[kStarsAtOnce] = {};
    float weight[kStarsAtOnce] = {};
    unsigned char is_outside[kStarsAtOnce];
    int count = 0;
};

FastFrame* FastFrame::of(const StarRendererData& data, StarRenderer::PrivateData& priv) {
    const star_kernels::Kernels* kernels = star_kernels::of_draw_path();
    if (kernels == nullptr || !can_draw(data, priv.fb)) {
        return nullptr;
    }
    try {
        return new FastFrame(data, priv, *kernels);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

FastFrame::FastFrame(const StarRendererData& data, StarRenderer::PrivateData& priv,
                     const star_kernels::Kernels& kernels)
    : data_(data),
      priv_(priv),
      kernels_(kernels),
      has_depth_(data.use_depth && priv.input.depth_valid()),
      planes_(new star_kernels::Plane[star_kernels::kPlanes * priv.mats.len()]),
      batch_(priv.fb, kernels, priv.spot_w, priv.spot_h, colour_tables_, priv.mats.len() == 1) {
    const double reach = longest_reach(data, priv.intensity);
    find_frustum_planes(data, priv.fb, priv.mats, reach * static_cast<double>(priv.spot_w),
                        reach * static_cast<double>(priv.spot_h), planes_.get());
    for (int code = 0; code < kCodes; ++code) {
        const auto c = static_cast<unsigned char>(code);
        const Color3 colour = shaped_colour(c, c, c, data);
        for (int channel = 0; channel < kColours; ++channel) {
            colour_tables_[kCodes * channel + code] = colour[channel];
        }
    }
}

void FastFrame::draw(bool& is_lit) {
    const u32 nstars = priv_.input.nstars();
    // The whole frame is black: nothing is read.
    if (data_.brightness == 0.0) {
        return;
    }
    Gathered stars;
    if (!has_depth_) {
        // Stars without distance have a weight all the same if the crush is below 0.
        std::fill_n(stars.weight, kStarsAtOnce,
                    static_cast<float>(weight_of_distance(-1.0, data_.parallax_crush)));
    }
    while (priv_.index < nstars) {
        const u32 left = nstars - priv_.index;
        const u32 room = static_cast<u32>(kStarsAtOnce - stars.count);
        u32 count = left < room ? left : room;
        const star* records = next_in_row(count, stars, is_lit);
        priv_.index += count;
        gather(records, count, stars);
        if (stars.count == kStarsAtOnce) {
            draw_gathered(stars, is_lit);
        }
    }
    draw_gathered(stars, is_lit);
    batch_.draw();
}

const star* FastFrame::next_in_row(u32& count, Gathered& stars, bool& is_lit) {
    try {
        return priv_.input.next_in_row(count);
    } catch (...) {
        draw_gathered(stars, is_lit);
        batch_.draw();
        throw;
    }
}

void FastFrame::gather(const star* records, u32 count, Gathered& stars) const {
    // Without a branch: no processor could predict which stars pass.
    int n = stars.count;
    for (u32 i = 0; i < count; ++i) {
        const auto luminance = static_cast<double>(lefloat_to_cpu(&records[i].luminance));
        stars.records[n] = &records[i];
        n += data_.threshold > luminance ? 0 : 1;
    }
    stars.count = n;
}

void FastFrame::draw_gathered(Gathered& stars, bool& is_lit) {
    for (int i = 0; i < stars.count; ++i) {
        const star& s = *stars.records[i];
        stars.lon[i] = deg_to_rad(static_cast<float>(ledouble_to_cpu(&s.lon)));
        stars.lat[i] = deg_to_rad(static_cast<float>(ledouble_to_cpu(&s.lat)));
        if (has_depth_) {
            stars.weight[i] = static_cast<float>(
                weight_of_distance(ledouble_to_cpu(&s.distance), data_.parallax_crush));
        }
    }
    kernels_.outside(stars.lon, stars.lat, stars.weight, stars.count, planes_.get(),
                     static_cast<int>(priv_.mats.len()), stars.is_outside);
    for (int i = 0; i < stars.count; ++i) {
        if (stars.is_outside[i] == 0) {
            // A star that throws does not count, whatever light it left before.
            bool is_lit_now = is_lit;
            try {
                draw_star(*stars.records[i], is_lit_now);
            } catch (...) {
                go_back_behind(stars.records[i]);
                throw;
            }
            is_lit = is_lit_now;
        }
    }
    stars.count = 0;
}

void FastFrame::go_back_behind(const star* s) {
    const u32 nstars = priv_.input.nstars();
    try {
        priv_.input.reset();
        priv_.index = 0;
        while (priv_.input.next() != s && priv_.index + 1 < nstars) {
            ++priv_.index;
        }
    } catch (...) {
        // The star's own failure is the one to tell.
    }
}

void FastFrame::draw_star(const star& s, bool& is_lit) {
    const StarFramebuffer& fb = priv_.fb;
    const double depth = has_depth_ ? ledouble_to_cpu(&s.distance) : -1.0;
    const VectorN<double, 4> point =
        star_point(ledouble_to_cpu(&s.lon), ledouble_to_cpu(&s.lat), depth, data_.parallax_crush);
    const auto project = [&](uword sample, Vector2& position) {
        return point_to_screen(point, priv_.mats[sample], data_.projection, fb.width, fb.height,
                               data_.window_x0, data_.window_x1, data_.window_y0, data_.window_y1,
                               position);
    };
    const float luminance = shaped_luminance(lefloat_to_cpu(&s.luminance), data_);
    const float energy = priv_.intensity * luminance;
    const float reach = reach_of(energy);
    if (!(reach >= 0.0F)) {
        return;
    }
    const u32 codes = u32{s.r} | u32{s.g} << 8U | u32{s.b} << 16U;

    const auto draw = [&](const Vector2& from, const Vector2& to) {
        batch_.add(from, to, energy, reach, codes, is_lit);
        return is_lit;
    };
    draw_segments(priv_.mats.len(), project, draw);
}
