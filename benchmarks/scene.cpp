#include "scene.h"

#include <libimgops/byte_order.h>
#include <libimgops/projection.h>
#include <libimgops/renderer.h>

#include <cmath>
#include <cstdio>

#include "libimgops/segment_shape.h"
#include "libimgops/spot_light.h"
#include "libimgops/star_segments.h"
#include "libimgops/star_shading.h"

namespace bench {

namespace {

Matrix4<double> turned_sideways(double angle) {
    const double s = std::sin(angle), c = std::cos(angle);
    return {c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1};
}

Matrix4<double> rolled(double angle) {
    const double s = std::sin(angle), c = std::cos(angle);
    return {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

/// `segments` + 1 samples, from half of `degrees` on one side to half of them on the other.
void turn(Array<camera>& cameras, int segments, double degrees, Matrix4<double> (*by)(double)) {
    cameras.clear();
    for (int i = 0; i <= segments; ++i) {
        camera sample;
        sample.xform = by(degrees / 57.29577951308232 * (static_cast<double>(i) / segments - 0.5));
        cameras.append(sample);
    }
}

}  // namespace

StarRendererData default_settings(int width, int height) {
    const double aspect = static_cast<double>(width) / height;
    StarRendererData data;
    data.window_x0 = -aspect;
    data.window_x1 = aspect;
    data.window_y0 = -1;
    data.window_y1 = 1;
    data.spot_size_x = 2.5;
    data.spot_size_y = 2.5;
    data.threshold = static_cast<double>(0.0001F);
    data.max_luminance = 0.5;
    data.brightness = 5;
    data.saturation = static_cast<double>(0.4F);
    data.bias_exponent = 1 / (1 + 0.000001);
    data.tint_strength = 0;
    data.parallax_crush = 100;
    data.tint_color = Color3(128 / 255.0F, 128 / 255.0F, 128 / 255.0F);
    data.projection = Persp;
    data.use_depth = true;
    return data;
}

void hold(Array<camera>& cameras) {
    cameras.clear();
    cameras.append();
}

void pan(Array<camera>& cameras, int segments, double degrees) {
    turn(cameras, segments, degrees, turned_sideways);
}

void roll(Array<camera>& cameras, int segments, double degrees) {
    turn(cameras, segments, degrees, rolled);
}

FloatFrame::FloatFrame(int width, int height)
    : image_(Kelv::ImageSpec(width, height, Kelv::ImageSpec::BGRA_FLOAT)) {
    view_.a = image_.line_float(0);
    view_.r = view_.a + 1;
    view_.g = view_.a + 2;
    view_.b = view_.a + 3;
    view_.width = width;
    view_.height = height;
    view_.stride = 4 * width;
    view_.pixel_stride = 4;
    clear();
}

std::size_t FloatFrame::floats() const {
    return std::size_t{4} * static_cast<std::size_t>(view_.width) *
           static_cast<std::size_t>(view_.height);
}

Scene::Scene(int width, int height, const std::vector<star>& stars)
    : settings(default_settings(width, height)),
      frame(width, height),
      sky(stars),
      codes_(width, height) {
    hold(cameras);
}

bool Scene::draw_stars() {
    StarRenderer renderer(settings, frame.view(), sky.input(), cameras);
    bool drew = false;
    renderer.render_stars(drew);
    return drew;
}

bool Scene::draw() {
    frame.clear();
    const bool drew = draw_stars();
    codes_.take(frame.image());
    return drew;
}

float Scene::spot() const {
    return static_cast<float>(settings.spot_size_x * 0.0005 * frame.view().width);
}

std::string Scene::difference(double peak_share) {
    const auto drawn_by = [&](DrawPath path) {
        const DrawBy by(path);
        frame.clear();
        return draw_stars();
    };
    const bool drew = drawn_by(DrawPath::Plain);
    const std::vector<float> plain(frame.data(), frame.data() + frame.floats());
    if (drawn_by(DrawPath::Fast) != drew) {
        return "one path drew, the other did not";
    }
    return bench::difference(plain.data(), frame.data(), plain.size(), peak_share);
}

void Scene::for_each_segment(const std::function<bool(const DrawnSegment&)>& visit) {
    const StarFramebuffer& fb = frame.view();
    StarInput& input = sky.input();
    input.is_valid();
    const auto samples = cameras.len();
    const auto shared = static_cast<float>(samples > 1 ? samples - 1 : 1);
    std::vector<Matrix4<double>> mats;
    for (uword i = 0; i < samples; ++i) {
        mats.push_back(projection_matrix(cameras[i], settings.projection));
    }
    bool goes_on = true;
    for (u32 n = 0; goes_on && n < sky.stars(); ++n) {
        const star& s = *input.next();
        const float luminance = lefloat_to_cpu(&s.luminance);
        if (settings.threshold > static_cast<double>(luminance)) {
            continue;
        }
        const float energy = static_cast<float>(4 * settings.brightness) / shared *
                             shaped_luminance(luminance, settings);
        bool is_visible = false;
        bool was_visible = false;
        const auto project = [&](uword sample, Vector2& place) {
            was_visible = is_visible;
            is_visible =
                world_to_screen(ledouble_to_cpu(&s.lon), ledouble_to_cpu(&s.lat),
                                ledouble_to_cpu(&s.distance), settings.parallax_crush, mats[sample],
                                settings.projection, fb.width, fb.height, settings.window_x0,
                                settings.window_x1, settings.window_y0, settings.window_y1, place);
            return is_visible;
        };
        draw_segments(samples, project, [&](const Vector2& a, const Vector2& b) {
            const DrawnSegment segment{a, b, energy, samples > 1 && is_visible != was_visible};
            goes_on = goes_on && (visited_pixels(fb, segment, spot()) == 0 || visit(segment));
            return true;
        });
    }
}

std::string difference(const float* plain, const float* fast, std::size_t count,
                       double peak_share) {
    float peak = 0;
    for (std::size_t i = 0; i < count; ++i) {
        peak = std::fmax(peak, std::fabs(plain[i]));
    }
    const double allowed = peak_share * static_cast<double>(peak);
    for (std::size_t i = 0; i < count; ++i) {
        const double apart =
            std::fabs(static_cast<double>(plain[i]) - static_cast<double>(fast[i]));
        // So written that what is not a number differs.
        if (!(apart <= allowed)) {
            char text[160];
            std::snprintf(text, sizeof text, "value %zu is %.9g, plainly %.9g; the peak is %.9g", i,
                          static_cast<double>(fast[i]), static_cast<double>(plain[i]),
                          static_cast<double>(peak));
            return text;
        }
    }
    return peak > 0 ? "" : "nothing was drawn";
}

double visited_pixels(const StarFramebuffer& fb, const DrawnSegment& segment, float spot) {
    const auto& [a, b, energy, crosses] = segment;
    const float reach = reach_of(energy);
    const Box grown = pixel_box(a, b, Vector2(spot * reach, spot * reach));
    if (reach < 0.0F || is_off_frame(grown, fb)) {
        return 0;
    }
    const Box box = clipped(grown, fb);
    const RowLine line(a, b, spot * reach, spot, spot);
    const Vector2 middle = midpoint(a, b);
    double visited = 0;
    float ry = static_cast<float>(box.y0) - middle[1];
    for (int iy = box.y0; iy <= box.y1; ++iy, ry += 1.0F) {
        const float centre =
            line.slope < kSteepestSlope ? a[0] + ((ry + middle[1]) - a[1]) * line.slope : middle[0];
        const float left = max(static_cast<float>(box.x0), centre - line.half);
        const float right = min(static_cast<float>(box.x1), centre + line.half);
        const float last_rx = std::ceil(right) - middle[0];
        int ix = pixel_index(left);
        for (float rx = std::floor(left) - middle[0]; last_rx >= rx && ix < fb.width; rx += 1.0F) {
            ++ix;
            ++visited;
        }
    }
    return visited;
}

}  // namespace bench
