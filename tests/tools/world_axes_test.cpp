// Where the host's axes point in the sky, and what a move of the camera does: docs/catalogues.md
// says it to users. Seen in pictures of single stars, through the built plug-in.
//
// The expected pixels are those of a pinhole: the middle of the picture plus zoom times x / z and
// y / z, where x, y and z lead from the camera to the star in the host's axes.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "read_back.h"
#include "support/catalogue.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using support::CatalogueStar;

constexpr double kWidth = 192.0;
constexpr double kHeight = 108.0;
constexpr double kNewCamerasZoom = kWidth * 50.0 / 36.0;

struct Spot {
    double x = 0.0;
    double y = 0.0;
};

CatalogueStar red(double ra, double dec, double parsecs = -1.0) {
    return {.lon = ra, .lat = dec, .r = 255, .g = 0, .b = 0, .distance = parsecs};
}
CatalogueStar green(double ra, double dec, double parsecs = -1.0) {
    return {.lon = ra, .lat = dec, .r = 0, .g = 255, .b = 0, .distance = parsecs};
}
CatalogueStar blue(double ra, double dec, double parsecs = -1.0) {
    return {.lon = ra, .lat = dec, .r = 0, .g = 0, .b = 255, .distance = parsecs};
}

/// The middle of all light of each channel, nothing where it is dark. `camera` is the scene's
/// member with its comma, or empty for no camera.
std::array<std::optional<Spot>, 3> render(const std::vector<CatalogueStar>& stars,
                                          const std::string& camera, double crush = 0.0) {
    const ScratchFolder folder;
    support::write_catalogue(folder / "few.stars", support::kVersion2, stars);
    write_file(folder / "scene.json",
               "{\"composition\": {\"width\": 192, \"height\": 108}, " + camera +
                   "\"controls\": {\"Star Saturation\": 1, \"Star Spot Size\": 12, "
                   "\"Parallax Crush\": " +
                   std::to_string(crush) + "}}");
    const ToolResult result = run_tool({"render", folder / "scene.json", "-o", folder / "few.exr",
                                        "--catalogue", folder / "few.stars"});
    EXPECT_EQ(result.code, 0) << result.err;
    const ReadBack picture = read_back(folder / "few.exr");
    std::array<std::optional<Spot>, 3> spots;
    for (int channel = 0; channel < 3; ++channel) {
        double light = 0.0;
        Spot sum;
        for (int y = 0; y < picture.spec.height; ++y) {
            for (int x = 0; x < picture.spec.width; ++x) {
                const auto value = static_cast<double>(picture.at<float>(x, y, channel));
                light += value;
                sum.x += x * value;
                sum.y += y * value;
            }
        }
        if (light > 0.0) {
            spots[static_cast<std::size_t>(channel)] = Spot{sum.x / light, sum.y / light};
        }
    }
    return spots;
}

void expect_at(const std::optional<Spot>& spot, double x, double y) {
    ASSERT_TRUE(spot.has_value());
    EXPECT_NEAR(spot->x, x, 0.1);
    EXPECT_NEAR(spot->y, y, 0.1);
}

/// Pixels between the middle of the picture and a place so many degrees beside it.
double pixels_of(double degrees, double zoom) {
    return zoom * std::tan(degrees * 0.017453292519943295);
}

TEST(WorldAxes, ANewCameraLooksAtSixHoursOnTheEquatorWithNorthUp) {
    const auto spots = render({red(90, 0), green(80, 0), blue(90, 5)}, "\"camera\": {}, ");
    expect_at(spots[0], kWidth / 2, kHeight / 2);
    // Smaller right ascensions are west, which is to the right.
    expect_at(spots[1], kWidth / 2 + pixels_of(10, kNewCamerasZoom), kHeight / 2);
    expect_at(spots[2], kWidth / 2, kHeight / 2 - pixels_of(5, kNewCamerasZoom));
}

TEST(WorldAxes, SoDoesTheViewWithoutACamera) {
    // The effect's own lens: 3.2 halves of the frame's height.
    const double zoom = 3.2 * kHeight / 2;
    const auto spots = render({red(90, 0), green(80, 0), blue(90, 5)}, "");
    expect_at(spots[0], kWidth / 2, kHeight / 2);
    expect_at(spots[1], kWidth / 2 + pixels_of(10, zoom), kHeight / 2);
    expect_at(spots[2], kWidth / 2, kHeight / 2 - pixels_of(5, zoom));
}

TEST(WorldAxes, EachLeadsToItsPlaceInTheSky) {
    const struct {
        const char* orientation;
        double ra, dec;
    } views[] = {
        {"[0, 0, 0]", 90, 0},    {"[0, 90, 0]", 0, 0},  {"[0, -90, 0]", 180, 0},
        {"[0, 180, 0]", 270, 0}, {"[90, 0, 0]", 0, 90}, {"[-90, 0, 0]", 0, -90},
    };
    for (const auto& view : views) {
        SCOPED_TRACE(view.orientation);
        const auto spots =
            render({red(view.ra, view.dec)}, std::string("\"camera\": {\"position\": [0, 0, 0], ") +
                                                 "\"orientation\": " + view.orientation + "}, ");
        expect_at(spots[0], kWidth / 2, kHeight / 2);
    }
}

TEST(WorldAxes, OneUnitIsOneParsecWithoutParallaxCrush) {
    const std::vector<CatalogueStar> stars = {red(90, 0, 10), blue(90, 0)};
    const double shift = kNewCamerasZoom / 10;
    auto spots = render(stars, "\"camera\": {\"position\": [1, 0, 0]}, ");
    expect_at(spots[0], kWidth / 2 - shift, kHeight / 2);
    expect_at(spots[2], kWidth / 2, kHeight / 2);  // unknown distance: at infinity
    // Down, so that the star goes up.
    spots = render(stars, "\"camera\": {\"position\": [0, 1, 0]}, ");
    expect_at(spots[0], kWidth / 2, kHeight / 2 - shift);
    // Halfway there a star beside the way stands twice as far from the middle: 10 sin 5 to the
    // side, 10 cos 5 - 5 ahead.
    spots = render({red(85, 0, 10)}, "\"camera\": {\"position\": [0, 0, 5]}, ");
    const double turn = 5 * 0.017453292519943295;
    expect_at(spots[0],
              kWidth / 2 + kNewCamerasZoom * 10 * std::sin(turn) / (10 * std::cos(turn) - 5),
              kHeight / 2);
}

TEST(WorldAxes, ParallaxCrushDrawsStarsAway) {
    const std::vector<CatalogueStar> stars = {red(90, 0, 10)};
    const std::string camera = "\"camera\": {\"position\": [1, 0, 0]}, ";
    // 1 / (1 / 10 - 0.05) = 20 parsecs.
    expect_at(render(stars, camera, 5)[0], kWidth / 2 - kNewCamerasZoom / 20, kHeight / 2);
    expect_at(render(stars, camera, 10)[0], kWidth / 2, kHeight / 2);
    expect_at(render(stars, camera, 100)[0], kWidth / 2, kHeight / 2);
}

TEST(WorldAxes, TheSunIsAtTheCompositionsUpperLeftCorner) {
    // What a new camera sees of a star nearby: the corner, since the camera stands as many parsecs
    // away as the composition has pixels.
    const auto spots = render({red(90, 0, 0.5)}, "\"camera\": {}, ");
    ASSERT_TRUE(spots[0]);
    EXPECT_LT(spots[0]->x, 1.0);
    EXPECT_LT(spots[0]->y, 1.0);
}

TEST(WorldAxes, AStarNearerThanATenthOfAUnitIsNotDrawn) {
    const std::vector<CatalogueStar> stars = {red(90, 0, 10)};
    EXPECT_TRUE(render(stars, "\"camera\": {\"position\": [0, 0, 9.8]}, ")[0]);
    EXPECT_FALSE(render(stars, "\"camera\": {\"position\": [0, 0, 9.95]}, ")[0]);
    EXPECT_FALSE(render(stars, "\"camera\": {\"position\": [0, 0, 10.2]}, ")[0]);
}

}  // namespace
