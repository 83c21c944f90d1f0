#include "plain_fast_scene.h"

#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libimgops/projection.h>
#include <libimgops/renderer.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

#include "star_segments.h"
#include "star_shading.h"
#include "support/memory_stars.h"
#include "support/pixels.h"

namespace plain_fast {

using support::CatalogueStar;
using support::GuardedFrame;

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr float kInf = std::numeric_limits<float>::infinity();

std::uint32_t bits(float x) { return std::bit_cast<std::uint32_t>(x); }

/// Calls `use(a, b, pixel)` for the two frames' values of every colour of every pixel.
template <class Use>
void for_each_colour(Drawn a, Drawn b, Use use) {
    const int width = a.frame.width();
    support::for_each_pixel(width, a.frame.height(), [&](int x, int y) {
        const auto pixel = static_cast<std::size_t>(y * width + x);
        use(a.frame.r(x, y), b.frame.r(x, y), pixel);
        use(a.frame.g(x, y), b.frame.g(x, y), pixel);
        use(a.frame.b(x, y), b.frame.b(x, y), pixel);
    });
}

double magnitude(float x) { return std::isnan(x) ? 0.0 : std::fabs(static_cast<double>(x)); }

/// How far apart two values are, in parts of `peak`; in a frame that is infinitely bright all that
/// are numbers are close.
double distance_of(float a, float b, double peak) {
    if (a == b || (std::isnan(a) && std::isnan(b))) {
        return 0;
    }
    if (std::isinf(peak) && !std::isnan(a) && !std::isnan(b)) {
        return 0;
    }
    const double off = std::fabs(static_cast<double>(a) - static_cast<double>(b)) / peak;
    return std::isnan(off) ? std::numeric_limits<double>::infinity() : off;
}

/// Half of the code's full scale is added before it is cut, as hosts' codes are made.
int code(float x, int full) {
    const float scaled = 0.5F + x * static_cast<float>(full);
    return scaled > 0.0F ? (scaled < static_cast<float>(full) ? static_cast<int>(scaled) : full)
                         : 0;
}

/// The homogeneous weight that the star has behind the pinhole's matrix: below 0 behind it.
double depth_of(const Scene& scene, const CatalogueStar& star, const camera& cam) {
    const bool has_depth = scene.data.use_depth && scene.magic == support::kVersion2;
    VectorN<double, 4> p =
        star_point(star.lon, star.lat, has_depth ? star.distance : -1.0, scene.data.parallax_crush);
    transform(projection_matrix(cam, Persp), p);
    return p[3];
}

}  // namespace

GuardedFrame empty_frame(const Scene& scene) {
    GuardedFrame frame(scene.width, scene.height);
    support::for_each_pixel(scene.width, scene.height, [&](int x, int y) {
        if (!scene.coverage.empty()) {
            frame.a(x, y) = scene.coverage[static_cast<std::size_t>(y * scene.width + x)];
        }
        frame.r(x, y) = frame.g(x, y) = frame.b(x, y) = scene.background;
    });
    return frame;
}

Canvas::Canvas(const Scene& scene_)
    : scene(scene_), frame(empty_frame(scene)), fb(frame.view()), cams(scene) {}

Drawn draw_into(const Scene& scene, DrawPath path, const StarFramebuffer& fb) {
    const PathInUse in_use(path);
    const Cameras cams(scene);
    support::MemoryStars input(scene.magic, scene.stars);
    Drawn drawn;
    drawn.drew = scene.drew_before;
    try {
        StarRenderer renderer(scene.data, fb, input, cams);
        renderer.render_stars(drawn.drew);
    } catch (const AssertXception& failure) {
        drawn.failure = failure.expression();
    } catch (const StrXception& failure) {
        drawn.failure = failure.message().c_str();
    }
    drawn.place = input.place();
    return drawn;
}

Drawn draw(const Scene& scene, DrawPath path) {
    GuardedFrame frame = empty_frame(scene);
    Drawn drawn = draw_into(scene, path, frame.view());
    drawn.frame = frame;
    return drawn;
}

bool crosses_camera_plane(const Scene& scene, const CatalogueStar& star) {
    if (scene.data.projection != Persp) {
        return false;
    }
    for (std::size_t i = 1; i < scene.cams.size(); ++i) {
        if ((depth_of(scene, star, scene.cams[i - 1]) < 0) !=
            (depth_of(scene, star, scene.cams[i]) < 0)) {
            return true;
        }
    }
    return false;
}

std::vector<bool> visited(Scene scene, DrawPath path) {
    const auto pixels =
        static_cast<std::size_t>(scene.width) * static_cast<std::size_t>(scene.height);
    scene.coverage.assign(pixels, std::numeric_limits<float>::quiet_NaN());
    scene.background = 0;
    scene.drew_before = true;
    Drawn drawn = draw(scene, path);
    std::vector<bool> found(pixels);
    support::for_each_pixel(scene.width, scene.height, [&](int x, int y) {
        found[static_cast<std::size_t>(y * scene.width + x)] = std::isnan(drawn.frame.r(x, y));
    });
    return found;
}

std::vector<bool> visited_by_crossing_stars(const Scene& scene, DrawPath path) {
    Scene crossing = scene;
    crossing.stars.clear();
    for (const CatalogueStar& star : scene.stars) {
        if (crosses_camera_plane(scene, star)) {
            crossing.stars.push_back(star);
        }
    }
    return visited(crossing, path);
}

void count_same_values(const Drawn& plain, const Drawn& fast, SameValues& counts) {
    for_each_colour(plain, fast, [&](float a, float b, std::size_t) {
        counts.lit += a != 0 ? 1 : 0;
        counts.same += a != 0 && a == b ? 1 : 0;
    });
}

Difference difference(const Drawn& plain, const Drawn& fast, const std::vector<bool>& crossing) {
    Difference result;
    for_each_colour(plain, fast, [&](float a, float, std::size_t) {
        result.peak = std::max(result.peak, magnitude(a));
    });
    for_each_colour(plain, fast, [&](float a, float b, std::size_t pixel) {
        double& worst = crossing[pixel] ? result.crossing : result.ordinary;
        worst = std::max(worst, distance_of(a, b, result.peak));
    });
    return result;
}

namespace {

/// Codes are compared where the frame is in the range of codes, so with its peak at 1.
void expect_close_codes(const Drawn& plain, const Drawn& fast, const std::vector<bool>& crossing,
                        double allowance, const std::string& what) {
    for (const int full : {255, 32768}) {
        const int most = 1 + static_cast<int>(std::min(allowance, 1.0) * full);
        int worst = 0;
        for_each_colour(plain, fast, [&](float a, float b, std::size_t pixel) {
            if (!crossing[pixel]) {
                worst = std::max(worst, std::abs(code(a, full) - code(b, full)));
            }
        });
        EXPECT_LE(worst, most) << "codes 0 to " << full << ": " << what;
    }
}

void expect_same_course(const Drawn& plain, const Drawn& fast, const std::string& what) {
    EXPECT_EQ(plain.failure, fast.failure) << what;
    EXPECT_EQ(plain.drew, fast.drew) << what;
    EXPECT_EQ(plain.place, fast.place) << what;
    EXPECT_TRUE(fast.frame.guards_intact()) << what;
}

void expect_same_coverage(const Scene& scene, Drawn& fast, const std::string& what) {
    GuardedFrame before = empty_frame(scene);
    int changed = 0;
    support::for_each_pixel(scene.width, scene.height, [&](int x, int y) {
        changed += bits(before.a(x, y)) != bits(fast.frame.a(x, y)) ? 1 : 0;
    });
    EXPECT_EQ(changed, 0) << "pixels with another coverage: " << what;
}

}  // namespace

double short_segment_allowance(const Scene& scene) {
    const StarRendererData& data = scene.data;
    const Canvas canvas(scene);
    Array<Matrix4<double>> mats;
    for (const camera& cam : scene.cams) {
        mats.append(projection_matrix(cam, data.projection));
    }
    const bool has_depth = data.use_depth && scene.magic == support::kVersion2;
    double most = 0;
    for (const CatalogueStar& star : scene.stars) {
        if (data.threshold > static_cast<double>(star.luminance)) {
            continue;
        }
        const auto project = [&](uword sample, Vector2& place) {
            return world_to_screen(star.lon, star.lat, has_depth ? star.distance : -1,
                                   data.parallax_crush, mats[sample], data.projection, scene.width,
                                   scene.height, data.window_x0, data.window_x1, data.window_y0,
                                   data.window_y1, place);
        };
        double shortest = std::numeric_limits<double>::infinity();
        draw_segments(mats.len(), project, [&](const Vector2& a, const Vector2& b) {
            const auto length = static_cast<double>(Vector2(b - a).normalize());
            // The plain code draws what is shorter.
            shortest = length >= static_cast<double>(0.01F) ? std::min(shortest, length) : shortest;
            return true;
        });
        const Color3 colour = shaped_colour(star.r, star.g, star.b, data);
        const float largest =
            std::max({std::fabs(colour[0]), std::fabs(colour[1]), std::fabs(colour[2])});
        const double brightest = 4 * data.brightness *
                                 static_cast<double>(shaped_luminance(star.luminance, data)) *
                                 static_cast<double>(largest);
        const double allowed = kShortSegmentBound / shortest * std::fabs(brightest);
        most = std::isfinite(allowed) ? std::max(most, allowed) : most;
    }
    return most;
}

Difference expect_promise(const Scene& scene) {
    const std::string what = describe(scene);
    const Drawn plain = draw(scene, DrawPath::Plain);
    Drawn fast = draw(scene, DrawPath::Fast);
    const std::vector<bool> crossing = visited_by_crossing_stars(scene, DrawPath::Plain);
    expect_same_course(plain, fast, what);
    expect_same_coverage(scene, fast, what);
    EXPECT_TRUE(visited(scene, DrawPath::Plain) == visited(scene, DrawPath::Fast)) << what;
    const Difference off = difference(plain, fast, crossing);
    const double allowance = short_segment_allowance(scene);
    EXPECT_LE(off.ordinary, std::max(kOrdinaryBound, allowance / off.peak)) << what;
    EXPECT_LE(off.crossing, std::max(kCrossingBound, allowance / off.peak)) << what;
    if (off.peak <= 4) {
        expect_close_codes(plain, fast, crossing, allowance, what);
    }
    return off;
}

void expect_same_bits(const Scene& scene) {
    const std::string what = describe(scene);
    const Drawn plain = draw(scene, DrawPath::Plain);
    const Drawn fast = draw(scene, DrawPath::Fast);
    expect_same_course(plain, fast, what);
    EXPECT_TRUE(plain.frame.same_bits(fast.frame)) << what;
}

// --- random scenes ----------------------------------------------------------------------------

namespace {

Matrix4<double> turn(const VectorN<double, 3>& axis, double degrees) {
    // From the unit quaternion (cos of half the angle, sin of it x axis).
    const double half = degrees * PI / 360;
    const double w = std::cos(half), s = std::sin(half);
    const double x = s * axis[0], y = s * axis[1], z = s * axis[2];
    return {1 - 2 * (y * y + z * z),
            2 * (x * y + w * z),
            2 * (x * z - w * y),
            0,
            2 * (x * y - w * z),
            1 - 2 * (x * x + z * z),
            2 * (y * z + w * x),
            0,
            2 * (x * z + w * y),
            2 * (y * z - w * x),
            1 - 2 * (x * x + y * y),
            0,
            0,
            0,
            0,
            1};
}

VectorN<double, 3> random_direction(RandomNumbers& random) {
    const double z = random.between(-1, 1), a = random.between(0, 2 * PI);
    const double r = std::sqrt(1 - z * z);
    return {r * std::cos(a), r * std::sin(a), z};
}

}  // namespace

Matrix4<double> random_rotation(RandomNumbers& random) {
    return turn(random_direction(random), random.between(0, 360));
}

Matrix4<double> random_turn(RandomNumbers& random, double degrees) {
    return turn(random_direction(random), degrees);
}

void set_angles(CatalogueStar& star, const VectorN<double, 3>& direction) {
    star.lon = std::atan2(direction[2], direction[0]) * 180 / PI;
    star.lat = std::asin(std::clamp(direction[1], -1.0, 1.0)) * 180 / PI;
}

VectorN<double, 3> direction_of(const camera& cam, double u, double v) {
    const double seen[3] = {u / cam.focal, v / cam.focal, 1};
    VectorN<double, 3> direction(0, 0, 0);
    // Back through the rotation, which is its transpose.
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            direction[i] += cam.xform(i, j) * seen[j];
        }
    }
    direction.normalize();
    return direction;
}

Scene default_scene(RandomNumbers& random, int width, int height) {
    Scene scene;
    scene.width = width;
    scene.height = height;
    const double aspect = static_cast<double>(width) / height;
    scene.data.window_x0 = -aspect;
    scene.data.window_x1 = aspect;
    scene.data.window_y0 = -1;
    scene.data.window_y1 = 1;
    const double radius = 2.4;
    scene.data.spot_size_x = scene.data.spot_size_y = radius / (0.0005 * width);
    scene.data.max_luminance = 10000;
    scene.data.brightness = 0.25;
    scene.data.saturation = 1;
    scene.data.bias_exponent = 1;
    camera cam;
    cam.xform = random_rotation(random);
    scene.cams = {cam};
    return scene;
}

void pan(Scene& scene, RandomNumbers& random, int segments, double degrees) {
    const camera first = scene.cams.front();
    const Matrix4<double> step = random_turn(random, degrees / segments);
    scene.cams = {first};
    for (int i = 0; i < segments; ++i) {
        camera next = scene.cams.back();
        next.xform = next.xform * step;
        scene.cams.push_back(next);
    }
}

void scale_cameras(Scene& scene, double scale) {
    for (camera& cam : scene.cams) {
        for (int element = 0; element < 16; ++element) {
            cam.xform(element / 4, element % 4) *= element % 4 < 3 ? scale : 1;
        }
    }
}

void scatter_stars(Scene& scene, RandomNumbers& random, int count) {
    const double aspect = static_cast<double>(scene.width) / scene.height;
    for (int i = 0; i < count; ++i) {
        CatalogueStar star;
        const camera& cam = scene.cams[random.bits() % scene.cams.size()];
        if (random.chance(0.5)) {
            set_angles(star, direction_of(cam, random.between(-1.2, 1.2) * aspect,
                                          random.between(-1.2, 1.2)));
        } else if (random.chance(0.2)) {
            // Around the camera's plane, where streaks cross it.
            const double a = random.between(0, 2 * PI);
            set_angles(star, direction_of(cam, 1e3 * std::cos(a), 1e3 * std::sin(a)));
        } else {
            set_angles(star, random_direction(random));
        }
        // Ten times as many for each factor of 4, as on the sky.
        star.luminance = static_cast<float>(0.002 * std::pow(random.between(1e-5, 1), -0.6));
        star.r = static_cast<unsigned char>(random.bits());
        star.g = static_cast<unsigned char>(random.bits());
        star.b = static_cast<unsigned char>(random.bits());
        star.distance = random.chance(0.3) ? -1 : random.on_scale(0.5, 1e4);
        scene.stars.push_back(star);
    }
}

Scene random_scene(RandomNumbers& random) {
    static constexpr struct {
        int width, height;
    } SIZES[] = {{1, 1},   {3, 7},    {17, 5},   {1920, 3}, {2, 300},  {5, 17},
                 {64, 36}, {160, 90}, {200, 77}, {96, 54},  {131, 120}};
    const auto size = random.of(SIZES);
    Scene scene = default_scene(random, size.width, size.height);
    StarRendererData& data = scene.data;
    const double radius = random.chance(0.05) ? random.on_scale(100, 1e7)
                                              : random.on_scale(0.3, random.chance(0.3) ? 30 : 4);
    data.spot_size_y = radius / (0.0005 * scene.width);
    data.spot_size_x = data.spot_size_y * (random.chance(0.5) ? 1 : random.on_scale(0.3, 4));
    data.threshold = random.chance(0.5) ? 0 : random.on_scale(0.001, 0.1);
    data.max_luminance = random.chance(0.5) ? 10000 : random.on_scale(0.01, 10);
    data.brightness = random.on_scale(0.01, 100);
    data.saturation = random.chance(0.4) ? 1 : random.between(0, 3);
    data.bias_exponent = random.chance(0.5) ? 1 : random.between(0.3, 3);
    data.tint_strength = random.chance(0.5) ? 0 : random.between(0, 1.5);
    data.tint_color =
        Color3(static_cast<float>(random.between(0, 1)), static_cast<float>(random.between(0, 1)),
               static_cast<float>(random.between(0, 2)));
    data.parallax_crush = random.chance(0.5) ? 0 : random.between(-5, 20);
    data.projection = random.chance(0.6) ? Persp : (random.chance(0.5) ? HemiSph : AzEqu);
    data.use_depth = random.chance(0.5);
    scene.magic = random.chance(0.8) ? support::kVersion2 : support::kVersion1;

    camera& cam = scene.cams.front();
    cam.focal = random.on_scale(0.2, 10);
    cam.near_clip = random.chance(0.7) ? cam.near_clip : random.on_scale(1e-3, 1e3);
    cam.far_clip = random.chance(0.7) ? -1 : random.on_scale(0.01, 1e5);
    if (random.chance(0.5)) {
        for (int axis = 0; axis < 3; ++axis) {
            cam.xform(3, axis) = random.between(-30, 30);
        }
    }
    if (random.chance(0.6)) {
        const int segments = random.chance(0.1) ? random.whole(20, 100) : random.whole(1, 8);
        pan(scene, random, segments, random.on_scale(0.01, random.chance(0.2) ? 300 : 20));
        if (random.chance(0.3)) {
            for (std::size_t i = 1; i < scene.cams.size(); ++i) {
                for (int axis = 0; axis < 3; ++axis) {
                    scene.cams[i].xform(3, axis) += random.between(-1, 1);
                }
            }
        }
    }
    scatter_stars(scene, random, random.whole(1, 60));
    if (random.chance(0.3)) {
        for (int i = 0; i < scene.width * scene.height; ++i) {
            static constexpr float kSome[] = {0, 0,    0,  0.25F, 0.5F, 0.999F,
                                              1, 1.5F, -1, -0.0F, kInf};
            scene.coverage.push_back(random.of(kSome));
        }
    }
    scene.drew_before = random.chance(0.3);
    return scene;
}

std::string describe(const Scene& scene) {
    const StarRendererData& d = scene.data;
    std::ostringstream text;
    text << scene.width << "x" << scene.height << ", projection " << d.projection << ", "
         << scene.cams.size() << " samples, " << scene.stars.size() << " stars, window "
         << d.window_x0 << " " << d.window_x1 << " " << d.window_y0 << " " << d.window_y1
         << ", spot " << d.spot_size_x << " " << d.spot_size_y << ", threshold " << d.threshold
         << ", most " << d.max_luminance << ", brightness " << d.brightness << ", saturation "
         << d.saturation << ", bias " << d.bias_exponent << ", tint " << d.tint_strength << " ("
         << d.tint_color[0] << " " << d.tint_color[1] << " " << d.tint_color[2] << "), crush "
         << d.parallax_crush << ", depth " << d.use_depth << " " << scene.magic << ", focal "
         << scene.cams.front().focal << ", clips " << scene.cams.front().near_clip << " "
         << scene.cams.front().far_clip << ", coverage " << !scene.coverage.empty() << ", drew "
         << scene.drew_before;
    if (scene.stars.size() <= 3) {
        for (const CatalogueStar& star : scene.stars) {
            text << ", star " << star.lon << " " << star.lat << " " << star.distance << " of "
                 << star.luminance;
        }
    }
    return text.str();
}

}  // namespace plain_fast
