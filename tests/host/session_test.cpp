// The host's side of a session with an effect that keeps the rules.
#include <gtest/gtest.h>
#include <host/session.h>

#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "effect_frames.h"

namespace {

using namespace effect_frames;
using namespace test_effect;
using host::Depth;
using host::Frame;
using host::RenderOptions;
using host::Scene;
using host::Session;
using host::Time;
using host::Track;
using session_scene::set;
using session_scene::small_scene;

Frame first_frame(const Scene& scene, const RenderOptions& options = {}) {
    Session session(TEST_EFFECT);
    return session.render(scene, scene.composition.frame_time(0), options);
}

TEST(Session, SendsCommandsInAHostsOrder) {
    Session session(TEST_EFFECT);
    const Scene scene = small_scene();
    const Frame frame = session.render(scene, scene.composition.frame_time(0));
    session.close();
    EXPECT_EQ(names(session.calls(), "PF_Cmd"),
              (std::vector<std::string>{"PF_Cmd_GLOBAL_SETUP", "PF_Cmd_PARAMS_SETUP",
                                        "PF_Cmd_SEQUENCE_SETUP", "PF_Cmd_SEQUENCE_SETDOWN",
                                        "PF_Cmd_GLOBAL_SETDOWN"}));
    EXPECT_EQ(names(frame.calls, "PF_Cmd"),
              (std::vector<std::string>{"PF_Cmd_QUERY_DYNAMIC_FLAGS", "PF_Cmd_SMART_PRE_RENDER",
                                        "PF_Cmd_SMART_RENDER"}));
    EXPECT_TRUE(session.violations().empty()) << session.violations().front();
}

TEST(Session, TellsTheEffectAndItsControlsExactlyAsDeclared) {
    using host::ControlKind;
    const Session session(TEST_EFFECT);
    EXPECT_EQ(session.info().version_text(), "9.3.1") << "a major above 7 uses the high bits";
    EXPECT_EQ(session.info().out_flags, 0x3080000);
    EXPECT_EQ(session.info().out_flags2, 0x1403);
    EXPECT_EQ(session.info().num_params, 7);
    const auto& controls = session.controls();
    ASSERT_EQ(controls.size(), 6u);
    const struct {
        ControlKind kind;
        double valid_min, valid_max, slider_max, value, default_value;
    } kRows[] = {{ControlKind::FloatSlider, 0, 10, 4, 1.5, 1.5},
                 {ControlKind::Slider, -5, 20, 10, 3, 3},
                 {ControlKind::Checkbox, 0, 0, 0, 1, 1},
                 {ControlKind::Colour, 0, 0, 0, 0, 0},
                 {ControlKind::Popup, 0, 0, 0, 0, 0}};
    for (std::size_t i = 0; i < std::size(kRows); ++i) {
        EXPECT_EQ(controls[i].kind, kRows[i].kind) << i;
        EXPECT_EQ(controls[i].valid.min, kRows[i].valid_min) << i;
        EXPECT_EQ(controls[i].valid.max, kRows[i].valid_max) << i;
        EXPECT_EQ(controls[i].slider.max, kRows[i].slider_max) << i;
        EXPECT_EQ(controls[i].value, kRows[i].value) << i;
        EXPECT_EQ(controls[i].default_value, kRows[i].default_value) << i;
    }
    EXPECT_EQ(controls[0].index, 1);
    EXPECT_EQ(controls[0].id, 1);
    EXPECT_EQ(controls[0].name, "Gain");
    EXPECT_EQ(controls[0].type, 10);
    EXPECT_EQ(controls[0].precision, 3);
    EXPECT_EQ(controls[0].slider_flags, 1u);
    EXPECT_EQ(controls[0].curve_tolerance, 0.25);
    EXPECT_EQ(controls[2].label, "flip it");
    EXPECT_EQ(controls[3].colour, (host::Argb{255, 10, 20, 30}));
    EXPECT_EQ(controls[4].choice_text, "Ramp|Flat|Full Range") << "copied while it was declared";
    EXPECT_EQ(controls[4].choices, (std::vector<std::string>{"Ramp", "Flat", "Full Range"}));
    EXPECT_EQ(controls[4].declared_choices, 20);
}

TEST(Session, GivesTheControlsValuesAtTheFramesTime) {
    Scene scene = small_scene();
    scene.controls = {set("Gain", Track({{0.0, 2.0}, {1.0, 4.0}})), set("Count", Track(7.0)),
                      set("Invert", Track(0.0)),
                      set("Shade", host::Colour{{Track(1.0), Track(2.6), Track(255.0)}}),
                      set("Mode", std::string("Full Range"))};
    Session session(TEST_EFFECT);
    // Frame 6 of 24 a second: 0.25 s.
    const Time time = scene.composition.frame_time(6);
    const Frame frame = session.render(scene, time);
    expect_facts(frame, {{kGain, 2.5},
                         {kCount, 7},
                         {kInvert, 0},
                         {kShadeRed, 1},
                         {kShadeGreen, 3},
                         {kShadeBlue, 255},
                         {kMode, 3},
                         {kCurrentTime, time.value},
                         {kTimeScale, time.scale}});
    EXPECT_EQ(fact(frame, kCurrentTime) / fact(frame, kTimeScale), 0.25);
    EXPECT_EQ(fact(frame, kTimeStep) / fact(frame, kTimeScale), 1.0 / 24.0);
    EXPECT_EQ(fact(frame, kTotalTime) / fact(frame, kTimeScale), 2.0);
}

TEST(Session, ServesTheCompositionsSizeAndShutterWhoseAngleIsToldOnlyWithMotionBlur) {
    Scene blurred = small_scene();
    blurred.composition.shutter_angle = 172.5;
    EXPECT_EQ(fact(first_frame(blurred), kShutterAngle), 0.0);
    blurred.composition.motion_blur = true;
    EXPECT_EQ(fact(first_frame(blurred), kShutterAngle), 172.5);
    const Scene scene = small_scene();
    Session session(TEST_EFFECT);
    const Frame frame = session.render(scene, scene.composition.frame_time(3));
    expect_facts(frame, {{kItemWidth, 64}, {kItemHeight, 36}});
    // 180 degrees from -90 on: a quarter of a frame before frame 3, for half a frame.
    EXPECT_EQ(fact(frame, kShutterStart) / fact(frame, kShutterScale), 2.75 / 24.0);
    EXPECT_EQ(fact(frame, kShutterDuration) / fact(frame, kShutterScale), 0.5 / 24.0);
}

TEST(Session, ServesTheCameraAtTheTimeAskedFor) {
    Scene scene = small_scene();
    scene.composition.shutter_phase = 180.0;
    Session session(TEST_EFFECT);
    const Frame frame = session.render(scene, scene.composition.frame_time(11));
    // The effect asks at the shutter's opening: 11.5 frames.
    const double opening = 11.5 / 24.0;
    ASSERT_EQ(frame.camera_times.size(), 1u);
    EXPECT_DOUBLE_EQ(frame.camera_times[0].seconds(), opening);
    EXPECT_EQ(fact(frame, kHasCamera), 1.0);
    const float expected[16] = {
        1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, static_cast<float>(100.0 + opening), 7, -9, 1};
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(fact(frame, kMatrix + i), static_cast<double>(expected[i])) << i;
    }
    EXPECT_EQ(fact(frame, kZoom), static_cast<double>(static_cast<float>(50.0 + 2.0 * opening)));
}

TEST(Session, HasNoCameraWhereTheSceneHasNone) {
    Scene scene = small_scene();
    scene.camera = nullptr;
    const Frame frame = first_frame(scene);
    // The queries themselves succeed.
    expect_facts(frame, {{kHasCamera, 0}, {kItemWidth, 64}});
    EXPECT_TRUE(frame.camera_times.empty());
}

TEST(Session, ShowsTheSameViewAtAnotherSize) {
    const Frame frame = first_frame(small_scene(), {.width = 96, .height = 54});
    EXPECT_EQ(frame.world.width(), 96);
    EXPECT_EQ(frame.world.height(), 54);
    // The layer keeps its full size.
    expect_facts(frame,
                 {{kInWidth, 64}, {kItemWidth, 64}, {kDownsampleNum, 3}, {kDownsampleDen, 2}});
    EXPECT_EQ(frame.result_rect, (host::Rect{0, 0, 96, 54}));
    EXPECT_EQ(frame.max_result_rect, (host::Rect{0, 0, 96, 54}));
}

TEST(Session, RendersEveryDepth) {
    Session session(TEST_EFFECT);
    const auto draw = [&](Depth depth) {
        Frame frame = session.render(small_scene(), {0, 24}, {.depth = depth});
        EXPECT_TRUE(frame.drawn);
        EXPECT_EQ(frame.undrawn_pixels, 0u);
        EXPECT_EQ(frame.status, 0);
        EXPECT_EQ(joined(frame.violations), "");
        return frame;
    };
    EXPECT_EQ(draw(Depth::Bits8).world.pixel<std::uint8_t>(5, 3),
              (std::array<std::uint8_t, 4>{255, 35, 2, 3}));
    EXPECT_EQ(draw(Depth::Bits16).world.pixel<std::uint16_t>(63, 35),
              (std::array<std::uint16_t, 4>{32768, 413, 2, 3}));
    const Frame floating = draw(Depth::Float);
    EXPECT_EQ(floating.world.pixel<float>(63, 35),
              (std::array<float, 4>{1.0F, 413.0F, 2.0F, 3.0F}));
    EXPECT_EQ(fact(floating, kBitDepth), 32.0);
}

TEST(Session, GivesInputAndOutputDifferentStrides) {
    expect_facts(first_frame(small_scene(), {.output_padding = 4, .input_padding = 100}),
                 {{kOutputRowBytes, 64 * 16 + 4}, {kInputRowBytes, 64 * 16 + 100}});
}

TEST(Session, GivesAFrameWhatItIsDueAndCountsWhatIsLeftCheckedOutWithoutMindingIt) {
    const Frame frame = first_frame(small_scene());
    // The declared values where the scene says nothing, and tables of full length.
    expect_facts(
        frame,
        {{kGain, 1.5}, {kCount, 3}, {kInvert, 1}, {kShadeGreen, 20}, {kMode, 0}, {kNullSlots, 0}});
    EXPECT_EQ(frame.open_param_checkouts, 1);
    EXPECT_EQ(count(frame.calls, "checkout_param"), 6);
    EXPECT_EQ(count(frame.calls, "checkin_param"), 5);
    EXPECT_TRUE(frame.violations.empty());
}

TEST(Session, BalancesSuitesAndHandlesAndDeletesPreRenderDataOnceAlsoWithoutARender) {
    Session session(TEST_EFFECT);
    const Frame frame = session.render(small_scene(), {0, 24});
    EXPECT_EQ(count(frame.calls, "AcquireSuite"), count(frame.calls, "ReleaseSuite"));
    EXPECT_GT(count(frame.calls, "AcquireSuite"), 0);
    EXPECT_EQ(session.live_handles(), 0u);
    EXPECT_EQ(frame.data_deletions, 1);
    // The effect's data holds a handle, which its deleter disposes of: once, as the last call.
    EXPECT_EQ(count(frame.calls, "host_dispose_handle"), 1);
    EXPECT_EQ(frame.calls.back().name, "host_dispose_handle");
    const Frame none = session.render(small_scene(), {0, 24}, {.render_follows = false});
    EXPECT_FALSE(none.rendered);
    EXPECT_FALSE(none.drawn);
    EXPECT_EQ(none.data_deletions, 1);
    EXPECT_EQ(session.live_handles(), 0u);
    EXPECT_EQ(count(none.calls, "PF_Cmd_SMART_RENDER"), 0);
    EXPECT_TRUE(none.violations.empty());
}

TEST(Session, AsksForAboutAndDependenciesAndDisposesOfTheHandle) {
    Session session(TEST_EFFECT);
    EXPECT_EQ(session.about(), "Test effect v9");
    EXPECT_TRUE(session.messages().empty());
    EXPECT_EQ(session.dependencies(1), "one font");
    EXPECT_EQ(session.dependencies(2), std::nullopt);
    EXPECT_EQ(session.live_handles(), 0u);
}

TEST(Session, TellsDynamicFlagsOverWhatStoodThere) {
    Session session(TEST_EFFECT);
    EXPECT_EQ(session.dynamic_flags(small_scene(), {0, 24}).second, 0x1407);
    EXPECT_EQ(session.dynamic_flags(small_scene(), {0, 24}, 0).second, 0x4);
    EXPECT_EQ(session.info().out_flags2, 0x1403) << "the declared flags stay";
}

TEST(Session, SendsCommandsByTheirNumberAndForgetsThem) {
    Session session(TEST_EFFECT);
    const host::Answer answer = session.command(999);
    EXPECT_EQ(answer.status, 0);
    EXPECT_FALSE(answer.record_written);
    EXPECT_EQ(session.calls().back().name, "PF_Cmd_UNKNOWN");
    EXPECT_EQ(session.command(0).message.text, "Test effect v9");
    EXPECT_EQ(names(session.calls(), "PF_Cmd").back(), "PF_Cmd_ABOUT");
    // The dependencies' record is the one that the test effect writes to.
    EXPECT_TRUE(session.command(16).record_written);
    session.forget();
    EXPECT_TRUE(session.calls().empty());
    EXPECT_TRUE(session.violations().empty());
    EXPECT_TRUE(session.messages().empty());
}

TEST(Session, RendersPlainlyWhenAskedTo) {
    const Frame frame = first_frame(small_scene(), {.depth = Depth::Bits8, .plain = true});
    EXPECT_EQ(names(frame.calls, "PF_Cmd"), kPlainCommands);
    EXPECT_EQ(frame.undrawn_pixels, 0U);
    EXPECT_THROW(first_frame(small_scene(), {.depth = Depth::Float, .plain = true}),
                 host::FrameError);
}

TEST(Session, TakesACheckInThatFailsOnDemandForOne) {
    const auto filter = [](std::string_view name, int) {
        return name == "checkin_param" ? std::optional<std::int32_t>(4) : std::nullopt;
    };
    Session session(TEST_EFFECT, {.filter = filter});
    // The effect leaves one of its parameters checked out.
    EXPECT_EQ(session.render(small_scene(), {0, 24}).open_param_checkouts, 1);
}

TEST(Session, PlaysSeveralScenesInTurn) {
    Session session(TEST_EFFECT);
    for (const int width : {80, 64}) {
        const Frame frame = session.render(small_scene(width), {0, 24});
        EXPECT_EQ(frame.world.width(), width);
        EXPECT_EQ(fact(frame, kItemWidth), width);
    }
}

TEST(Session, RefusesControlsThatDoNotFitBeforeAnyCommand) {
    Session session(TEST_EFFECT);
    Scene scene = small_scene();
    scene.controls = {set("Gian", Track(1.0))};
    const std::size_t calls = session.calls().size();
    EXPECT_THROW(session.render(scene, {0, 24}), host::SceneError);
    EXPECT_EQ(session.calls().size(), calls);
}

TEST(Session, RefusesFramesWithoutPixelsAndTimesWithoutAScale) {
    Session session(TEST_EFFECT);
    EXPECT_THROW(session.render(small_scene(), {0, 24}, {.width = -1}), host::FrameError);
    try {
        session.render(small_scene(1, 0), {0, 24});
        FAIL() << "drawn";
    } catch (const host::FrameError& error) {
        EXPECT_STREQ(
            error.what(),
            "a frame of 1 x 0 pixels has nothing to draw on; both sides must be at least 1");
    }
    EXPECT_THROW(session.render(small_scene(), {0, 0}), host::FrameError);
}

// Of a frame too large for any memory, as only its part is held.
TEST(Session, DrawsAPartOfAFrameOfAnySize) {
    Session session(TEST_EFFECT);
    const Frame frame = session.render(small_scene(), {0, 24},
                                       {.width = 2000000,
                                        .height = 2000000,
                                        .region = host::Rect{1000000, 1000000, 1000008, 1000004}});
    EXPECT_EQ(frame.world.width(), 8);
    EXPECT_EQ(frame.world.height(), 4);
    EXPECT_EQ(frame.undrawn_pixels, 0U);
}

TEST(Session, ReportsAHostSideFailureInsteadOfAWrongPicture) {
    class BrokenCamera : public session_scene::PlainCamera {
        double zoom(double) const override { throw std::out_of_range("no zoom there"); }
    };
    Scene scene = small_scene();
    scene.camera = std::make_shared<BrokenCamera>();
    Session session(TEST_EFFECT);
    EXPECT_THROW(session.render(scene, {0, 24}), std::out_of_range);
    scene.camera = std::make_shared<session_scene::PlainCamera>();
    EXPECT_TRUE(session.render(scene, {0, 24}).drawn) << "and goes on with the next frame";
}

TEST(Session, MakesCallsFailByNameAndCount) {
    int suites_failed = 0;
    const auto filter = [&](std::string_view name, int which) -> std::optional<std::int32_t> {
        if (name == "AEGP_GetEffectCamera" && which == 2) {
            return 13;
        }
        if (name == "AcquireSuite" && which == 1) {
            ++suites_failed;
            return 99;
        }
        return std::nullopt;
    };
    Session session(TEST_EFFECT, {.filter = filter});
    const Frame first = session.render(small_scene(), {0, 24});
    EXPECT_EQ(suites_failed, 1);
    EXPECT_EQ(fact(first, kNullSlots), 1000.0) << "the first suite was not to be had";
    EXPECT_EQ(fact(first, kHasCamera), 1.0);
    const Frame second = session.render(small_scene(), {0, 24});
    EXPECT_EQ(fact(second, kHasCamera), 0.0);
    EXPECT_EQ(statuses(second, "AEGP_GetEffectCamera"), std::vector<std::int32_t>{13});
    EXPECT_EQ(fact(session.render(small_scene(), {0, 24}), kHasCamera), 1.0);
}

}  // namespace
