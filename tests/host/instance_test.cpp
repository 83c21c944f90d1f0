// Several effects in one composition, and their frames step by step.
#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/instance.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "effect_frames.h"

namespace {

using namespace effect_frames;
using namespace test_effect;
using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::Project;
using host::Rect;
using host::Session;
using host::Time;
using host::Track;
using session_scene::set;
using session_scene::small_scene;

class Instances : public testing::Test {
protected:
    Instances() : project(small_scene()) {}
    ~Instances() override { EXPECT_EQ(joined(session.violations()), ""); }

    Time frame_time(int index) const { return project.composition.frame_time(index); }

    Session session{TEST_EFFECT};
    Project project;
};

TEST_F(Instances, BeginAndEndTheirOwnSequencesForALayerOfTheProject) {
    EXPECT_THROW(EffectInstance(session, project, 1), std::out_of_range);
    {
        const EffectInstance one(session, project);
        const EffectInstance two(session, project);
    }
    session.close();
    EXPECT_EQ(names(session.calls(), "PF_Cmd"),
              (std::vector<std::string>{
                  "PF_Cmd_GLOBAL_SETUP", "PF_Cmd_PARAMS_SETUP", "PF_Cmd_SEQUENCE_SETUP",
                  "PF_Cmd_SEQUENCE_SETUP", "PF_Cmd_SEQUENCE_SETUP", "PF_Cmd_SEQUENCE_SETDOWN",
                  "PF_Cmd_SEQUENCE_SETDOWN", "PF_Cmd_SEQUENCE_SETDOWN", "PF_Cmd_GLOBAL_SETDOWN"}));
}

TEST_F(Instances, ReadTheControlsOfTheirOwnLayerOverLayerTime) {
    project.layers.resize(2);
    project.layers[0].controls = {set("Gain", Track(2.0))};
    project.layers[1].controls = {set("Gain", Track({{0.0, 1.0}, {1.0, 9.0}}))};
    // Frame 36 of 24 a second is 1.5 s: the second layer's time is (1.5 - 1) / 2 = 0.25 s.
    project.layers[1].start = {1, 1};
    project.layers[1].stretch = {2, 1};
    EffectInstance one(session, project, 0);
    EffectInstance two(session, project, 1);
    EXPECT_EQ(fact(one.render(frame_time(36)), kGain), 2.0);
    const Frame frame = two.render(frame_time(36));
    EXPECT_EQ(fact(frame, kGain), 3.0);
    EXPECT_EQ(fact(frame, kCurrentTime) / fact(frame, kTimeScale), 0.25);
    EXPECT_EQ(fact(frame, kTimeStep) / fact(frame, kTimeScale), 0.5 / 24.0);
    EXPECT_EQ(frame.time.seconds(), 1.5);
    EXPECT_EQ(frame.layer_time.seconds(), 0.25);
}

TEST_F(Instances, SeeTheCameraAtCompositionTime) {
    project.composition.shutter_phase = 0.0;
    project.layers[0].start = {1, 2};
    project.layers[0].stretch = {-3, 1};
    EffectInstance effect(session, project);
    const Frame frame = effect.render(frame_time(30));
    // The camera stands at x = 100 + seconds.
    EXPECT_EQ(frame.layer_time.seconds(), -0.25);
    EXPECT_EQ(fact(frame, kMatrix + 12), 101.25);
    ASSERT_EQ(frame.camera_times.size(), 1u);
    EXPECT_EQ(frame.camera_times[0].seconds(), 1.25);
    EXPECT_LT(fact(frame, kTimeStep), 0.0) << "the layer plays backwards";
}

TEST_F(Instances, LookThroughTheTopmostCameraActiveAtTheFrame) {
    const auto standing_at = [](double x) {
        return host::placed_camera({x, 0.0, 0.0}, {0.0, 0.0, 0.0}, host::Lens::zoom(50.0));
    };
    project.cameras = {{standing_at(5.0), 1.0, 1.5}, {standing_at(6.0), 0.5, 2.0}};
    EffectInstance effect(session, project);
    const auto place = [&](int frame) -> std::optional<double> {
        const Frame drawn = effect.render(frame_time(frame));
        return fact(drawn, kHasCamera) != 0.0 ? std::optional(fact(drawn, kMatrix + 12))
                                              : std::nullopt;
    };
    EXPECT_EQ(place(11), std::nullopt);
    EXPECT_EQ(place(12), 6.0);
    EXPECT_EQ(place(23), 6.0);
    // Though the shutter opens before the camera comes.
    EXPECT_EQ(place(24), 5.0);
    EXPECT_EQ(place(35), 5.0);
    EXPECT_EQ(place(36), 6.0);
    EXPECT_EQ(place(48), std::nullopt);
}

TEST_F(Instances, AreAskedForAPartOfTheLayer) {
    EffectInstance effect(session, project);
    const Frame frame = effect.render(frame_time(0), {.region = Rect{4, 10, 60, 30}});
    EXPECT_EQ(frame.result_rect, (Rect{4, 10, 60, 30}));
    EXPECT_EQ(frame.max_result_rect, (Rect{0, 0, 64, 36})) << "whatever was asked for";
    EXPECT_EQ(frame.world.width(), 56);
    EXPECT_EQ(frame.world.height(), 20);
    EXPECT_EQ(frame.undrawn_pixels, 0u);
    expect_facts(frame,
                 {{kOriginX, 4}, {kOriginY, 10}, {kReferenceWidth, 64}, {kReferenceHeight, 36}});
    // Only the part inside the layer.
    const Frame beyond = effect.render(frame_time(0), {.region = Rect{-8, 20, 200, 60}});
    EXPECT_EQ(beyond.result_rect, (Rect{0, 20, 64, 36}));
    EXPECT_EQ(beyond.undrawn_pixels, 0u);
    // Nothing asked for, nothing rendered.
    const Frame none = effect.render(frame_time(0), {.region = Rect{}});
    EXPECT_FALSE(none.rendered);
    EXPECT_EQ(none.max_result_rect, (Rect{0, 0, 64, 36}));
    EXPECT_EQ(none.data_deletions, 1);
}

TEST_F(Instances, HearOfSizePreviewAndPixelAspect) {
    project.layers[0].width = 128;
    project.layers[0].height = 80;
    project.layers[0].pixel_aspect = {10, 11};
    EffectInstance effect(session, project);
    const Frame frame = effect.render(frame_time(0), {.width = 64, .height = 20});
    // The item is the composition.
    expect_facts(frame, {{kInWidth, 128},
                         {kInHeight, 80},
                         {kItemWidth, 64},
                         {kReferenceWidth, 64},
                         {kAspectNum, 10},
                         {kAspectDen, 11},
                         {kInputAspectNum, 10},
                         {kInputAspectDen, 11}});
    EXPECT_EQ(fact(frame, kDownsampleNum) / fact(frame, kDownsampleDen), 0.5);
    EXPECT_EQ(frame.world.height(), 20);
}

TEST_F(Instances, HaveMotionBlurOnlyWhereCompositionAndLayerHave) {
    EffectInstance effect(session, project);
    const auto angle = [&](bool composition, bool layer) {
        project.composition.motion_blur = composition;
        project.layers[0].motion_blur = layer;
        return fact(effect.render(frame_time(0)), kShutterAngle);
    };
    EXPECT_EQ(angle(true, true), 180.0);
    EXPECT_EQ(angle(true, false), 0.0);
    EXPECT_EQ(angle(false, true), 0.0);
}

TEST_F(Instances, RenderTheirPreRendersInAnyOrder) {
    project.layers.resize(2);
    project.layers[0].controls = {set("Gain", Track({{0.0, 0.0}, {1.0, 8.0}}))};
    project.layers[1].controls = {set("Gain", Track(3.0))};
    EffectInstance one(session, project, 0);
    EffectInstance two(session, project, 1);
    PreRender early = one.pre_render(frame_time(3));
    PreRender other = two.pre_render(frame_time(0));
    PreRender late = one.pre_render(frame_time(21));
    // What the project says later is of no effect on what was pre-rendered.
    project.layers[0].controls.clear();

    const Frame last = one.render(late);
    const Frame first = one.render(early);
    const Frame between = two.render(other);
    EXPECT_EQ(fact(first, kGain), 1.0);
    EXPECT_EQ(fact(last, kGain), 7.0);
    EXPECT_EQ(fact(between, kGain), 3.0);
    EXPECT_EQ(session.live_handles(), 3u) << "one in the data of each";
    for (PreRender* pre : {&early, &other, &late}) {
        pre->discard();
        EXPECT_EQ(pre->frame().data_deletions, 1);
    }
    EXPECT_EQ(session.live_handles(), 0u);
}

TEST_F(Instances, LoseTheirDataOnceHoweverThePreRenderEnds) {
    EffectInstance effect(session, project);
    EffectInstance other(session, project);
    {
        PreRender discarded = effect.pre_render(frame_time(0));
        EXPECT_THROW(other.render(discarded), std::logic_error);
        EXPECT_TRUE(discarded.renderable());
        discarded.discard();
        EXPECT_FALSE(discarded.renderable());
        EXPECT_THROW(effect.render(discarded), std::logic_error);
        discarded.discard();
        // The effect's deleter disposes of its handle.
        EXPECT_EQ(count(discarded.frame().calls, "host_dispose_handle"), 1);

        PreRender forgotten = effect.pre_render(frame_time(1));
        PreRender rendered = effect.pre_render(frame_time(2));
        effect.render(rendered);
        EXPECT_THROW(effect.render(rendered), std::logic_error) << "once";
        PreRender moved = std::move(forgotten);
        EXPECT_EQ(session.live_handles(), 2u);
    }
    EXPECT_EQ(session.live_handles(), 0u);
}

TEST_F(Instances, AreBlamedForWhatAFrameNeverGivesBack) {
    project.layers[0].controls = {set("Mischief", Track(static_cast<double>(kLeakHandle)))};
    EffectInstance effect(session, project);
    {
        PreRender pre = effect.pre_render(frame_time(0));
        effect.render(pre);
        EXPECT_EQ(joined(session.violations()), "");
    }
    EXPECT_EQ(joined(session.violations()), "1 host handles were not disposed of");
    session.forget();
}

TEST_F(Instances, ThrowInADeleterIsAViolationWhenNobodyCanBeTold) {
    project.layers[0].controls = {set("Mischief", Track(static_cast<double>(kThrowInDeleter)))};
    EffectInstance effect(session, project);
    { const PreRender pre = effect.pre_render(frame_time(0)); }
    ASSERT_EQ(session.violations().size(), 1u);
    EXPECT_NE(session.violations()[0].text.find("deleter trouble"), std::string::npos);
    session.forget();
    PreRender told = effect.pre_render(frame_time(0));
    EXPECT_THROW(told.discard(), host::ModuleDefect);
}

TEST(PremiereInstances, HaveNoPreRenders) {
    Session session(TEST_EFFECT, kInPremiere);
    const Project project(small_scene());
    EffectInstance effect(session, project);
    const host::RenderOptions eight = {.depth = host::Depth::Bits8};
    EXPECT_THROW(effect.pre_render({0, 24}, eight), host::FrameError);
    const Frame frame = effect.render({0, 24}, eight);
    EXPECT_EQ(names(frame.calls, "PF_Cmd"), kPlainCommands);
    // The effect asks for 16-bit pixels first.
    EXPECT_EQ(statuses(frame, "get_pixel_data16"), std::vector<std::int32_t>{515})
        << "there is no such call in this host";
    EXPECT_TRUE(frame.drawn);
}

}  // namespace
