// Ten thousand frames in a host that fails at random.
#include <gtest/gtest.h>
#include <host/errors.h>
#include <host/faults.h>
#include <host/instance.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "process.h"
#include "starry.h"

namespace {

using namespace starry;
using host::acquire_call;
using host::CallFault;
using host::Depth;
using host::EffectInstance;
using host::FaultPlan;
using host::Frame;
using host::PreRender;
using host::Project;
using host::RandomFaults;
using host::RenderOptions;
using host::Session;
using host::Track;

constexpr int kRenders = 10000;
constexpr int kLeast = 50;
constexpr std::int32_t kBgra8 = 0x61726762;  // the 8-bit format of Premiere Pro
/// What hosts answer, and what none should. Without 516, with which the host refuses what makes no
/// sense: those refusals must be told from the faults.
const std::vector<std::int32_t> kStatuses = {1, 4, 13, 512, 513, 517, 518, -1, 0x53214664};

std::set<std::string> failed_calls(const Frame& frame) {
    std::set<std::string> failed;
    for (const host::Call& call : frame.calls) {
        if (call.status != 0 && call.name.rfind("PF_Cmd_", 0) != 0) {
            // An acquisition by its suite: name="...".
            const std::size_t begin = call.arguments.find('"') + 1;
            failed.insert(call.name != "AcquireSuite"
                              ? call.name
                              : acquire_call(call.arguments.substr(
                                    begin, call.arguments.find('"', begin) - begin)));
        }
    }
    return failed;
}

bool sent(const Frame& frame, const std::string& command) {
    for (const host::Call& call : frame.calls) {
        if (call.name == command) {
            return true;
        }
    }
    return false;
}

bool any_of(const std::set<std::string>& failed, const std::set<std::string>& names) {
    for (const std::string& name : names) {
        if (failed.count(name) != 0) {
            return true;
        }
    }
    return false;
}

bool all_of(const std::set<std::string>& failed, const std::set<std::string>& names) {
    for (const std::string& name : failed) {
        if (names.count(name) == 0) {
            return false;
        }
    }
    return true;
}

/// Without these there is no world to draw on, or no telling how.
const std::set<std::string> kNeededForPixels = {"checkout_layer_pixels", "checkout_output",
                                                acquire_call("PF World Suite"),
                                                "PF_GetPixelFormat"};
/// These come after the pixels.
const std::set<std::string> kAfterPixels = {"checkin_layer_pixels",
                                            "ReleaseSuite",
                                            "host_new_handle",
                                            "strcpy",
                                            "sprintf",
                                            acquire_call("PF Handle Suite"),
                                            acquire_call("PF ANSI Suite")};

/// Things given back that the effect never got, deliberately: whatever failed before, it returns
/// all. Hosts refuse that without harm.
std::vector<std::string> kept_habits(const Frame& frame) {
    std::vector<std::string> habits;
    bool first_param = true;
    bool world_suite = false;
    bool pixels = false;
    for (const host::Call& call : frame.calls) {
        const bool done = call.status == 0;
        if (call.name == "checkout_param" && std::exchange(first_param, false) && !done) {
            habits.push_back("checkin_param: null, or nothing is checked out");
        }
        pixels = pixels || (call.name == "checkout_layer_pixels" && done);
        world_suite = world_suite || (call.name == "AcquireSuite" && done &&
                                      call.arguments == "name=\"PF World Suite\" version=2");
        if (call.name == "ReleaseSuite" && !world_suite &&
            call.arguments == "name=\"PF World Suite\" version=2") {
            habits.push_back("ReleaseSuite: name=\"PF World Suite\" version=2 is not held");
        }
        if (call.name == "checkin_layer_pixels" && !pixels) {
            habits.push_back("checkin_layer_pixels: the id 0 is not checked out");
        }
        // A call that fails by the plan is not looked at by the host.
        if (call.name.rfind("checkin_", 0) == 0 && !habits.empty() && call.status != 516 &&
            habits.back().rfind(call.name, 0) == 0) {
            habits.pop_back();
        }
    }
    return habits;
}

std::vector<std::byte> bytes(const Frame& frame) {
    std::vector<std::byte> all;
    const std::size_t row = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(bytes_per_pixel(frame.world.depth()));
    for (int y = 0; y < frame.world.height(); ++y) {
        all.insert(all.end(), frame.world.row(y), frame.world.row(y) + row);
    }
    return all;
}

/// Whether any pixel differs from another: stars on black.
bool shows_stars(const Frame& frame) {
    const std::vector<std::byte> all = bytes(frame);
    const auto pixel = static_cast<std::size_t>(bytes_per_pixel(frame.world.depth()));
    for (std::size_t at = pixel; at + pixel <= all.size(); at += pixel) {
        if (std::memcmp(&all[0], &all[at], pixel) != 0) {
            return true;
        }
    }
    return false;
}

using Counts = std::map<std::string, int, std::less<>>;

void print(const char* title, const Counts& counts) {
    std::printf("%s\n", title);
    for (const auto& [name, count] : counts) {
        std::printf("  %6d  %s\n", count, name.c_str());
    }
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

class FaultSoak : public Lumivar {
protected:
    FaultSoak() { add_stars(); }

    host::SessionOptions faulty(host::Application application = host::Application::AfterEffects) {
        host::SessionOptions options;
        options.application = application;
        options.filter = plan.filter();
        return options;
    }

    FaultPlan plan;
};

/// One kind of frame, and what it looks like when nothing fails.
struct Twin {
    std::size_t effect;
    int index;
    Depth depth;
    std::vector<std::byte> good;
};

TEST_F(FaultSoak, LeavesEveryFrameWholeOrUntouchedAndLosesNothing) {
    Project project(small_sky());
    project.layers.push_back(project.layers[0]);
    project.layers[1].start = {1, 8};
    Session session(bundle(), faulty());
    const auto effect = [&](std::size_t layer) {
        return std::make_unique<EffectInstance>(session, project, layer);
    };
    std::vector<std::unique_ptr<EffectInstance>> effects;
    effects.push_back(effect(0));
    effects.push_back(effect(1));

    // What there is to fail: the calls of good frames, and those of the one that has to tell of a
    // missing suite.
    std::vector<Twin> twins;
    std::vector<host::Call> calls;
    for (const std::size_t which : {0U, 1U}) {
        for (const Depth depth : {Depth::Bits8, Depth::Bits16, Depth::Float}) {
            for (const int index : {3, 40}) {
                RenderOptions options;
                options.depth = depth;
                const Frame frame =
                    effects[which]->render(project.composition.frame_time(index), options);
                ASSERT_TRUE(shows_stars(frame));
                twins.push_back({which, index, depth, bytes(frame)});
                calls = frame.calls;
            }
        }
    }
    plan.arm({host::missing_suite("PF World Suite")});
    for (host::Call& call : effects[0]->render(project.composition.frame_time(3)).calls) {
        if (call.name == "sprintf") {
            calls.push_back(call);
        }
    }
    RandomFaults faults(20061, calls, kStatuses);
    ASSERT_EQ(faults.calls().count("sprintf"), 1U);
    ASSERT_EQ(faults.calls().count("AcquireSuite"), 1U);

    Counts ends;
    std::size_t habits = session.violations().size();  // of the frame without the suite
    process::Use early;
    const std::filesystem::path database = root / "sky.stars";
    const std::filesystem::path away = root / "sky.gone";
    int frames = 0;
    int renders = 0;
    Counts delivered;
    for (int i = 0; renders < kRenders; ++i) {
        SCOPED_TRACE(i);
        ++frames;
        if (early.resident_bytes == 0 && renders > kRenders / 5) {
            early = process::use();
        }
        const Twin& twin = twins[static_cast<std::size_t>(i) % twins.size()];
        EffectInstance& instance = *effects[twin.effect];
        RenderOptions options;
        options.depth = twin.depth;
        const host::Time time = project.composition.frame_time(twin.index);
        std::vector<CallFault> drawn = faults.draw();
        if (drawn[0].call == "sprintf") {
            // Only used to tell of a missing suite.
            drawn.push_back(host::missing_suite("PF World Suite"));
        }
        // Now and then the file is not there: an exception in the middle of rendering.
        const bool gone = i % 37 == 0;
        if (gone) {
            std::filesystem::rename(database, away);
        }
        const auto disarm = [&] {
            if (!gone) {
                for (const auto& [name, count] : plan.delivered_now()) {
                    delivered[name] += count;
                }
            }
            plan.disarm();
        };
        plan.arm(drawn);
        Frame frame;
        int deletions = 0;
        bool stepped = false;
        if (i % 10 == 9) {
            // Step by step, a good frame of the other effect in between; or no render at all.
            PreRender pre = instance.pre_render(time, options);
            disarm();
            const Twin& other = twins[static_cast<std::size_t>(i + 6) % twins.size()];
            options.depth = other.depth;
            const Frame between =
                effects[other.effect]->render(project.composition.frame_time(other.index), options);
            EXPECT_EQ(bytes(between) == other.good, !gone);
            plan.arm(drawn);
            if (pre.renderable() && i % 20 == 9) {
                frame = instance.render(pre);
                pre.discard();
                deletions = pre.frame().data_deletions;
            } else {
                pre.discard();
                deletions = pre.frame().data_deletions;
                EXPECT_EQ(deletions, sent(pre.frame(), "PF_Cmd_SMART_PRE_RENDER") ? 1 : 0);
                ASSERT_EQ(joined(pre.frame().violations), joined(kept_habits(pre.frame())));
                habits += kept_habits(pre.frame()).size();
                stepped = true;
            }
        } else {
            frame = instance.render(time, options);
            deletions = frame.data_deletions;
        }
        disarm();
        if (gone) {
            std::filesystem::rename(away, database);
        }
        ASSERT_EQ(session.live_handles(), 0U);
        if (!stepped) {
            ASSERT_EQ(joined(frame.violations), joined(kept_habits(frame)));
            habits += frame.violations.size();
        }
        ASSERT_EQ(session.violations().size(), habits) << session.violations().back();
        if (!frame.rendered) {
            ++ends["no render followed"];
            continue;
        }

        ++renders;
        ASSERT_EQ(deletions, 1);
        const std::set<std::string> failed = failed_calls(frame);
        // A choice that could not be read is the first database, which is open still.
        const bool unreadable = gone && failed.count("checkout_param") == 0;
        const bool untouched = unreadable || any_of(failed, kNeededForPixels);
        ASSERT_EQ(frame.undrawn_pixels, untouched ? 32U * 18U : 0U);
        // The render's own status never reaches the host; a missing suite of its last words does.
        ASSERT_TRUE(frame.status == 0 || frame.status == 516) << frame.status;
        const bool speechless =
            any_of(failed, {acquire_call("PF Handle Suite"), acquire_call("PF ANSI Suite")});
        ASSERT_EQ(frame.status == 516, speechless);
        if (untouched) {
            ++ends["world untouched"];
        } else if (all_of(failed, kAfterPixels)) {
            ASSERT_TRUE(bytes(frame) == twin.good);
            ++ends["the good picture"];
        } else {
            ++ends[shows_stars(frame) ? "another picture with stars" : "black"];
        }
    }
    const process::Use late = process::use();
    std::printf("%d frames, %d of them rendered\n", frames, renders);
    print("frames by their end:", ends);
    print("faults delivered on frames that show stars when nothing fails:", delivered);
    for (const auto& [name, count] : faults.calls()) {
        EXPECT_GE(delivered[name], kLeast) << name;
    }
    EXPECT_EQ(late.descriptors, early.descriptors);
    if (process::kMemoryTells) {
        // Of 8000 renders, 512 bytes each would show.
        EXPECT_LE(late.resident_bytes, early.resident_bytes + (std::size_t{4} << 20U));
    }

    // It is as good as new.
    for (const Twin& twin : twins) {
        RenderOptions options;
        options.depth = twin.depth;
        const Frame frame =
            effects[twin.effect]->render(project.composition.frame_time(twin.index), options);
        EXPECT_TRUE(bytes(frame) == twin.good);
    }
    effects.clear();
    session.close();
    EXPECT_EQ(session.violations().size(), habits);
}

/// Calls that no star frame makes: those of set-up, of the host's questions and of plain renders.
TEST_F(FaultSoak, ComesThroughFailingSetUpsQuestionsAndPlainRenders) {
    using host::Application;
    Counts outcomes;
    host::Scene scene = small_sky();
    scene.controls.clear();  // their names may fail to be declared
    RenderOptions eight;
    eight.depth = Depth::Bits8;
    for (const Application application : {Application::AfterEffects, Application::Premiere}) {
        const bool premiere = application == Application::Premiere;
        std::vector<host::Call> calls;
        {
            Session session(bundle(), faulty(application));
            session.about();
            session.dependencies(1);
            Frame frame = session.render(scene, {0, 24}, eight);
            session.close();
            calls = session.calls();
            if (premiere) {
                calls.insert(calls.end(), frame.calls.begin(), frame.calls.end());
            }
        }
        RandomFaults faults(premiere ? 7 : 8, calls, kStatuses);
        Counts before = plan.delivered();
        for (int i = 0; i < 120 * static_cast<int>(faults.calls().size()); ++i) {
            SCOPED_TRACE(i);
            plan.arm(faults.draw(1));
            try {
                Session session(bundle(), faulty(application));
                const auto quietly = [](const auto& question) {
                    try {
                        question();
                    } catch (const host::EffectError& error) {
                        EXPECT_NE(error.status(), 0);
                    }
                };
                quietly([&] { session.about(); });
                quietly([&] { session.dependencies(1); });
                std::vector<std::string> habits;
                // The effect gets no pixels of a format whose declaration failed.
                const std::vector<std::int32_t>& formats = session.declared_pixel_formats();
                const bool declared =
                    formats.empty() || std::count(formats.begin(), formats.end(), kBgra8) != 0;
                if (premiere && !declared) {
                    EXPECT_THROW(session.render(scene, {0, 24}, eight), host::FrameError);
                } else if (premiere) {
                    const Frame frame = session.render(scene, {0, 24}, eight);
                    habits = kept_habits(frame);
                    const bool filled = frame.rendered && failed_calls(frame).count("fill") == 0;
                    EXPECT_EQ(frame.undrawn_pixels == 0 && frame.rendered, filled);
                    EXPECT_EQ(frame.rendered && frame.status != 0,
                              failed_calls(frame).count("fill") != 0);
                }
                EXPECT_EQ(session.live_handles(), 0U);
                session.close();
                ASSERT_EQ(joined(session.violations()), joined(habits));
                ++outcomes["set up"];
            } catch (const host::EffectError& error) {
                ASSERT_NE(error.status(), 0);
                ++outcomes["refused"];
            }
        }
        plan.disarm();
        Counts now;
        for (const auto& [name, count] : faults.calls()) {
            const auto delivered = plan.delivered().find(name);
            now[name] =
                (delivered == plan.delivered().end() ? 0 : delivered->second) - before[name];
            EXPECT_GE(now[name], kLeast) << name;
        }
        print(premiere ? "delivered in Premiere:" : "delivered in After Effects:", now);
    }
    print("sessions:", outcomes);
    EXPECT_GT(outcomes["set up"], 0);
    EXPECT_GT(outcomes["refused"], 0);
}

}  // namespace
