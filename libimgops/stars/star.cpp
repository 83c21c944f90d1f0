// One star of the catalogue on the plain path: which light it has and where it goes.
#include <libimgops/byte_order.h>
#include <libimgops/projection.h>
#include <libimgops/streak.h>

#include "renderer_private.h"
#include "star_segments.h"
#include "star_shading.h"

namespace {

/// Draws a star above the threshold. Not inlined: for the others, which are most, nothing of it
/// runs.
__attribute__((noinline)) bool draw_star(const star* s, const StarRendererData& data,
                                         const StarRenderer::PrivateData* priv) {
    const double lon = ledouble_to_cpu(&s->lon);
    const double lat = ledouble_to_cpu(&s->lat);
    const double depth =
        data.use_depth && priv->input.depth_valid() ? ledouble_to_cpu(&s->distance) : -1.0;
    const float luminance = shaped_luminance(lefloat_to_cpu(&s->luminance), data);
    const Color3 colour = shaped_colour(s->r, s->g, s->b, data);
    const float energy = priv->intensity * luminance;

    const StarFramebuffer& fb = priv->fb;
    const auto project = [&](uword sample, Vector2& position) {
        return world_to_screen(lon, lat, depth, data.parallax_crush, priv->mats[sample],
                               data.projection, fb.width, fb.height, data.window_x0, data.window_x1,
                               data.window_y0, data.window_y1, position);
    };
    const auto draw = [&](const Vector2& from, const Vector2& to) {
        return op_star_streak(fb, from, to, energy, colour, priv->spot_w, priv->spot_h, data.lines);
    };
    return draw_segments(priv->cams.len(), project, draw);
}

}  // namespace

bool StarRenderer::do_render_star(const star* s) {
    // On the catalogue's own luminance, before bias and ceiling, so that the threshold picks the
    // same stars whatever those are. What is not a number passes.
    const float luminance = lefloat_to_cpu(&s->luminance);
    return !(data.threshold > static_cast<double>(luminance)) && draw_star(s, data, priv.get());
}
