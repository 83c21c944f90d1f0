// Ten thousand frames in a host that fails at random: nothing is lost, and each frame is whole or
// untouched. What each single failed call leads to is tested elsewhere.
#include <gtest/gtest.h>
#include <host/faults.h>
#include <host/instance.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "process.h"
#include "starry.h"

namespace {

using namespace starry;
using host::Depth;
using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::Project;
using host::RenderOptions;
using host::Rule;
using host::Session;
using host::Track;

constexpr int kRenders = 10000;
constexpr int kLeast = 50;
constexpr std::size_t kPixels = 32 * 18;
/// What hosts answer, and what none should. Without 516, with which the host refuses what makes no
/// sense: those refusals must be told from the faults.
const std::vector<std::int32_t> kStatuses = {1, 4, 13, 512, 513, 517, 518, -1, 0x53214664};

/// The effect gives back what it never got, deliberately: whatever failed before, it returns all.
/// Hosts refuse that without harm.
bool is_kept_habit(const host::Violation& violation) {
    return violation.rule == Rule::ParameterNotHeld || violation.rule == Rule::SuiteNotHeld ||
           violation.rule == Rule::LayerNotHeld;
}

/// Faults drawn at random, the same ones for the same seed on every machine. What can fail and how
/// often it is called is learned from the calls of good frames, so that nothing is left out.
class RandomFaults {
public:
    RandomFaults(std::uint64_t seed, const std::vector<host::Call>& calls)
        : engine_(seed), calls_(host::calls_that_can_fail(calls)) {
        for (const auto& [name, count] : calls_) {
            names_.push_back(name);
        }
    }

    /// What can fail, with the number of calls in the good frames.
    const std::map<std::string, int>& calls() const { return calls_; }

    /// One to three: every name is as likely as any other, and of its calls each as well, or, one
    /// time in eight, all.
    std::vector<host::CallFault> draw() {
        std::vector<host::CallFault> faults(1 + below(3));
        for (host::CallFault& fault : faults) {
            fault.call = names_[below(names_.size())];
            const auto count = static_cast<std::size_t>(calls_.at(fault.call));
            fault.nth = below(8) == 0 ? 0 : static_cast<int>(1 + below(count));
            fault.status = kStatuses[below(kStatuses.size())];
        }
        return faults;
    }

private:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }

    std::mt19937_64 engine_;
    std::map<std::string, int> calls_;
    std::vector<std::string> names_;
};

bool sent(const Frame& frame, const std::string& command) {
    return std::any_of(frame.calls.begin(), frame.calls.end(),
                       [&](const host::Call& call) { return call.name == command; });
}

bool any_call_failed(const Frame& frame) {
    return std::any_of(frame.calls.begin(), frame.calls.end(), [](const host::Call& call) {
        return call.status != 0 && call.name.rfind("PF_Cmd_", 0) != 0;
    });
}

host::Scene small_sky() {
    host::Scene scene = starry_scene();
    scene.composition.width = 32;
    scene.composition.height = 18;
    scene.composition.motion_blur = true;
    scene.camera = host::look_at_camera(Track({{0.0, kRa - 2}, {2.0, kRa + 2}}), kDec, 0.0,
                                        host::Lens::vertical_fov(24.0, 18));
    set(scene, "Motion Blur Segments", Track(2.0));
    set(scene, "Star Brightness", Track(20.0));
    return scene;
}

/// One kind of frame, and what it looks like when nothing fails.
struct Twin {
    EffectInstance* effect;
    host::Time time;
    RenderOptions options;
    std::vector<std::byte> good;

    Frame render() const { return effect->render(time, options); }
};

TEST_F(Lumivar, LeavesEveryFrameWholeOrUntouchedAndLosesNothingHoweverTheHostFails) {
    add_stars();
    Project project(small_sky());
    project.layers.push_back(project.layers[0]);
    project.layers[1].start = {1, 8};
    host::FaultPlan plan;
    Session session(bundle(), {.filter = plan.filter()});
    std::vector<std::unique_ptr<EffectInstance>> effects;
    for (const std::size_t layer : {0, 1}) {
        effects.push_back(std::make_unique<EffectInstance>(session, project, layer));
    }

    // What there is to fail: the calls of good frames, and those of the one that has to tell of a
    // missing suite.
    std::vector<Twin> twins;
    std::vector<host::Call> calls;
    for (const auto& effect : effects) {
        for (const Depth depth : {Depth::Bits8, Depth::Bits16, Depth::Float}) {
            for (const int index : {3, 40}) {
                twins.push_back(
                    {effect.get(), project.composition.frame_time(index), {.depth = depth}, {}});
                const Frame frame = twins.back().render();
                ASSERT_TRUE(shows_stars(frame));
                twins.back().good = frame.world.packed();
                calls = frame.calls;
            }
        }
    }
    plan.arm({host::missing_suite("PF World Suite")});
    for (const host::Call& call : twins[0].render().calls) {
        if (call.name == "sprintf") {
            calls.push_back(call);
        }
    }
    RandomFaults faults(20061, calls);
    ASSERT_EQ(faults.calls().count("sprintf"), 1U);
    ASSERT_EQ(faults.calls().count("AcquireSuite"), 1U);

    std::map<std::string, int> ends;
    process::Use early;
    const std::filesystem::path database = root / "sky.stars";
    const std::filesystem::path away = root / "sky.gone";
    int renders = 0;
    for (int i = 0; renders < kRenders; ++i) {
        SCOPED_TRACE(i);
        if (early.resident_bytes == 0 && renders > kRenders / 5) {
            early = process::use();
        }
        const Twin& twin = twins[static_cast<std::size_t>(i) % twins.size()];
        std::vector<host::CallFault> drawn = faults.draw();
        if (drawn[0].call == "sprintf") {
            // Only used to tell of a missing suite.
            drawn.push_back(host::missing_suite("PF World Suite"));
        }
        // Now and then the file is not there: an exception in the middle of rendering.
        const bool gone = i % 37 == 0;
        if (gone) {
            std::filesystem::rename(database, away);
        }
        plan.arm(drawn);
        Frame frame;
        if (i % 10 == 9) {
            // Step by step, a good frame of the other effect in between; or no render at all.
            PreRender pre = twin.effect->pre_render(twin.time, twin.options);
            plan.disarm();
            const Twin& other = twins[static_cast<std::size_t>(i + 6) % twins.size()];
            EXPECT_EQ(other.render().world.packed() == other.good, !gone);
            plan.arm(drawn);
            const bool asked = sent(pre.frame(), "PF_Cmd_SMART_PRE_RENDER");
            if (pre.renderable() && i % 20 == 9) {
                frame = twin.effect->render(pre);
            }
            pre.discard();
            const Frame& rest = pre.frame();
            frame.violations.insert(frame.violations.end(), rest.violations.begin(),
                                    rest.violations.end());
            frame.data_deletions = rest.data_deletions;
            ASSERT_EQ(frame.data_deletions, asked ? 1 : 0);
        } else {
            frame = twin.render();
        }
        plan.disarm();
        if (gone) {
            std::filesystem::rename(away, database);
        }
        ASSERT_EQ(session.live_handles(), 0U);
        for (const host::Violation& violation : frame.violations) {
            ASSERT_TRUE(is_kept_habit(violation)) << violation;
        }
        if (!frame.rendered) {
            ++ends["no render followed"];
            continue;
        }

        ++renders;
        ASSERT_EQ(frame.data_deletions, 1);
        // The render's own status never reaches the host; a missing suite of its last words does.
        ASSERT_TRUE(frame.status == 0 || frame.status == 516) << frame.status;
        if (frame.undrawn_pixels != 0U) {
            ASSERT_EQ(frame.undrawn_pixels, kPixels);
            ASSERT_TRUE(gone || any_call_failed(frame));
            ++ends["world untouched"];
        } else if (frame.world.packed() == twin.good) {
            ++ends["the good picture"];
        } else {
            ASSERT_TRUE(any_call_failed(frame));
            ++ends[shows_stars(frame) ? "another picture with stars" : "black"];
        }
    }
    const process::Use late = process::use();
    for (const auto& [name, count] : ends) {
        std::printf("  %6d  %s\n", count, name.c_str());
    }
    EXPECT_EQ(ends.size(), 5U) << "every end is reached";
    const auto& delivered = plan.delivered();
    for (const auto& [name, count] : faults.calls()) {
        EXPECT_TRUE(delivered.count(name) != 0 && delivered.at(name) >= kLeast) << name;
    }
    EXPECT_EQ(late.descriptors, early.descriptors);
    if (process::kMemoryTells) {
        // Of 8000 renders, 512 bytes each would show.
        EXPECT_LE(late.resident_bytes, early.resident_bytes + (std::size_t{4} << 20U));
    }

    // It is as good as new.
    for (const Twin& twin : twins) {
        EXPECT_TRUE(twin.render().world.packed() == twin.good);
    }
    effects.clear();
    session.close();
    for (const host::Violation& violation : session.violations()) {
        ASSERT_TRUE(is_kept_habit(violation)) << violation;
    }
}

}  // namespace
