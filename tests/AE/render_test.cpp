// From a snapshot to pixels, and the status of a smart render, which the dispatcher replaces. Which
// database is drawn is in chosen_database_test, what the host is asked in frames_test.
#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <support/expect_throw.h>
#include <support/faults.h>
#include <support/scratch.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "fake_host.h"
#include "star_ahead.h"
#include "support/pixels.h"

namespace {

/// Star databases, controls and a snapshot of them.
class Rendering : public testing::Test {
protected:
    Rendering() {
        globals = new LumivarGlobals;
        host.set_default_values();
        host.has_camera = false;
    }
    ~Rendering() override { drop_globals(); }

    void add_database(const std::string& name, const std::string& bytes) {
        write_file(folder / name, bytes);
        globals->starfiles.append((folder / name).c_str());
    }
    /// A snapshot of the host's controls.
    const MyInstance& snapshot() {
        AEGP_SuiteHandler suites(&host.basic);
        instance = std::make_unique<MyInstance>();
        get_params(&host.in_data, *instance, suites);
        return *instance;
    }
    void draw(FakeWorld& world) {
        Lumivar_Render(snapshot(), world.world.width, world.world.height, world.format,
                       &world.world);
    }
    /// Red of the pixel in the middle, in float.
    float middle() {
        FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
        draw(world);
        return world.at_float(kWidth / 2, kHeight / 2).red;
    }

    ScratchFolder folder;
    FakeHost host;
    std::unique_ptr<MyInstance> instance;
};

std::string without_blanks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/// How the compiler spells `Lumivar_Render`, which refuses a null output itself; without blanks.
std::string rendering_function() {
    try {
        Lumivar_Render(MyInstance(), 4, 4, PF_PixelFormat_ARGB32, nullptr);
    } catch (const AssertXception& failure) {
        return without_blanks(failure.function());
    }
    ADD_FAILURE() << "a null output was taken";
    return "";
}

}  // namespace

TEST_F(Rendering, StarAheadLightsTheMiddleOnOpaqueBlack) {
    add_database("a.stars", kHeader + kAhead);
    // Spots of a pixel: the corners stay black.
    host.values[8].u.fs_d.value = 60.0;
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
    draw(world);
    const PF_PixelFloat middle = world.at_float(kWidth / 2, kHeight / 2);
    EXPECT_GT(middle.red, 0.1F);
    EXPECT_EQ(middle.red, middle.green);
    EXPECT_EQ(middle.red, middle.blue);
    for (const auto& [x, y] : {std::pair(0, 0), {kWidth - 1, 0}, {0, kHeight - 1}}) {
        EXPECT_EQ(world.at_float(x, y).red, 0.0F);
    }
    support::for_each_pixel(kWidth, kHeight,
                            [&](int x, int y) { EXPECT_EQ(world.at_float(x, y).alpha, 1.0F); });
    EXPECT_TRUE(world.margins_intact());
}

TEST_F(Rendering, DatabaseWithoutStarsIsBlackAndOpaque) {
    add_database("a.stars", kHeader);
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB32);
    draw(world);
    support::for_each_pixel(kWidth, kHeight, [&](int x, int y) {
        const PF_Pixel pixel = world.at8(x, y);
        EXPECT_EQ(pixel.alpha, 255);
        EXPECT_EQ(pixel.red + pixel.green + pixel.blue, 0);
    });
}

TEST_F(Rendering, AllStarsOfTheFileAreDrawn) {
    // The first and the last record count: 20 degrees to the left and right of straight ahead are
    // 3.2 x tan 20 = 1.16 halves of the frame's height from the middle.
    add_database("a.stars", kHeader + support::catalogue_record({.lon = 110, .lat = 0}) +
                                support::catalogue_record({.lon = 70, .lat = 0}));
    host.values[8].u.fs_d.value = 60.0;
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB128);
    draw(world);
    float left = 0;
    float right = 0;
    for (int x = 0; x < kWidth / 2; ++x) {
        left = std::max(left, world.at_float(x, kHeight / 2).red);
        right = std::max(right, world.at_float(kWidth - 1 - x, kHeight / 2).red);
    }
    EXPECT_GT(left, 0.01F);
    EXPECT_GT(right, 0.01F);
}

TEST_F(Rendering, SetUpNotesThePathsAndLeavesNoDatabaseOpen) {
    write_file(folder / "a.stars", kHeader);
    PF_OutData out_data = {};
    EXPECT_EQ(find_star_databases(folder.path().c_str(), *globals, &out_data), 0);
    ASSERT_EQ(globals->starfiles.len(), 1U);
    EXPECT_EQ(std::string(globals->starfiles[0].c_str()), folder / "a.stars");
    EXPECT_EQ(globals->stardb_index, -99);
    EXPECT_FALSE(globals->stardb);
}

TEST_F(Rendering, FileThatCannotBeClosedIsNotTakenForTheNextOne) {
    add_database("star.stars", kHeader + kAhead);
    add_database("dark.stars", kHeader);
    const auto middle_of = [this](int choice) {
        host.values[16].u.pd.value = choice;
        return middle();
    };
    EXPECT_GT(middle_of(1), 0.0F);
    {
        const Fault<&OSAPI::MappingCalls::munmap> stuck(EINVAL);
        const std::string message = thrown_message([&] { middle_of(2); });
        EXPECT_EQ(message.rfind(with_error("munmap", EINVAL), 0), 0U) << message;
    }
    EXPECT_GT(middle_of(1), 0.0F) << "the file with the star again, not the dark one";
    EXPECT_EQ(middle_of(2), 0.0F);
}

TEST_F(Rendering, NoGlobalsOrNoFilesIsAnAssertion) {
    for (int i = 0; i < 2; ++i) {
        FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB32);
        try {
            draw(world);
            ADD_FAILURE() << "nothing thrown";
        } catch (const AssertXception& failure) {
            EXPECT_STREQ(failure.expression(), "!globals->starfiles.empty()");
            EXPECT_EQ(without_blanks(failure.function()), rendering_function());
            EXPECT_STREQ(failure.file(), "AE/LumivarAE.cpp");
            EXPECT_EQ(failure.line(), 740);
        }
        EXPECT_TRUE(world.untouched());
        drop_globals();
    }
}

TEST_F(Rendering, FrameThatItsImageCannotHoldIsRefusedBeforeAnythingIsAllocated) {
    add_database("a.stars", kHeader);
    FakeWorld world(1, 1, PF_PixelFormat_ARGB32);
    // 16384 x 16384 x 16 bytes are 2^32: the image's sizes would wrap to 0.
    const std::string message = thrown_message(
        [&] { Lumivar_Render(snapshot(), 16384, 16384, PF_PixelFormat_ARGB32, &world.world); });
    EXPECT_EQ(message.rfind("a frame of 16384 x 16384 pixels is too large in <", 0), 0U);
    EXPECT_FALSE(globals->stardb) << "refused before the database is opened";
    EXPECT_THROW(Lumivar_Render(snapshot(), -1, 4, PF_PixelFormat_ARGB32, &world.world),
                 StrXception);
    EXPECT_TRUE(world.untouched());
}

TEST(FloatImage, FitsUpToFourGibibytesLessOne) {
    constexpr std::pair<int, int> kFits[] = {{1920, 1080},   {16384, 16383}, {268435455, 1},
                                             {1, 268435455}, {0, 0},         {5, 0}};
    for (const auto& [width, height] : kFits) {
        EXPECT_TRUE(float_image_fits(width, height)) << width << " x " << height;
    }
    constexpr std::pair<int, int> kTooLarge[] = {
        {16384, 16384}, {268435456, 1}, {1, 268435456}, {INT32_MAX, INT32_MAX},
        {-1, 5},        {5, -1},        {-4, -4}};
    for (const auto& [width, height] : kTooLarge) {
        EXPECT_FALSE(float_image_fits(width, height)) << width << " x " << height;
    }
}

// --- the status of a smart render --------------------------------------------------------------

namespace {

/// A pre-rendered frame of 8 bits with a star in its middle.
class SmartRendering : public Rendering {
protected:
    SmartRendering() {
        host.input_world = &input;
        host.output_world = &output;
        add_database("a.stars", kHeader + kAhead);
        EXPECT_EQ(SmartPreRender(&host.in_data, &host.out_data, &host.pre_extra), 0);
        host.render_input.pre_render_data = host.pre_output.pre_render_data;
    }
    ~SmartRendering() override { delete_MyInstance(host.pre_output.pre_render_data); }

    PF_Err smart_render() { return SmartRender(&host.in_data, &host.out_data, &host.render_extra); }

    // The input has a size of its own: the frame is the output's.
    FakeWorld input{8, 8, PF_PixelFormat_ARGB32};
    FakeWorld output{kWidth, kHeight, PF_PixelFormat_ARGB32};
};

}  // namespace

TEST_F(SmartRendering, OfAGoodFrameIsZeroUnlessTheCheckInFails) {
    for (const PF_Err status : {0, 515}) {
        FakeWorld fresh(kWidth, kHeight, PF_PixelFormat_ARGB32);
        host.output_world = &fresh;
        host.failures["checkin_layer_pixels"] = {status};
        EXPECT_EQ(smart_render(), status);
        EXPECT_GT(fresh.at8(16, 8).red, 0);
        EXPECT_FALSE(fresh.untouched());
    }
    host.output_world = &output;
    host.render_input.pre_render_data = nullptr;
    host.log.clear();
    EXPECT_EQ(smart_render(), 0) << "without a snapshot";
    EXPECT_EQ(host.log, Log{});
    EXPECT_TRUE(output.untouched());
}

TEST_F(SmartRendering, ThatFailsIs516AndLeavesTheOutputUntouched) {
    const std::pair<const char*, std::function<void()>> kinds[] = {
        {"a format that is not written", [this] { input.format = PF_PixelFormat_BGRA32; }},
        {"that and a refused check-in",
         [this] {
             input.format = PF_PixelFormat_BGRA32;
             host.failures["checkin_layer_pixels"] = {515};
         }},
        {"no input", [this] { host.failures["checkout_layer_pixels"] = {513}; }},
        // The world left over is drawn into, but there is no format to convert to.
        {"no output but one left over",
         [this] {
             host.failures["checkout_output"] = {513};
             host.leftover_output = &output.world;
         }},
        {"a null output", [this] { host.output_world = nullptr; }},
        {"no format", [this] { host.failures["PF_GetPixelFormat"] = {512}; }},
        {"no world suite", [this] { host.missing_suites = {"PF World Suite"}; }},
    };
    for (const auto& [name, arrange] : kinds) {
        SCOPED_TRACE(name);
        host.failures.clear();
        host.output_world = &output;
        host.leftover_output = nullptr;
        input.format = PF_PixelFormat_ARGB32;
        arrange();
        const bool has_output =
            host.output_world != nullptr && host.failures.count("checkout_layer_pixels") == 0;
        globals->stardb.reset();
        globals->stardb_index = -99;
        EXPECT_EQ(smart_render(), 516);
        EXPECT_TRUE(output.untouched());
        EXPECT_EQ(static_cast<bool>(globals->stardb), has_output) << "drawn all the same";
    }
}

TEST_F(SmartRendering, ReleaseWithoutBasicSuiteHasItsOwnMessage) {
    host.in_data.pica_basicP = nullptr;
    EXPECT_EQ(smart_render(), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Couldn't release suite.");
}
