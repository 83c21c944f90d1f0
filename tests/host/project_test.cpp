// Layers' own time, cameras that come and go, and which suites each host has.
#include <gtest/gtest.h>
#include <host/project.h>
#include <suites.h>

#include <stdexcept>
#include <string>

#include "session_scene.h"

namespace {

using host::LayerSpec;
using host::Time;

LayerSpec layer(Time start, host::Ratio stretch) { return {.start = start, .stretch = stretch}; }

void expect_time(Time time, std::int32_t value, std::uint32_t scale) {
    EXPECT_EQ(time.value, value);
    EXPECT_EQ(time.scale, scale);
}

TEST(LayerTime, RunsFromTheLayersStartAtItsStretchInLowestTermsWhereTheScaleIsTooCoarse) {
    // The composition's unless the layer says otherwise.
    expect_time(LayerSpec().composition_time({-6, 48}), -6, 48);
    expect_time(LayerSpec().layer_time({-6, 48}), -6, 48);
    // 2 s in, half as fast: layer time 0.25 s is 2 + 0.5 s.
    const LayerSpec slow = layer({2, 1}, {2, 1});
    expect_time(slow.composition_time({6, 24}), 60, 24);
    expect_time(slow.layer_time({60, 24}), 6, 24);
    // From 3 s back: layer time 1 s is 2 s, composition time 4 s is layer time -1 s.
    const LayerSpec reversed = layer({3, 1}, {-1, 1});
    expect_time(reversed.composition_time({24, 24}), 48, 24);
    expect_time(reversed.layer_time({96, 24}), -24, 24);
    // 1/24 s by 3 is 1/72 s; and 5/24 + 1/10 s is 37/120 s.
    expect_time(layer({0, 1}, {3, 1}).layer_time({1, 24}), 1, 72);
    expect_time(layer({1, 10}, {1, 1}).composition_time({5, 24}), 37, 120);
}

TEST(LayerTime, ReturnsExactlyWhereItCameFrom) {
    const LayerSpec odd = layer({-1001, 30000}, {-7, 13});
    for (const int frame : {-3, 0, 1, 239}) {
        const Time there = odd.layer_time({frame * 1001, 24000});
        const Time back = odd.composition_time(there);
        EXPECT_EQ(std::int64_t{back.value} * 24000, std::int64_t{frame} * 1001 * back.scale);
    }
}

TEST(LayerTime, RefusesWhatNoTimeCanHold) {
    EXPECT_THROW(layer({0, 1}, {2, 1}).composition_time({2000000000, 1}), std::out_of_range);
    EXPECT_THROW(layer({1, 4294967291U}, {1, 1}).layer_time({1, 4294967279U}), std::out_of_range);
    EXPECT_THROW(layer({0, 1}, {0, 1}).layer_time({1, 24}), std::invalid_argument);
    EXPECT_THROW(LayerSpec().composition_time({1, 0}), std::invalid_argument);
}

TEST(Cameras, AreActiveFromInPointToBeforeOutPointAndLookedThroughFromTheTop) {
    host::Project project;
    const auto camera = std::make_shared<session_scene::PlainCamera>();
    project.cameras = {{camera, 1.0, 2.0}};
    EXPECT_EQ(project.camera_at(0.999), nullptr);
    EXPECT_EQ(project.camera_at(1.0), &project.cameras[0]);
    EXPECT_EQ(project.camera_at(1.999), &project.cameras[0]);
    EXPECT_EQ(project.camera_at(2.0), nullptr);
    project.cameras = {{camera, 1.0, 2.0}, {nullptr}, {camera}, {camera}};
    EXPECT_EQ(project.camera_at(1.5), &project.cameras[0]);
    EXPECT_EQ(project.camera_at(2.5), &project.cameras[2]);
}

TEST(Project, OfASceneHasItsCameraAndOneLayer) {
    host::Scene scene = session_scene::small_scene();
    scene.controls.push_back(session_scene::set("Gain", host::Track(2.0)));
    const host::Project project(scene);
    ASSERT_EQ(project.cameras.size(), 1u);
    EXPECT_EQ(project.cameras[0].camera, scene.camera);
    ASSERT_EQ(project.layers.size(), 1u);
    EXPECT_EQ(project.layers[0].controls[0].name, "Gain");
    scene.camera = nullptr;
    EXPECT_TRUE(host::Project(scene).cameras.empty());
}

TEST(Suites, AreThoseOfTheHost) {
    struct Row {
        const char* name;
        int version;
        bool after_effects;
        bool premiere;
    };
    const Row rows[] = {
        {"PF Handle Suite", 2, true, true},
        {"PF ANSI Suite", 1, true, true},
        {"PF Fill Matte Suite", 2, true, false},
        {"PF World Suite", 2, true, false},
        {"PF Pixel Format Suite", 1, false, true},
        {"PF World Transform Suite", 1, false, false},
        {"AEGP PF Interface Suite", 1, true, false},
        {"AEGP Layer Suite", 11, true, false},
        {"AEGP Item Suite", 10, true, false},
        {"AEGP Comp Suite", 9, true, false},
        {"AEGP Stream Suite", 7, true, false},
        // Other versions of one name are other tables.
        {"PF Handle Suite", 1, false, false},
        {"AEGP Layer Suite", 5, false, false},
    };
    for (const Row& row : rows) {
        const auto offers = [&row](host::Application application) {
            return host::find_suite(application, row.name, row.version) != nullptr;
        };
        EXPECT_EQ(offers(host::Application::AfterEffects), row.after_effects) << row.name;
        EXPECT_EQ(offers(host::Application::Premiere), row.premiere) << row.name;
    }
}

}  // namespace
