// The plug-in as it ships, in a bundle of the test's own, played by the stand-in host.
#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/session.h>
#include <support/catalogue.h>
#include <support/scratch.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
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

TEST_F(Lumivar, DeclaresItsVersionAndFlags) {
    add_stars();
    const Session session(bundle());
    EXPECT_EQ(session.info().version, 0x100001u);
    EXPECT_EQ(session.info().version_text(), "2.0.0");
    EXPECT_EQ(session.info().out_flags, 0x3080000);
    EXPECT_EQ(session.info().out_flags2, 0x1407);
    EXPECT_EQ(session.info().num_params, 17);
}

TEST_F(Lumivar, KeepsTheRulesFromLoadingToSetDown) {
    add_stars();
    Session session(bundle());
    const Scene scene = starry_scene();
    for (const Depth depth : {Depth::Bits8, Depth::Bits16, Depth::Float}) {
        RenderOptions options;
        options.depth = depth;
        const Frame frame = session.render(scene, scene.composition.frame_time(3), options);
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
    const Frame first = render(starry_scene());
    const Frame second = render(starry_scene());
    for (int y = 0; y < 54; ++y) {
        for (int x = 0; x < 96; ++x) {
            ASSERT_EQ(first.world.pixel<float>(x, y), second.world.pixel<float>(x, y));
        }
    }
}

TEST_F(Lumivar, GivesBackWhatAPreRenderAloneTook) {
    add_stars();
    RenderOptions options;
    options.render_follows = false;
    Session session(bundle());
    const Frame frame = session.render(starry_scene(), {0, 24}, options);
    EXPECT_FALSE(frame.rendered);
    EXPECT_EQ(frame.data_deletions, 1);
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
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

TEST_F(Lumivar, RoundsTheSameFramePixelByPixelAtEveryDepth) {
    add_stars();
    Scene scene = starry_scene();
    set(scene, "Star Brightness", Track(20.0));
    set(scene, "Star Spot Size", Track(60.0));
    set(scene, "Maximum Luminance", Track(10.0));
    const auto at_depth = [&](Depth depth) {
        RenderOptions options;
        options.depth = depth;
        return render(scene, options);
    };
    const Frame eight = at_depth(Depth::Bits8);
    const Frame sixteen = at_depth(Depth::Bits16);
    const Frame floating = at_depth(Depth::Float);
    // Half added, cut to an integer, held within the scale; single precision throughout.
    const auto code = [](float f, float max) {
        const float scaled = 0.5F + f * max;
        return std::clamp(static_cast<int>(std::min(scaled, 2.0F * max)), 0, static_cast<int>(max));
    };
    int black = 0;
    int between = 0;
    int beyond = 0;
    for (int y = 0; y < 54; ++y) {
        for (int x = 0; x < 96; ++x) {
            const auto f = floating.world.pixel<float>(x, y);
            const auto e = eight.world.pixel<std::uint8_t>(x, y);
            const auto s = sixteen.world.pixel<std::uint16_t>(x, y);
            ASSERT_EQ(f[0], 1.0F);
            ASSERT_EQ(e[0], 255);
            ASSERT_EQ(s[0], 32768);
            for (std::size_t c = 1; c < 4; ++c) {
                ASSERT_EQ(e[c], code(f[c], 255.0F)) << x << ", " << y << " is " << f[c];
                ASSERT_EQ(s[c], code(f[c], 32768.0F)) << x << ", " << y << " is " << f[c];
                black += f[c] == 0.0F ? 1 : 0;
                between += f[c] > 0.01F && f[c] < 0.99F ? 1 : 0;
                beyond += f[c] > 1.5F ? 1 : 0;
            }
        }
    }
    // The frame is one that tells.
    EXPECT_GT(black, 100);
    EXPECT_GT(between, 100);
    EXPECT_GT(beyond, 10);
}

TEST_F(Lumivar, AsksForTheCameraAtTheShuttersOpeningAlone) {
    add_stars();
    Scene scene = starry_scene();
    set(scene, "Motion Blur Segments", Track(4.0));
    Session session(bundle());
    const Frame frame = session.render(scene, scene.composition.frame_time(2));
    // Motion blur is off. Phase -90 of 360 degrees: a quarter of a frame before frame 2.
    ASSERT_EQ(frame.camera_times.size(), 1u);
    EXPECT_DOUBLE_EQ(frame.camera_times[0].seconds(), 1.75 / 24.0);
}

TEST_F(Lumivar, AsksForTheCameraEvenlyAcrossTheShutter) {
    add_stars();
    Scene scene = starry_scene();
    scene.composition.motion_blur = true;
    set(scene, "Motion Blur Segments", Track(4.0));
    Session session(bundle());
    const Frame frame = session.render(scene, scene.composition.frame_time(2));
    // Open for 180 of 360 degrees, half a frame, in four parts.
    ASSERT_EQ(frame.camera_times.size(), 5u);
    for (int k = 0; k <= 4; ++k) {
        const host::Time& time = frame.camera_times[static_cast<std::size_t>(k)];
        EXPECT_DOUBLE_EQ(time.seconds(), (1.75 + 0.125 * k) / 24.0) << k;
        EXPECT_EQ(time.scale, frame.camera_times[0].scale * (k == 0 ? 1u : 4u)) << k;
    }
}

TEST_F(Lumivar, AsksForOneSampleWithoutSegments) {
    add_stars();
    Scene scene = starry_scene();
    scene.composition.motion_blur = true;
    set(scene, "Motion Blur Segments", Track(0.0));
    EXPECT_EQ(render(scene).camera_times.size(), 1u);
}

TEST_F(Lumivar, LooksThroughItsOwnCameraWhereThereIsNone) {
    // Its default camera looks along +z: at longitude 90, latitude 0.
    add_stars("sky.stars", {star_at(90.0, 0.0, 0.3F)});
    Scene scene = starry_scene();
    scene.camera = nullptr;
    const Frame frame = render(scene);
    EXPECT_TRUE(frame.camera_times.empty());
    EXPECT_EQ(peak(frame), (std::pair{48, 27}));
}

TEST_F(Lumivar, LooksThroughItsOwnCameraWhenAQueryFails) {
    add_stars("sky.stars", {star_at(90.0, 0.0, 0.3F)});
    for (const std::string failing :
         {"AEGP_ConvertEffectToCompTime", "AEGP_GetEffectCamera", "AEGP_GetEffectLayer",
          "AEGP_GetLayerParentComp", "AEGP_GetItemFromComp", "AEGP_GetItemDimensions",
          "AEGP_GetCompShutterFrameRange"}) {
        host::SessionOptions options;
        options.filter = [&](std::string_view name, int) {
            return name == failing ? std::optional<std::int32_t>(3) : std::nullopt;
        };
        Session session(bundle(), options);
        const Scene scene = starry_scene();
        const Frame frame = session.render(scene, {0, 24});
        EXPECT_EQ(frame.status, 0) << failing;
        EXPECT_EQ(peak(frame), (std::pair{48, 27})) << failing;
        EXPECT_TRUE(frame.camera_times.empty()) << failing;
    }
}

TEST_F(Lumivar, ReportsAMissingSuiteFromThePreRenderAndLosesNothing) {
    add_stars();
    bool fail = false;
    host::SessionOptions options;
    options.filter = [&](std::string_view name, int) {
        return fail && name == "AcquireSuite" ? std::optional<std::int32_t>(1) : std::nullopt;
    };
    Session session(bundle(), options);
    fail = true;
    const Frame frame = session.render(starry_scene(), {0, 24});
    EXPECT_EQ(frame.status, 516);
    EXPECT_FALSE(frame.rendered);
    fail = false;
    EXPECT_TRUE(session.render(starry_scene(), {0, 24}).drawn);
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
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

TEST_F(Lumivar, DrawsABlackOpaqueFrameFromAHeaderAlone) {
    add_stars("sky.stars", {});
    const Frame frame = render(starry_scene());
    EXPECT_TRUE(frame.drawn);
    EXPECT_EQ(frame.undrawn_pixels, 0u);
    using Pixel = std::array<float, 4>;
    EXPECT_EQ(frame.world.pixel<float>(48, 27), (Pixel{1.0F, 0.0F, 0.0F, 0.0F}));
}

TEST_F(Lumivar, AnswersTheRestOfAHostsQuestions) {
    add_stars();
    Session session(bundle());
    EXPECT_EQ(session.about().rfind("Lumivar for After Effects v2.0\r", 0), 0u);
    EXPECT_EQ(session.dependencies(1), "All Dependencies requested.");
    EXPECT_EQ(session.dependencies(2), std::nullopt);
    EXPECT_EQ(session.dependencies(0), "");
    // Bits 1 and 2 are set whatever the checkbox holds; nothing else is touched.
    Scene flat = starry_scene();
    set(flat, "3D Stars", Track(0.0));
    EXPECT_EQ(session.dynamic_flags(flat, {0, 24}, 0), 6);
    EXPECT_EQ(session.dynamic_flags(starry_scene(), {0, 24}, 0x1000), 0x1006);
    EXPECT_EQ(session.live_handles(), 0u);
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
}

/// What a host sees of a frame of `bundle` after `change` was made behind the session's back.
template <class Change>
void expect_untouched(const fs::path& bundle, Change&& change, const RenderOptions& options = {}) {
    Session session(bundle);
    change();
    const Frame frame = session.render(starry_scene(), {0, 24}, options);
    EXPECT_EQ(frame.status, 0);
    EXPECT_FALSE(frame.drawn);
    EXPECT_EQ(frame.undrawn_pixels, 96u * 54u);
    EXPECT_EQ(joined(frame.violations), "");
}

TEST_F(Lumivar, AnswersAFailedFrameWithStatus0AndAnUntouchedOutput) {
    write_file(root / "sky.stars", "\x89PNG\r\n\x1A\n" + std::string(100, 'x'));
    expect_untouched(bundle(), [] {});
    add_stars();
    expect_untouched(bundle(), [&] { fs::remove(root / "sky.stars"); });
    add_stars();
    expect_untouched(bundle(), [&] { write_file(root / "sky.stars", ""); });
    add_stars();
    RenderOptions strange;
    strange.pixel_format = 0x61726762;
    expect_untouched(
        bundle(), [] {}, strange);
}

TEST_F(Lumivar, AFailedFrameDoesNotSpoilTheNext) {
    add_stars();
    Session session(bundle());
    const Scene scene = starry_scene();
    RenderOptions strange;
    strange.pixel_format = 0x61726762;
    EXPECT_FALSE(session.render(scene, {0, 24}, strange).drawn);
    EXPECT_TRUE(session.render(scene, {0, 24}).drawn);
}

std::string refusal(const fs::path& bundle) {
    try {
        const Session session(bundle);
    } catch (const host::EffectError& error) {
        EXPECT_EQ(error.status(), 512);
        return error.what();
    }
    return "accepted";
}

TEST_F(Lumivar, RefusesSetUpWithoutAnyDatabase) {
    EXPECT_EQ(refusal(bundle()),
              "Cannot locate any Lumivar star database files. Please place the .stars file in the "
              "same directory as the Lumivar plugin (" +
                  spelt_folder() + ").");
}

TEST_F(Lumivar, RefusesSetUpWithAnEmptyDatabase) {
    write_file(root / "sky.stars", "");
    EXPECT_EQ(refusal(bundle()),
              "Error reading Lumivar database file " + spelt_folder() + "/sky.stars.");
}

TEST_F(Lumivar, DrawsItsFillInPremiere) {
    add_stars();
    host::SessionOptions options;
    options.application = host::Application::Premiere;
    Session session(bundle(), options);
    EXPECT_EQ(session.declared_pixel_formats(),
              (std::vector<std::int32_t>{0x61724742, 0x61726742, 0x61726762}));
    EXPECT_EQ(session.about(), "");
    const auto draw = [&](Depth depth) {
        RenderOptions wishes;
        wishes.depth = depth;
        Frame frame = session.render(starry_scene(), {0, 24}, wishes);
        EXPECT_EQ(frame.undrawn_pixels, 0u);
        return frame;
    };
    // Alpha, red, green, blue of 40, 50, 60, 70; at 16 bits times 32768 / 255: 5140.1, 6425.1,
    // 7710.1, 8995.1.
    const Frame eight = draw(Depth::Bits8);
    const Frame sixteen = draw(Depth::Bits16);
    const Frame floating = draw(Depth::Float);
    for (const auto& [x, y] : {std::pair(0, 0), std::pair(95, 53)}) {
        EXPECT_EQ(eight.world.pixel<std::uint8_t>(x, y),
                  (std::array<std::uint8_t, 4>{40, 50, 60, 70}));
        EXPECT_EQ(sixteen.world.pixel<std::uint16_t>(x, y),
                  (std::array<std::uint16_t, 4>{5140, 6425, 7710, 8995}));
        EXPECT_EQ(floating.world.pixel<float>(x, y),
                  (std::array<float, 4>{40 / 255.0F, 50 / 255.0F, 60 / 255.0F, 70 / 255.0F}));
    }
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
}

TEST_F(Lumivar, CarriesOnInPremiereWithoutThePixelFormatSuite) {
    add_stars();
    host::SessionOptions options;
    options.application = host::Application::Premiere;
    options.filter = [](std::string_view name, int) {
        return name == "AcquireSuite" ? std::optional<std::int32_t>(1) : std::nullopt;
    };
    const Session session(bundle(), options);
    ASSERT_EQ(session.messages().size(), 1u);
    EXPECT_EQ(session.messages()[0].text, "Not able to acquire AEFX Suite.");
    EXPECT_TRUE(session.messages()[0].is_error);
    EXPECT_EQ(session.controls().size(), 16u);
}

}  // namespace
