// Frames drawn on either path, and what there is to compare of them.
#pragma once

#include <base/array.h>
#include <libimgops/records.h>
#include <libimgops/renderer.h>
#include <libimgops/star_input.h>

#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/guarded_frame.h"
#include "support/path_in_use.h"
#include "support/random_numbers.h"

namespace plain_fast {

using support::PathInUse;

/// Everything that one frame is drawn from.
struct Scene {
    StarRendererData data;
    std::vector<camera> cams;
    std::string magic = support::kVersion2;
    std::vector<support::CatalogueStar> stars;
    int width = 0;
    int height = 0;
    /// Coverage of the pixels, row by row; none for 0 everywhere.
    std::vector<float> coverage;
    /// What the colours of all pixels are before.
    float background = 0;
    /// Whether an earlier star has left light.
    bool drew_before = false;
};

struct Drawn {
    support::GuardedFrame frame{1, 1};
    bool drew = false;
    std::size_t place = 0;  ///< record at which the source stands afterwards
    std::string failure;    ///< what was thrown
};

/// The scene's frame before any star.
support::GuardedFrame empty_frame(const Scene& scene);
/// The scene's camera samples as renderers take them.
struct Cameras : Array<camera> {
    explicit Cameras(const Scene& scene) {
        for (const camera& cam : scene.cams) {
            append(cam);
        }
    }
};
/// What the scene's renderers are made of, but for the source.
struct Canvas {
    explicit Canvas(const Scene& scene);
    StarRenderer renderer(StarInput& input) const {
        return StarRenderer(scene.data, fb, input, cams);
    }

    const Scene& scene;
    support::GuardedFrame frame;
    StarFramebuffer fb;
    Cameras cams;
};
/// Draws all stars at once on that path.
Drawn draw(const Scene& scene, DrawPath path);
/// The same into any view of pixels, which is `fb`.
Drawn draw_into(const Scene& scene, DrawPath path, const StarFramebuffer& fb);

/// Whether the camera's plane lies between two consecutive places of the star, of which a pinhole
/// sees one: the streak goes to the mirrored place of the other.
bool crosses_camera_plane(const Scene& scene, const support::CatalogueStar& star);

/// Pixels that the scene's stars visit, row by row.
///
/// A visit adds colour x weight x (1 - coverage), so that coverage that is not a number makes the
/// colours of exactly the visited pixels not numbers, be their light nothing or negative. Such
/// light does not count as drawn; the frame is said to have some, so that the fast path does not
/// leave all to the plain one.
std::vector<bool> visited(Scene scene, DrawPath path);
/// Of those stars that cross the camera's plane only.
std::vector<bool> visited_by_crossing_stars(const Scene& scene, DrawPath path);

struct Difference {
    /// Of any colour of any pixel, in parts of the frame's largest value; for pixels that no
    /// streak across the camera's plane visits, and for those that one does. Infinite where only
    /// one of two values is a number.
    double ordinary = 0;
    double crossing = 0;
    double peak = 0;  ///< the plain frame's largest magnitude
};
/// Colours of pixels that have light on the plain path, and how many are the same on the fast one.
struct SameValues {
    double lit = 0;
    double same = 0;
};
void count_same_values(const Drawn& plain, const Drawn& fast, SameValues& counts);
Difference difference(const Drawn& plain, const Drawn& fast, const std::vector<bool>& crossing);

/// What the fast path promises of the difference.
inline constexpr double kOrdinaryBound = 1e-6;
inline constexpr double kCrossingBound = 2e-5;
/// Of the same for each of the equal segments on one place.
inline constexpr double kEqualPartBound = 6e-8;
/// Of a star's brightest light, divided by the length in pixels of the shortest segment that it
/// moves along.
inline constexpr double kShortSegmentBound = 6e-7;
/// The most that this gives any star of the scene, in the frame's unit.
double short_segment_allowance(const Scene& scene);

/// Draws the scene on both paths and expects of the fast one all that it promises: flag, cursor,
/// failure, visited pixels, the bounds of light and of codes, coverage and surroundings untouched.
/// Returns the difference.
Difference expect_promise(const Scene& scene);
/// The same, expects no bit to differ.
void expect_same_bits(const Scene& scene);

// --- random scenes ----------------------------------------------------------------------------

/// World to camera, any direction.
Matrix4<double> random_rotation(RandomNumbers& random);
/// A turn by `degrees` about a random axis.
Matrix4<double> random_turn(RandomNumbers& random, double degrees);
/// The star's angles for a direction, length 1, in the world.
void set_angles(support::CatalogueStar& star, const VectorN<double, 3>& direction);
/// The direction in the world of a place in the window, as the pinhole `cam` sees it.
VectorN<double, 3> direction_of(const camera& cam, double u, double v);

/// A frame of any kind that a user could ask for, and some that none would.
Scene random_scene(RandomNumbers& random);
/// The effect's default controls over a random part of the sky.
Scene default_scene(RandomNumbers& random, int width, int height);
/// Samples of a camera that turns by `degrees` in all.
void pan(Scene& scene, RandomNumbers& random, int segments, double degrees);
/// Scales what the cameras see: a pinhole's picture stays.
void scale_cameras(Scene& scene, double scale);
/// Stars of which half lie around what the cameras see.
void scatter_stars(Scene& scene, RandomNumbers& random, int count);

std::string describe(const Scene& scene);

}  // namespace plain_fast
