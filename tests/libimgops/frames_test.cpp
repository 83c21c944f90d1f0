// Whole frames of the real renderer by both draw paths, judged by the reference renderer. The
// reference says for every value how far single precision and the reach may carry the real one; the
// bounds are argued in support/reference_renderer.h and .cpp, and the tests here show both that
// frames stay within them and that faults smaller than anyone would see do not.
#include <base/array.h>
#include <gtest/gtest.h>
#include <libimgops/renderer.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "kernels/kernel_sets.h"
#include "product_camera.h"
#include "support/catalogue.h"
#include "support/compare.h"
#include "support/guarded_frame.h"
#include "support/memory_stars.h"
#include "support/path_in_use.h"
#include "support/random_numbers.h"
#include "support/reference_renderer.h"

namespace {

using reference::Camera;
using reference::Projection;
using reference::Rendering;
using reference::Settings;
using reference::Star;
using support::Comparison;
using support::kBothPaths;
using support::name_of;
using support::Picture;

struct Scene {
    std::vector<Star> stars;
    Settings settings;
    std::vector<Camera> cameras;
};

/// The settings as a host shell fills them from the same controls.
StarRendererData product_settings(const Settings& from) {
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
    to.projection = product_projection(from.projection);
    to.use_depth = true;
    return to;
}

/// The real renderer's float frame by a draw path: linear red, green and blue. The catalogue is one
/// with distances, held in memory. The frame counts as lit from the start: until it is, the fast
/// path lets the plain one draw.
Picture product_frame(const std::vector<Star>& stars, const Settings& settings,
                      const std::vector<Camera>& cameras, DrawPath path) {
    const support::PathInUse in_use(path);
    std::vector<support::CatalogueStar> records;
    records.reserve(stars.size());
    for (const Star& one : stars) {
        records.push_back(
            {one.lon, one.lat, one.luminance, one.srgb[0], one.srgb[1], one.srgb[2], one.distance});
    }
    support::MemoryStars input(support::kVersion2, records);
    Array<::camera> samples;
    for (const Camera& sample : cameras) {
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

// Stars all over the sphere, half of them with a distance, twice as many for half the luminance:
// few are bright and most are faint, as in the sky.
std::vector<Star> catalogue(RandomNumbers& random, int count) {
    std::vector<Star> stars;
    for (int i = 0; i < count; ++i) {
        Star one;
        one.lon = random.between(0, 360);
        one.lat = std::asin(random.between(-1, 1)) * 180 / std::numbers::pi;
        one.luminance = static_cast<float>(std::min(1e-3 / random.between(1e-4, 1), 10.0));
        one.srgb = {random.code(), random.code(), random.code()};
        one.distance = i % 2 == 0 ? random.between(0.5, 300) : -1;
        stars.push_back(one);
    }
    return stars;
}

Scene scene(unsigned seed, Projection projection, int samples) {
    RandomNumbers random(seed);
    Scene made;
    made.stars = catalogue(random, 400);
    Settings& settings = made.settings;
    settings.width = 160;
    settings.height = 90;
    settings.projection = projection;
    settings.spot_size = random.between(6, 40);  // spots of 0.5 to 3.2 pixels
    settings.aspect_ratio = random.between(0.5, 2);
    settings.threshold = random.between(0, 1) < 0.5 ? 0 : 0.002;
    settings.max_luminance = random.between(0.2, 5);
    settings.brightness = random.between(1, 20);
    settings.bias = random.between(0.5, 2);
    settings.saturation = random.between(0, 2);  // above 1 some channels are negative
    settings.tint_strength = random.between(0, 1);
    settings.tint = {random.between(0, 1), random.between(0, 1), random.between(0, 1)};
    settings.parallax_crush = random.between(0, 1) < 0.5 ? 0 : random.between(0, 3);

    const double lon = random.between(0, 360);
    const double lat = random.between(-80, 80);
    const double roll = random.between(-180, 180);
    const double focal = random.between(0.8, 4);
    const double pan = random.between(-10, 10);
    const double tilt = random.between(-5, 5);
    const double turn = random.between(-20, 20);
    const reference::Triple from{random.between(-1, 1), random.between(-1, 1),
                                 random.between(-1, 1)};
    const reference::Triple way{random.between(-1, 1), random.between(-1, 1),
                                random.between(-1, 1)};
    for (int i = 0; i < samples; ++i) {
        const double t = samples > 1 ? static_cast<double>(i) / (samples - 1) : 0;
        made.cameras.push_back(
            reference::look_at(lon + t * pan, lat + t * tilt, roll + t * turn, focal + t * 0.2));
        for (std::size_t axis = 0; axis < 3; ++axis) {
            made.cameras.back().position[axis] = from[axis] + t * way[axis];
        }
    }
    // The first two stars are surely in the picture, whatever the view.
    for (const double side : {0.5, -0.5}) {
        made.stars[side > 0 ? 0 : 1] = {.lon = lon + side,
                                        .lat = lat + 1.5,
                                        .luminance = 1,
                                        .srgb = {250, 120, 30},
                                        .distance = -1};
    }
    return made;
}

Rendering reference_of(const Scene& scene) {
    return render(scene.stars, scene.settings, scene.cameras);
}

/// The frame that the path in question draws, beside what is expected.
Comparison judge(const Scene& drawn, DrawPath path, const Rendering& expected) {
    const kernel_sets::Counted counted;
    const Picture frame = product_frame(drawn.stars, drawn.settings, drawn.cameras, path);
    EXPECT_EQ(counted.calls().drawing() > 0, path == DrawPath::Fast) << "the path is what it says";
    return compare_within(frame, expected.light, expected.allowance);
}

double largest(const Picture& picture) {
    double found = 0;
    for (const double value : picture.values) {
        found = std::max(found, std::fabs(value));
    }
    return found;
}

struct Kind {
    const char* name;
    Projection projection;
    int samples;
};
void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class Frames : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(
    AllKinds, Frames,
    testing::Values(Kind{"PerspectiveStill", Projection::Perspective, 1},
                    Kind{"PerspectiveOneSegment", Projection::Perspective, 2},
                    Kind{"PerspectiveManySegments", Projection::Perspective, 6},
                    Kind{"HemisphereStill", Projection::Hemisphere, 1},
                    Kind{"HemisphereOneSegment", Projection::Hemisphere, 2},
                    Kind{"HemisphereManySegments", Projection::Hemisphere, 6},
                    Kind{"EquidistantStill", Projection::Equidistant, 1},
                    Kind{"EquidistantOneSegment", Projection::Equidistant, 2},
                    Kind{"EquidistantManySegments", Projection::Equidistant, 6}),
    [](const testing::TestParamInfo<Kind>& kind) { return std::string(kind.param.name); });

TEST_P(Frames, AgreeWithTheReference) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const Scene one = scene(seed, GetParam().projection, GetParam().samples);
        const Rendering reference = reference_of(one);
        for (const DrawPath path : kBothPaths) {
            const Comparison result = judge(one, path, reference);
            EXPECT_TRUE(result.passed)
                << name_of(path) << ", seed " << seed << ": " << result.report;
        }
        EXPECT_GT(largest(reference.light), 10 * reference::reach)
            << "seed " << seed << " shows nothing";
    }
}

// A judge that lets everything pass proves nothing: each of these faults, a hundredth or less of
// the thing itself, must be seen in every kind of frame.
TEST_P(Frames, AreRejectedForSmallFaults) {
    const std::pair<const char*, std::function<void(Scene&)>> faults[] = {
        {"brightness", [](Scene& s) { s.settings.brightness *= 1.01; }},
        {"bias", [](Scene& s) { s.settings.bias *= 1.01; }},
        {"ceiling", [](Scene& s) { s.settings.max_luminance *= 0.99; }},
        {"saturation", [](Scene& s) { s.settings.saturation += 0.01; }},
        {"tint", [](Scene& s) { s.settings.tint_strength += 0.01; }},
        {"tint colour", [](Scene& s) { s.settings.tint[1] += 0.01; }},
        {"spot size", [](Scene& s) { s.settings.spot_size *= 1.01; }},
        {"aspect", [](Scene& s) { s.settings.aspect_ratio *= 1.01; }},
        {"crush", [](Scene& s) { s.settings.parallax_crush += 0.05; }},
        {"missing star",
         [](Scene& s) {
             s.settings.threshold = 0.99 * static_cast<double>(s.stars.front().luminance);
             s.stars.front().luminance *= 0.98F;
         }},
        {"place",
         [](Scene& s) {
             for (Star& one : s.stars) {
                 one.lat += 0.02;  // about a fiftieth of a pixel
             }
         }},
        {"last sample",
         [](Scene& s) {
             for (double& x : s.cameras.back().position) {
                 x += 0.02;
             }
         }},
    };
    Scene right = scene(77, GetParam().projection, GetParam().samples);
    right.settings.spot_size = 15;
    right.settings.aspect_ratio = 1.1;
    right.settings.threshold = 0.0005;
    right.settings.max_luminance = 0.05;
    right.settings.brightness = 10;
    right.settings.parallax_crush = 0.5;
    right.settings.tint_strength = 0.8;
    right.settings.saturation = 1.2;
    right.stars.front().luminance = 0.02F;  // the second one meets the ceiling
    const Rendering expected = reference_of(right);
    for (const DrawPath path : kBothPaths) {
        const Comparison unspoilt = judge(right, path, expected);
        ASSERT_TRUE(unspoilt.passed) << name_of(path) << ": " << unspoilt.report;
        for (const auto& [name, spoil] : faults) {
            Scene wrong = right;
            spoil(wrong);
            EXPECT_FALSE(judge(wrong, path, expected).passed) << name_of(path) << ": " << name;
        }
    }
}

// A star crawling over the frame by hundredths of a pixel neither blinks nor breathes: its total
// changes by the grid's 2e-4 and by pixels at the reach, each at most 1/6250, coming and going
// along a rim of less than 2 pi (rho w + 1) pixels, half of them at a time.
TEST(FrameLight, IsItsTotalAndSteadyUnderSubPixelMotion) {
    Settings settings;
    settings.width = 64;
    settings.height = 48;
    settings.threshold = 0;
    settings.max_luminance = 1;
    settings.spot_size = 1;  // one pixel once drawn, the worst case
    settings.brightness = 1000;
    settings.saturation = 1;
    for (const DrawPath path : kBothPaths) {
        double least = HUGE_VAL;
        double most = 0;
        Star one;
        one.luminance = 1;
        for (int i = 0; i < 200; ++i) {
            one.lon = 90.5 + 0.007 * i;
            one.lat = 1 + 0.003 * i;
            const double total = product_frame({one}, settings, {Camera{}}, path).total(0);
            least = std::min(least, total);
            most = std::max(most, total);
        }
        const double peak = 4000 * 0.032 * 0.032;
        const double rho = std::sqrt(std::log(6250 * peak));
        EXPECT_LT(most - least, 4.2e-4 * most + std::numbers::pi * (rho + 1) / 6250)
            << name_of(path);
        EXPECT_NEAR(most, std::numbers::pi * peak, 1e-3 * most) << name_of(path);
    }
}

}  // namespace
