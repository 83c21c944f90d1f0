// The plug-in as it ships, in a bundle of the test's own, played by the stand-in host.
#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/session.h>
#include <support/catalogue.h>
#include <support/scratch.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "starry.h"

namespace {

namespace fs = std::filesystem;
using host::Depth;
using host::Frame;
using host::RenderOptions;
using host::Scene;
using host::Session;
using host::Track;
using support::CatalogueStar;
using namespace starry;

TEST_F(Lumivar, KeepsTheRulesFromLoadingToSetDown) {
    add_stars();
    Session session(bundle());
    const Scene scene = starry_scene();
    for (const Depth depth : {Depth::Bits8, Depth::Bits16, Depth::Float}) {
        const Frame frame =
            session.render(scene, scene.composition.frame_time(3), {.depth = depth});
        EXPECT_EQ(frame.status, 0);
        EXPECT_EQ(frame.undrawn_pixels, 0u);
        EXPECT_EQ(frame.data_deletions, 1);
        EXPECT_EQ(frame.result_rect, (host::Rect{0, 0, 96, 54}));
        EXPECT_EQ(frame.max_result_rect, (host::Rect{0, 0, 96, 54}));
        // The sixteen of the pre-render are left checked out, as hosts have always seen it.
        EXPECT_EQ(frame.open_param_checkouts, 16);
        EXPECT_EQ(session.live_handles(), 0u) << "the handle in the callbacks' slot included";
    }
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
    EXPECT_TRUE(session.messages().empty());
}

TEST_F(Lumivar, CanBeSetUpAgainAfterSetDown) {
    add_stars();
    EXPECT_EQ(bytes(render(starry_scene())), bytes(render(starry_scene())));
}

/// The brightest pixel.
std::pair<int, int> peak(const Frame& frame) {
    std::pair<int, int> best;
    float most = -1.0F;
    for (int y = 0; y < frame.world.height(); ++y) {
        for (int x = 0; x < frame.world.width(); ++x) {
            const auto pixel = frame.world.pixel<float>(x, y);
            const float light = pixel[1] + pixel[2] + pixel[3];
            if (light > most) {
                most = light;
                best = {x, y};
            }
        }
    }
    return best;
}

TEST_F(Lumivar, ShowsTheSkyWithEastToTheLeftAndNorthUp) {
    const Scene scene = starry_scene();
    const auto peak_of = [&](double ra, double dec) {
        add_stars("sky.stars", {star_at(ra, dec, 0.3F)});
        return peak(render(scene));
    };
    // 54 rows for 24 degrees, gnomonic: 27 / tan(12 deg) = 127.02 pixels a unit. 5 degrees are
    // 127.02 x tan(5 deg) = 11.11 pixels; along the circle of declination -1 x cos(1 deg) as much.
    EXPECT_EQ(peak_of(kRa, kDec), (std::pair{48, 27}));
    EXPECT_EQ(peak_of(kRa + 5, kDec), (std::pair{37, 27}));
    EXPECT_EQ(peak_of(kRa - 5, kDec), (std::pair{59, 27}));
    EXPECT_EQ(peak_of(kRa, kDec + 5), (std::pair{48, 16}));
    EXPECT_EQ(peak_of(kRa, kDec - 5), (std::pair{48, 38}));
}

TEST_F(Lumivar, UsesTheDatabaseChosenByName) {
    CatalogueStar red = star_at(kRa, kDec, 0.3F);
    red.g = red.b = 0;
    CatalogueStar blue = star_at(kRa, kDec, 0.3F);
    blue.r = blue.g = 0;
    add_stars("red.stars", {red});
    add_stars("blue.stars", {blue});
    Session session(bundle());
    for (const std::string name : {"red.stars", "blue.stars", "red.stars"}) {
        Scene scene = starry_scene();
        set(scene, "Star Saturation", Track(1.0));
        set(scene, "Star Database", name);
        const Frame frame = session.render(scene, {0, 24});
        const auto pixel = frame.world.pixel<float>(48, 27);
        EXPECT_EQ(pixel[1] > pixel[3], name == "red.stars") << name;
    }
}

TEST_F(Lumivar, AnswersAFailedFrameWithStatus0AndAnUntouchedOutput) {
    const auto expect_untouched = [&](const auto& change, const RenderOptions& options = {}) {
        Session session(bundle());
        change();
        const Frame frame = session.render(starry_scene(), {0, 24}, options);
        EXPECT_EQ(frame.status, 0);
        EXPECT_FALSE(frame.drawn);
        EXPECT_EQ(frame.undrawn_pixels, 96u * 54u);
        add_stars();
        EXPECT_TRUE(session.render(starry_scene(), {0, 24}).drawn) << "the next one is well";
        EXPECT_EQ(joined(session.violations()), "");
    };
    const std::string database = root / "sky.stars";
    write_file(database, "\x89PNG\r\n\x1A\n" + std::string(100, 'x'));
    expect_untouched([] {});
    expect_untouched([&] { fs::remove(database); });
    expect_untouched([&] { write_file(database, ""); });
    expect_untouched([] {}, {.pixel_format = 0x61726762});
}

/// The outermost columns with at least half the light of the brightest: a streak of even light
/// falls to half at its ends, however wide its spot.
std::pair<int, int> half_lit(const Frame& frame) {
    std::vector<double> light(static_cast<std::size_t>(frame.world.width()));
    for (std::size_t x = 0; x < light.size(); ++x) {
        for (int y = 0; y < frame.world.height(); ++y) {
            light[x] += static_cast<double>(frame.world.pixel<float>(static_cast<int>(x), y)[1]);
        }
    }
    const double half = *std::max_element(light.begin(), light.end()) / 2.0;
    EXPECT_GT(half, 0.0);
    const auto bright = [half](double column) { return column >= half; };
    const auto first = std::find_if(light.begin(), light.end(), bright);
    const auto last = std::find_if(light.rbegin(), light.rend(), bright);
    return {static_cast<int>(first - light.begin()), static_cast<int>(light.rend() - last) - 1};
}

TEST_F(Lumivar, DrawsTheStreakBetweenThePlacesOfAMovingCamera) {
    add_stars("sky.stars", {star_at(kRa, kDec, 1.0F)});
    // Turns 96 degrees a second to the west, along a circle of declination 1 degree off a great
    // one: 4 degrees a frame.
    Scene scene = starry_scene();
    scene.composition.motion_blur = true;
    scene.composition.shutter_angle = 360.0;
    scene.composition.shutter_phase = 0.0;
    scene.camera = host::look_at_camera(Track({{0.0, kRa}, {1.0, kRa - 96.0}}), kDec, 0.0,
                                        host::Lens::vertical_fov(24.0, 54));
    set(scene, "Motion Blur Segments", Track(16.0));
    set(scene, "Maximum Luminance", Track(10.0));
    // 27 / tan(12 deg) = 127.02 pixels a unit. The camera turns away westward (to the right), so
    // the star runs from the middle, column 48, to the left: 127.02 x tan(4 deg) = 8.88 pixels.
    const auto streak = half_lit(render(scene));
    EXPECT_NEAR(streak.first, 48.0 - 8.88, 1.0);
    EXPECT_NEAR(streak.second, 48.0, 1.0);
    scene.composition.motion_blur = false;
    const auto spot = half_lit(render(scene));
    EXPECT_NEAR(spot.first, 48.0, 1.0);
    EXPECT_NEAR(spot.second, 48.0, 1.0);
}

}  // namespace
