// The star renderer: one frame's set-up, and the loop over its stars.
#include <base/exceptions.h>
#include <libimgops/projection.h>
#include <libimgops/renderer.h>

#include <cmath>

#include "fast/fast_frame.h"
#include "message_source.h"
#include "renderer_private.h"

namespace {

constexpr int kNoCamerasLine = 464;
constexpr int kBadHeaderLine = 518;

/// Pixels of a spot size, which is in thousandths of half the frame's width on both axes.
double spot_pixels(double size, const StarFramebuffer& fb) { return size * 0.0005 * fb.width; }

/// How much wider than high a pixel's share of the window is drawn: 1 for the effect's own window.
double pixel_aspect(const StarRendererData& data, const StarFramebuffer& fb) {
    const double window =
        std::fabs(data.window_x1 - data.window_x0) / std::fabs(data.window_y0 - data.window_y1);
    return static_cast<double>(fb.width) / fb.height / window;
}

/// A spot is never drawn smaller than a pixel; below that it is dimmed instead.
void keep_spot_above_a_pixel(float& spot, float& intensity) {
    if (spot < 1.0F) {
        intensity *= spot;
        spot = 1.0F;
    }
}

}  // namespace

StarRenderer::StarRenderer(const StarRendererData& data_, const StarFramebuffer& fb,
                           StarInput& input, const Array<camera>& cams)
    : data(data_), priv(new PrivateData{fb, input, cams}) {
    if (cams.empty()) {
        throw AssertXception("priv->cams.len() > 0", kStarsSource, __PRETTY_FUNCTION__,
                             kNoCamerasLine);
    }
    const uword samples = cams.len();
    for (uword i = 0; i < samples; ++i) {
        priv->mats.append(projection_matrix(cams[i], data.projection));
    }

    // A star seen through n samples is drawn as n - 1 segments, which share its light.
    priv->intensity = static_cast<float>(4.0 * data.brightness);
    if (samples > 1) {
        priv->intensity /= static_cast<float>(samples - 1);
    }
    // The aspect goes into the width alone, on purpose.
    priv->spot_w = static_cast<float>(spot_pixels(data.spot_size_x, fb) * pixel_aspect(data, fb));
    priv->spot_h = static_cast<float>(spot_pixels(data.spot_size_y, fb));
    keep_spot_above_a_pixel(priv->spot_w, priv->intensity);
    keep_spot_above_a_pixel(priv->spot_h, priv->intensity);

    if (!input.is_valid()) {
        throw StrXception(kStarsSource, __PRETTY_FUNCTION__, kBadHeaderLine,
                          "error in star database file");
    }
    priv->index = 1;
}

StarRenderer::~StarRenderer() = default;

bool StarRenderer::render_star(bool& drew) {
    if (priv->index >= priv->input.nstars()) {
        return false;
    }
    // The whole frame is black: nothing is read.
    if (data.brightness == 0.0) {
        return false;
    }
    const star* s = priv->input.next();
    const bool drew_before = drew;
    const bool drew_now = do_render_star(s);
    drew = drew_now || drew_before;
    ++priv->index;
    return priv->index < priv->input.nstars();
}

void StarRenderer::render_stars(bool& drew) {
    const scoped_ptr<FastFrame> fast(FastFrame::of(data, *priv));
    if (fast) {
        fast->draw(drew);
        return;
    }
    while (render_star(drew)) {
    }
}
