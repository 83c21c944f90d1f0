#include "product_frame.h"

#include <base/array.h>
#include <libimgops/renderer.h>

#include <cstddef>

#include "support/catalogue.h"
#include "support/guarded_frame.h"
#include "support/memory_stars.h"
#include "support/path_in_use.h"

camera product_camera(const reference::Camera& from) {
    camera to;
    const reference::Triple* axes[] = {&from.right, &from.up, &from.forward};
    for (int column = 0; column < 3; ++column) {
        const reference::Triple& axis = *axes[column];
        double offset = 0;
        for (int row = 0; row < 3; ++row) {
            const auto i = static_cast<std::size_t>(row);
            to.xform(row, column) = axis[i];
            offset -= from.position[i] * axis[i];
        }
        to.xform(3, column) = offset;
    }
    to.focal = from.focal;
    to.near_clip = from.near_clip;
    return to;
}

StarRendererData product_settings(const reference::Settings& from) {
    StarRendererData to;
    const double aspect = static_cast<double>(from.width) / from.height;
    to.window_x0 = -aspect;
    to.window_x1 = aspect;
    to.window_y0 = -1;
    to.window_y1 = 1;
    to.spot_size_x = from.spot_size * from.aspect_ratio;
    to.spot_size_y = from.spot_size;
    to.threshold = from.threshold;
    to.max_luminance = from.max_luminance;
    to.brightness = from.brightness;
    to.saturation = from.saturation;
    to.bias_exponent = 1 / (from.bias + 0.000001);
    to.tint_strength = from.tint_strength;
    to.parallax_crush = from.parallax_crush;
    to.tint_color = {static_cast<float>(from.tint[0]), static_cast<float>(from.tint[1]),
                     static_cast<float>(from.tint[2])};
    switch (from.projection) {
        case reference::Projection::Perspective:
            to.projection = Persp;
            break;
        case reference::Projection::Hemisphere:
            to.projection = HemiSph;
            break;
        case reference::Projection::Equidistant:
            to.projection = AzEqu;
            break;
    }
    to.use_depth = true;
    return to;
}

support::Picture product_frame(const std::vector<reference::Star>& stars,
                               const reference::Settings& settings,
                               const std::vector<reference::Camera>& cameras, DrawPath path) {
    const support::PathInUse in_use(path);
    std::vector<support::CatalogueStar> records;
    records.reserve(stars.size());
    for (const reference::Star& one : stars) {
        records.push_back(
            {one.lon, one.lat, one.luminance, one.srgb[0], one.srgb[1], one.srgb[2], one.distance});
    }
    support::MemoryStars input(support::kVersion2, records);
    Array<camera> samples;
    for (const reference::Camera& sample : cameras) {
        samples.append(product_camera(sample));
    }
    const StarRendererData data = product_settings(settings);
    support::GuardedFrame frame(settings.width, settings.height);
    const StarFramebuffer view = frame.view();
    StarRenderer renderer(data, view, input, samples);
    bool drew = true;
    renderer.render_stars(drew);
    return support::picture_from_argb(view.a, view.width, view.height, view.stride);
}
