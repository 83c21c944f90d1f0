// Stars that the fast path leaves out unseen are stars that the plain path draws nowhere.
#include <gtest/gtest.h>
#include <libimgops/projection.h>
#include <libimgops/renderer.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>
#include <tuple>

#include "kernels/kernel_sets.h"
#include "plain_fast_scene.h"
#include "segment_shape.h"
#include "spot_light.h"
#include "support/memory_stars.h"
#include "support/rounds.h"

namespace {

using namespace plain_fast;
using star_kernels::Kernels;
using support::CatalogueStar;

/// What the fast path's rejection said, star by star in the order of the file.
std::vector<unsigned char> rejected;

/// A set that records the rejection and then says that no star is to be drawn.
const Kernels& recording_set() {
    static const Kernels& judge = *kernel_sets::all_runnable().back();
    static const Kernels set = [] {
        Kernels recording = judge;
        recording.outside = [](const float* lon, const float* lat, const float* weight, int count,
                               const star_kernels::Plane* planes, int samples,
                               unsigned char* is_outside) {
            judge.outside(lon, lat, weight, count, planes, samples, is_outside);
            rejected.insert(rejected.end(), is_outside, is_outside + count);
            std::fill_n(is_outside, count, static_cast<unsigned char>(1));
        };
        return recording;
    }();
    return set;
}

/// Which of the scene's stars, all above the threshold, are rejected.
const std::vector<unsigned char>& rejections(const Scene& scene) {
    const kernel_sets::InUse in_use(&recording_set());
    const PathInUse fast(DrawPath::Fast);
    rejected.clear();
    const Cameras cams(scene);
    support::GuardedFrame frame(1, 1);
    StarFramebuffer fb = frame.view();
    // Nothing is drawn, so that nobody needs the pixels.
    fb.width = scene.width;
    fb.height = scene.height;
    fb.stride = 4 * scene.width;
    support::MemoryStars input(scene.magic, scene.stars);
    StarRenderer renderer(scene.data, fb, input, cams);
    bool drew = true;
    renderer.render_stars(drew);
    EXPECT_EQ(rejected.size(), scene.stars.size());
    return rejected;
}

/// The plain path's own steps for a star, up to the box of its light, done with the exact
/// projection.
class PlainPath {
public:
    explicit PlainPath(const Scene& scene) : scene_(scene) {
        const StarRendererData& data = scene.data;
        for (const camera& cam : scene.cams) {
            mats_.push_back(projection_matrix(cam, data.projection));
        }
        // The window is the effect's, so that spots are as wide as high where both sizes are.
        spot_w_ = std::max(1.0F, static_cast<float>(data.spot_size_x * 0.0005 * scene.width));
        spot_h_ = std::max(1.0F, static_cast<float>(data.spot_size_y * 0.0005 * scene.width));
        intensity_ = static_cast<float>(4.0 * data.brightness);
        if (mats_.size() > 1) {
            intensity_ /= static_cast<float>(mats_.size() - 1);
        }
    }

    /// Whether any segment of the star comes to rows and columns of the frame.
    bool reaches_frame(const CatalogueStar& star) const {
        const StarRendererData& data = scene_.data;
        const float reach = reach_of(intensity_ * star.luminance);
        if (!(reach >= 0)) {
            return false;
        }
        StarFramebuffer fb;
        fb.width = scene_.width;
        fb.height = scene_.height;
        const double distance = data.use_depth ? star.distance : -1;
        const auto project = [&](std::size_t i, Vector2& at) {
            return world_to_screen(star.lon, star.lat, distance, data.parallax_crush, mats_[i],
                                   data.projection, fb.width, fb.height, data.window_x0,
                                   data.window_x1, data.window_y0, data.window_y1, at);
        };
        const auto is_on_frame = [&](const Vector2& a, const Vector2& b) {
            return !is_off_frame(pixel_box(a, b, Vector2(spot_w_ * reach, spot_h_ * reach)), fb);
        };
        Vector2 from;
        bool from_visible = project(0, from);
        if (mats_.size() == 1) {
            return from_visible && is_on_frame(from, from);
        }
        for (std::size_t i = 1; i < mats_.size(); ++i) {
            Vector2 to;
            const bool to_visible = project(i, to);
            if ((to_visible || from_visible) && is_on_frame(from, to)) {
                return true;
            }
            from = to;
            from_visible = to_visible;
        }
        return false;
    }

    /// Half the extent of the brightest star's light, pixels.
    double reach() const {
        return static_cast<double>(reach_of(static_cast<float>(static_cast<double>(intensity_) *
                                                               scene_.data.max_luminance)) *
                                   std::max(spot_w_, spot_h_));
    }

private:
    const Scene& scene_;
    std::vector<Matrix4<double>> mats_;
    float spot_w_;
    float spot_h_;
    float intensity_;
};

/// A star that camera `cam` has at a place of the window, as far ahead (behind, for below 0) as
/// `depth` says where stars have distances.
CatalogueStar star_at(const Scene& scene, const camera& cam, double u, double v, double depth) {
    CatalogueStar star;
    VectorN<double, 3> direction = direction_of(cam, u, v);
    if (depth < 0) {
        for (int i = 0; i < 3; ++i) {
            direction[i] = -direction[i];
        }
    }
    if (scene.data.use_depth) {
        // From the world's origin, which the camera has at the last row of its matrix.
        const double seen[3] = {u / cam.focal * depth, v / cam.focal * depth, depth};
        VectorN<double, 3> place(0, 0, 0);
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                place[i] += cam.xform(i, j) * (seen[j] - cam.xform(3, j));
            }
        }
        const double distance = place.normalize();
        // The effect takes the crush off the inverse.
        star.distance = 1 / (1 / distance + 0.01 * scene.data.parallax_crush);
        direction = place;
    }
    set_angles(star, direction);
    star.luminance = static_cast<float>(scene.data.max_luminance);
    return star;
}

constexpr int kFrameWidths[] = {16, 64, 640, 1920};
constexpr int kHeights[] = {9, 64, 1080};

/// A camera and settings, without stars yet.
Scene random_view(RandomNumbers& random) {
    Scene scene = default_scene(random, random.of(kFrameWidths), random.of(kHeights));
    StarRendererData& data = scene.data;
    const double radius = random.on_scale(1, random.chance(0.1) ? 1e5 : 10);
    data.spot_size_x = data.spot_size_y = radius / (0.0005 * scene.width);
    data.max_luminance = random.on_scale(0.01, 1e4);
    data.brightness = random.on_scale(0.05, 10);
    data.projection = random.chance(0.8) ? Persp : (random.chance(0.5) ? HemiSph : AzEqu);
    data.use_depth = random.chance(0.5);
    data.parallax_crush = random.chance(0.7) ? 0 : random.between(0, 5);
    camera& cam = scene.cams.front();
    cam.focal = random.on_scale(0.3, 30);
    if (random.chance(0.7)) {
        for (int axis = 0; axis < 3; ++axis) {
            cam.xform(3, axis) = random.between(-20, 20);
        }
    }
    if (random.chance(0.6)) {
        pan(scene, random, random.whole(1, 6),
            random.on_scale(0.01, random.chance(0.2) ? 300 : 30));
    }
    return scene;
}

/// Stars right where the brightest star's light leaves the frame, and all around them.
void add_stars_at_sides(Scene& scene, RandomNumbers& random, int count) {
    const double reach = PlainPath(scene).reach();
    const double aspect = scene.data.window_x1;
    const double unit = 2.0 / scene.height;  // a pixel, in the window
    for (int i = 0; i < count; ++i) {
        const camera& cam = scene.cams[random.bits() % scene.cams.size()];
        const double off = (random.chance(0.5) ? reach + random.between(-6, 6)
                                               : random.between(-3, 3) * (reach + 10)) *
                           unit;
        double u = random.between(-1.1, 1.1) * (aspect + reach * unit);
        double v = random.between(-1.1, 1.1) * (1 + reach * unit);
        const double side = random.chance(0.5) ? 1 : -1;
        if (random.chance(0.5)) {
            u = side * (aspect + off);
        } else {
            v = side * (1 + off);
        }
        const double depth = random.on_scale(0.05, 1e4) * (random.chance(0.1) ? -1 : 1);
        scene.stars.push_back(star_at(scene, cam, u, v, depth));
        if (random.chance(0.2)) {
            scene.stars.back().luminance *= static_cast<float>(random.between(0, 1));
        }
    }
}

/// The same direction by other angles, or what single precision leaves of it: turned around up to
/// the largest angles that the rejection knows, 10000 radians, and beyond.
void wind_up(CatalogueStar& star, RandomNumbers& random) {
    const double most = random.chance(0.5) ? 3 : 1700;
    const auto turns = [&] { return 360 * std::floor(random.between(-most, most)); };
    if (random.chance(0.5)) {
        // Over the pole.
        star.lat = 180 - star.lat;
        star.lon += 180;
    }
    star.lon += turns();
    star.lat += random.chance(0.5) ? turns() : 0;
}

/// Of the scene's stars, how many reach the frame and how many are left out; none may be both.
struct Tried {
    int reaching = 0;
    int left_out = 0;
};
void expect_none_lost(Scene scene, Tried& tried) {
    const std::vector<unsigned char>& is_rejected = rejections(scene);
    const PlainPath plain(scene);
    for (std::size_t k = 0; k < scene.stars.size(); ++k) {
        const bool reaches = plain.reaches_frame(scene.stars[k]);
        tried.reaching += reaches ? 1 : 0;
        tried.left_out += is_rejected[k];
        if (reaches && is_rejected[k] != 0) {
            scene.stars = {scene.stars[k]};
            FAIL() << describe(scene);
        }
    }
}

/// A kind of scenes: views, how many of them with 512 stars each, and how many of all their stars
/// have to reach the frame and to be left out, so that both sides of the boundary are tried.
struct Kind {
    const char* name;
    int views;
    int least_reaching;
    int least_left_out;
    Scene (*scene)(RandomNumbers&);
};
void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

Scene view_with_stars(RandomNumbers& random) {
    Scene scene = random_view(random);
    add_stars_at_sides(scene, random, 512);
    return scene;
}
/// The same, the stars placed as if they had no distance, which they are given afterwards.
Scene view_for_distances(RandomNumbers& random) {
    Scene scene = random_view(random);
    scene.data.use_depth = false;
    add_stars_at_sides(scene, random, 512);
    scene.data.use_depth = true;
    return scene;
}

const Kind kKinds[] = {
    {"AtTheSides", 250, 20000, 5000, view_with_stars},
    {"AtAnglesOfManyTurns", 120, 8000, 2000,
     [](RandomNumbers& random) {
         Scene scene = view_with_stars(random);
         for (CatalogueStar& star : scene.stars) {
             wind_up(star, random);
         }
         return scene;
     }},
    // Down to where single precision ends, and beyond.
    {"InCamerasOfAnyScale", 120, 8000, 2000,
     [](RandomNumbers& random) {
         Scene scene = view_with_stars(random);
         scale_cameras(scene, random.on_scale(1e-47, random.chance(0.5) ? 1e-35 : 1e42));
         return scene;
     }},
    // Cameras hardly off the middle of the world, and stars hardly off it: weights and offsets
    // beyond single precision, whose product is not.
    {"AroundTheMiddleOfTheWorld", 120, 8000, 0,
     [](RandomNumbers& random) {
         Scene scene = view_for_distances(random);
         for (camera& cam : scene.cams) {
             for (int axis = 0; axis < 3; ++axis) {
                 cam.xform(3, axis) = random.on_scale(1e-46, 1e-36) * (random.chance(0.5) ? 1 : -1);
             }
             cam.near_clip = random.chance(0.5) ? 0 : random.on_scale(1e-46, 1e-36);
         }
         for (CatalogueStar& star : scene.stars) {
             star.distance = random.on_scale(1e-46, 1e-36);
         }
         return scene;
     }},
    // The same at the other end of single precision.
    {"AtTheEndOfTheWorld", 60, 500, 0,
     [](RandomNumbers& random) {
         Scene scene = view_for_distances(random);
         scene.data.parallax_crush = 0;
         const double far = random.on_scale(1e30, 1e90);
         for (camera& cam : scene.cams) {
             for (int axis = 0; axis < 3; ++axis) {
                 cam.xform(3, axis) = far * random.between(-1, 1);
             }
         }
         for (CatalogueStar& star : scene.stars) {
             star.distance = far * random.between(0.3, 3);
         }
         return scene;
     }},
};

}  // namespace

class Rejection : public testing::TestWithParam<std::tuple<Kind, unsigned>> {};

TEST_P(Rejection, SparesEveryStarWhoseLightReachesTheFrame) {
    const auto& [kind, seed] = GetParam();
    RandomNumbers random(seed);
    Tried tried;
    for (int i = 0; i < kind.views && !HasFatalFailure(); ++i) {
        expect_none_lost(kind.scene(random), tried);
    }
    EXPECT_GT(tried.reaching, kind.least_reaching);
    EXPECT_GE(tried.left_out, kind.least_left_out);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Rejection,
                         testing::Combine(testing::ValuesIn(kKinds),
                                          testing::Range(1U, 1 + support::seeds(16))),
                         [](const auto& tested) {
                             return std::get<0>(tested.param).name +
                                    std::to_string(std::get<1>(tested.param));
                         });

namespace {

/// Stars all over the sky.
void cover_sky(Scene& scene, RandomNumbers& random, int count) {
    for (int i = 0; i < count; ++i) {
        CatalogueStar star;
        star.lon = random.between(-180, 180);
        star.lat = std::asin(random.between(-1, 1)) * 180 / std::numbers::pi;
        star.luminance = 0.1F;
        star.distance = random.on_scale(1, 1000);
        scene.stars.push_back(star);
    }
}

}  // namespace

TEST(RejectionOfFarStars, LeavesOutNearlyAllThatReachNoPixel) {
    const struct {
        const char* name;
        op_stars_projection projection;
        bool has_depth;
        int width, height, segments;
        double least_share;
    } views[] = {{"still", Persp, false, 1920, 1080, 0, 0.95},
                 {"still, with distances", Persp, true, 1920, 1080, 0, 0.95},
                 {"pan", Persp, false, 1920, 1080, 16, 0.9},
                 {"disk", HemiSph, false, 640, 640, 0, 0.99},
                 {"equidistant disk", AzEqu, false, 640, 640, 0, 0.99}};
    RandomNumbers random(1);
    for (const auto& view : views) {
        Scene scene = default_scene(random, view.width, view.height);
        scene.data.projection = view.projection;
        scene.data.use_depth = view.has_depth;
        if (view.segments > 0) {
            pan(scene, random, view.segments, 5);
        }
        cover_sky(scene, random, 50000);
        const std::vector<unsigned char>& is_rejected = rejections(scene);
        const PlainPath plain(scene);
        int dark = 0;
        int left_out = 0;
        for (std::size_t k = 0; k < scene.stars.size(); ++k) {
            dark += plain.reaches_frame(scene.stars[k]) ? 0 : 1;
            left_out += is_rejected[k];
        }
        EXPECT_GT(left_out, view.least_share * dark) << view.name;
    }
}

// Half the sky at most is behind a camera; without bounds on the light nothing else may go.
TEST(RejectionOfFarStars, LeavesOutNothingButTheBackWhereLightHasNoBound) {
    RandomNumbers random(4);
    for (const double ceiling :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        Scene scene = default_scene(random, 1920, 1080);
        scene.data.max_luminance = ceiling;
        cover_sky(scene, random, 5000);
        const std::vector<unsigned char>& is_rejected = rejections(scene);
        for (std::size_t k = 0; k < scene.stars.size(); ++k) {
            Vector2 at;
            const camera& cam = scene.cams.front();
            if (is_rejected[k] != 0) {
                EXPECT_FALSE(world_to_screen(
                    scene.stars[k].lon, scene.stars[k].lat, -1, 0, projection_matrix(cam, Persp),
                    Persp, 1920, 1080, scene.data.window_x0, scene.data.window_x1, -1, 1, at));
            }
        }
    }
}
