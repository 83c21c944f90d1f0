// The plug-in on several layers at once, in parts, previews and nested time.
#include <gtest/gtest.h>
#include <host/instance.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "starry.h"

namespace {

using namespace starry;
using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::Project;
using host::Rect;
using host::RenderOptions;
using host::Session;
using host::Time;
using host::Track;

/// A preview of half the size.
const RenderOptions kHalf = {.width = 48, .height = 27};

class LumivarInstances : public Lumivar {
protected:
    LumivarInstances() : project(starry_scene()) { add_stars(); }

    Time frame_time(int index) const { return project.composition.frame_time(index); }

    /// Frame 0 of the first layer in a session of its own.
    Frame alone(const RenderOptions& options = {}, int index = 0) {
        Session session(bundle());
        EffectInstance effect(session, project);
        Frame frame = effect.render(frame_time(index), options);
        EXPECT_EQ(joined(session.violations()), "");
        EXPECT_EQ(frame.undrawn_pixels, 0u);
        return frame;
    }

    Project project;
};

// The effect draws its whole view into whatever it is handed, and users' projects count on it.

TEST_F(LumivarInstances, DrawTheWholeViewIntoTheRegionAskedFor) {
    const Frame part = alone({.region = Rect{24, 13, 72, 40}});
    EXPECT_EQ(part.result_rect, (Rect{24, 13, 72, 40}));
    EXPECT_EQ(part.max_result_rect, (Rect{0, 0, 96, 54}));
    ASSERT_TRUE(shows_stars(part));
    EXPECT_EQ(bytes(part), bytes(alone(kHalf))) << "not the middle of the frame";
}

TEST_F(LumivarInstances, DrawSpotsOfTheSamePixelsInAPreview) {
    // One star in the middle, its spot far larger than its pixel: were the preview compensated
    // for, the spot would be half as wide in it.
    add_stars("sky.stars", {star_at(kRa, kDec, 1.0F)});
    host::Scene scene = starry_scene();
    set(scene, "Star Brightness", Track(1000.0));
    set(scene, "Maximum Luminance", Track(10.0));
    set(scene, "Star Spot Size", Track(6.0));
    project = Project(scene);
    const auto lit_columns = [](const Frame& frame) {
        int lit = 0;
        const int y = frame.world.height() / 2;
        for (int x = 0; x < frame.world.width(); ++x) {
            lit += frame.world.pixel<float>(x, y)[1] > 0.0F ? 1 : 0;
        }
        return lit;
    };
    const int full = lit_columns(alone());
    EXPECT_GT(full, 4);
    EXPECT_EQ(lit_columns(alone(kHalf)), full);
}

TEST_F(LumivarInstances, DrawSquarePixelsWhateverTheirAspect) {
    const Frame square = alone();
    project.layers[0].pixel_aspect = {4, 3};
    ASSERT_TRUE(shows_stars(square));
    EXPECT_EQ(bytes(alone()), bytes(square));
}

TEST_F(LumivarInstances, SampleTheCameraInNestedTime) {
    project.composition.motion_blur = true;
    project.composition.shutter_phase = 0.0;
    // Composition time 1.25 s is layer time (1.25 - 0.5) / -3 = -0.25 s.
    project.layers[0].start = {1, 2};
    project.layers[0].stretch = {-3, 1};
    // The segments' number is read in layer time, the camera in composition time.
    host::Scene scene;
    set(scene, "Motion Blur Segments", Track({{-0.75, 0.0}, {0.25, 4.0}}));
    project.layers[0].controls = scene.controls;
    const Frame frame = alone({}, 30);
    EXPECT_EQ(frame.layer_time.seconds(), -0.25);
    // Two segments of half a frame from 1.25 s on.
    ASSERT_EQ(frame.camera_times.size(), 3u);
    for (int k = 0; k <= 2; ++k) {
        EXPECT_DOUBLE_EQ(frame.camera_times[static_cast<std::size_t>(k)].seconds(),
                         1.25 + 0.25 * k / 24.0);
    }
}

TEST_F(LumivarInstances, FollowCamerasThatComeAndGo) {
    // Without a camera the effect looks along +z: longitude 90, latitude 0.
    add_stars("sky.stars", {star_at(kRa, kDec, 1.0F), star_at(90.0, 0.0, 1.0F)});
    const auto camera = project.cameras[0].camera;
    project.composition.shutter_phase = 0.0;
    project.cameras = {
        {host::look_at_camera(270.0, 60.0, 0.0, host::Lens::vertical_fov(4.0, 54)), 1.0, 1.5},
        {camera, 0.5, 2.0}};
    Session session(bundle());
    EffectInstance effect(session, project);
    const Frame none = effect.render(frame_time(11));
    EXPECT_TRUE(none.camera_times.empty());
    EXPECT_TRUE(shows_stars(none)) << "through the effect's own camera";
    const Frame lower = effect.render(frame_time(12));
    ASSERT_EQ(lower.camera_times.size(), 1u);
    EXPECT_TRUE(shows_stars(lower));
    EXPECT_NE(bytes(lower), bytes(none));
    EXPECT_FALSE(shows_stars(effect.render(frame_time(24)))) << "the upper one sees empty sky";
    EXPECT_EQ(bytes(effect.render(frame_time(36))), bytes(lower)) << "the upper one has gone";
    EXPECT_TRUE(effect.render(frame_time(48)).camera_times.empty());
}

TEST_F(LumivarInstances, KeepTheirSnapshotsApart) {
    host::Scene bright = starry_scene();
    set(bright, "Star Brightness", Track({{0.0, 20.0}, {1.0, 5.0}}));
    host::Scene red = starry_scene();
    set(red, "Tint Strength", Track(1.0));
    set(red, "Tint Color", host::Colour{{Track(255.0), Track(0.0), Track(0.0)}});
    project = Project(bright);
    project.layers.push_back(Project(red).layers[0]);

    // Each frame by itself in a session of its own.
    std::vector<std::vector<std::byte>> expected;
    for (const auto& [layer, index] : {std::pair{0, 0}, {1, 0}, {0, 24}, {1, 24}}) {
        Session session(bundle());
        EffectInstance effect(session, project, static_cast<std::size_t>(layer));
        const Frame frame = effect.render(frame_time(index));
        ASSERT_TRUE(shows_stars(frame));
        expected.push_back(bytes(frame));
    }
    ASSERT_NE(expected[0], expected[1]);
    ASSERT_NE(expected[0], expected[2]);

    Session session(bundle());
    {
        EffectInstance one(session, project, 0);
        EffectInstance two(session, project, 1);
        PreRender one_early = one.pre_render(frame_time(0));
        PreRender two_early = two.pre_render(frame_time(0));
        PreRender one_late = one.pre_render(frame_time(24));
        PreRender never = one.pre_render(frame_time(12));
        PreRender two_late = two.pre_render(frame_time(24));
        project.cameras.clear();
        EXPECT_EQ(bytes(two.render(two_late)), expected[3]);
        EXPECT_EQ(bytes(one.render(one_early)), expected[0]);
        never.discard();
        EXPECT_EQ(never.frame().data_deletions, 1);
        EXPECT_EQ(bytes(one.render(one_late)), expected[2]);
        one_late.discard();
        EXPECT_EQ(bytes(two.render(two_early)), expected[1]);
    }
    EXPECT_EQ(session.live_handles(), 0u);
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
}

}  // namespace
