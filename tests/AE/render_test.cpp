#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>

#include <support/catalogue.h>
#include <support/scratch.h>
#include "fake_host.h"

namespace {

using Log = std::vector<std::string>;

constexpr int kWidth = 33;
constexpr int kHeight = 17;
const std::string kHeader = support::catalogue_header(support::VERSION_1);
// The default camera stands at the origin and looks along +z, where lon is 90 degrees.
const std::string kAhead = support::catalogue_record({.lon = 90, .lat = 0});

class Rendering : public testing::Test {
protected:
    Rendering() {
        globals = new LumivarGlobals;
        host.set_default_values();
        host.has_camera = false;
    }
    ~Rendering() override {
        drop_globals();
        if (host.pre_output.pre_render_data != nullptr) {
            host.pre_output.delete_pre_render_data_func(host.pre_output.pre_render_data);
        }
    }

    void add_database(const std::string& name, const std::string& bytes) {
        write_file(folder / name, bytes);
        globals->starfiles.append((folder / name).c_str());
    }
    /// Takes the place of the file of this name; whoever has it open keeps the old one.
    void replace_database(const std::string& name, const std::string& bytes) {
        write_file(folder / "new", bytes);
        std::filesystem::rename(folder / "new", folder / name);
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
    PF_Err send(PF_Cmd cmd, void* extra = nullptr, PF_LayerDef* output = nullptr) {
        return dispatch_command(cmd, &host.in_data, &host.out_data, nullptr, output, extra);
    }
    PF_Err pre_render() { return send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra); }
    /// One level down from the dispatcher, which replaces the status.
    PF_Err smart_render() {
        host.render_input.pre_render_data = host.pre_output.pre_render_data;
        return SmartRender(&host.in_data, &host.out_data, &host.render_extra);
    }

    ScratchFolder folder;
    FakeHost host;
    std::unique_ptr<MyInstance> instance;
};

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
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            EXPECT_EQ(world.at_float(x, y).alpha, 1.0F);
        }
    }
    EXPECT_TRUE(world.margins_intact());
}

TEST_F(Rendering, FrameIsTheSameInAllDepthsUpToRounding) {
    // A few stars about the middle, bright enough for clipped, middling and dark pixels.
    std::string stars;
    for (int i = 0; i < 40; ++i) {
        stars += support::catalogue_record(
            {.lon = 70.0 + i, .lat = i % 7 - 3.0, .luminance = 0.02F * static_cast<float>(i)});
    }
    add_database("a.stars", kHeader + stars);
    host.values[5].u.cd.value = {255, 255, 40, 10};
    host.values[4].u.fs_d.value = 0.5;
    host.values[1].u.fs_d.value = 1.0;
    host.values[8].u.fs_d.value = 60.0;
    FakeWorld in_float(kWidth, kHeight, PF_PixelFormat_ARGB128);
    FakeWorld in_16(kWidth, kHeight, PF_PixelFormat_ARGB64);
    FakeWorld in_8(kWidth, kHeight, PF_PixelFormat_ARGB32);
    draw(in_float);
    draw(in_16);
    draw(in_8);
    const auto code = [](float f, float scale) {
        const float sum = 0.5F + f * scale;
        return static_cast<int>(std::fmin(std::fmax(std::trunc(sum), 0.0F), scale));
    };
    int lit = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const PF_PixelFloat f = in_float.at_float(x, y);
            const PF_Pixel16 p16 = in_16.at16(x, y);
            const PF_Pixel p8 = in_8.at8(x, y);
            EXPECT_EQ(p16.alpha, 32768);
            EXPECT_EQ(p16.red, code(f.red, 32768));
            EXPECT_EQ(p16.green, code(f.green, 32768));
            EXPECT_EQ(p16.blue, code(f.blue, 32768));
            EXPECT_EQ(p8.alpha, 255);
            EXPECT_EQ(p8.red, code(f.red, 255));
            EXPECT_EQ(p8.green, code(f.green, 255));
            EXPECT_EQ(p8.blue, code(f.blue, 255));
            lit += p8.red > 0 && p8.red != p8.blue ? 1 : 0;
        }
    }
    EXPECT_GT(lit, 20);
}

TEST_F(Rendering, DatabaseWithoutStarsIsBlackAndOpaque) {
    add_database("a.stars", kHeader);
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB32);
    draw(world);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const PF_Pixel pixel = world.at8(x, y);
            EXPECT_EQ(pixel.alpha, 255);
            EXPECT_EQ(pixel.red + pixel.green + pixel.blue, 0);
        }
    }
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

TEST_F(Rendering, DefaultChoiceTakesTheFirstFileAndReopensItEveryFrame) {
    add_database("a.stars", kHeader + kAhead);
    add_database("b.stars", kHeader);
    ASSERT_EQ(snapshot().database_index, -1);
    EXPECT_GT(middle(), 0.0F);
    EXPECT_EQ(globals->stardb_index, 0);
    replace_database("a.stars", kHeader);
    EXPECT_EQ(middle(), 0.0F) << "the new file was read";
}

TEST_F(Rendering, ChosenFileStaysOpenBetweenFrames) {
    add_database("a.stars", kHeader);
    add_database("b.stars", kHeader + kAhead);
    host.values[16].u.pd.value = 2;
    EXPECT_GT(middle(), 0.0F);
    EXPECT_EQ(globals->stardb_index, 1);
    const StarInput* open = globals->stardb.get();
    replace_database("b.stars", kHeader);
    EXPECT_GT(middle(), 0.0F) << "still the old file, from its first star";
    EXPECT_EQ(globals->stardb.get(), open);
    host.values[16].u.pd.value = 1;
    EXPECT_EQ(middle(), 0.0F);
    EXPECT_EQ(globals->stardb_index, 0);
}

TEST_F(Rendering, ChoiceBeyondTheListIsTheLastFileReopenedEveryFrame) {
    add_database("a.stars", kHeader);
    add_database("b.stars", kHeader + kAhead);
    host.values[16].u.pd.value = 99;
    EXPECT_GT(middle(), 0.0F);
    EXPECT_EQ(globals->stardb_index, 1);
    replace_database("b.stars", kHeader);
    EXPECT_EQ(middle(), 0.0F);
}

TEST_F(Rendering, NoGlobalsOrNoFilesIsAnAssertion) {
    for (int i = 0; i < 2; ++i) {
        FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB32);
        try {
            draw(world);
            ADD_FAILURE() << "nothing thrown";
        } catch (const AssertXception& failure) {
            EXPECT_STREQ(failure.expression(), "!globals->starfiles.empty()");
            EXPECT_STREQ(failure.file(), "AE/LumivarAE.cpp");
            EXPECT_EQ(failure.line(), 740);
        }
        EXPECT_TRUE(world.untouched());
        drop_globals();
    }
}

TEST_F(Rendering, UnreadableDatabaseIsThrownAndLeavesTheOpenOne) {
    add_database("a.stars", kHeader + kAhead);
    add_database("b.stars", "");
    host.values[16].u.pd.value = 1;
    EXPECT_GT(middle(), 0.0F);
    host.values[16].u.pd.value = 2;
    EXPECT_THROW(middle(), StrXception);
    EXPECT_EQ(globals->stardb_index, 0);
    host.values[16].u.pd.value = 1;
    EXPECT_GT(middle(), 0.0F);
}

TEST_F(Rendering, ForeignFileIsThrown) {
    add_database("a.stars", support::catalogue_header("LUMIVAR3") + kAhead);
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_ARGB32);
    try {
        draw(world);
        ADD_FAILURE() << "nothing thrown";
    } catch (const StrXception& failure) {
        EXPECT_EQ(
            std::string(failure.message().c_str()).rfind("error in star database file in <", 0),
            0U);
    }
    EXPECT_TRUE(world.untouched());
}

TEST_F(Rendering, UnhandledFormatLeavesTheDatabaseReadyForTheNextFrame) {
    add_database("a.stars", kHeader + kAhead);
    host.values[16].u.pd.value = 1;
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_BGRA32);
    EXPECT_THROW(draw(world), StrXception);
    EXPECT_TRUE(world.untouched());
    EXPECT_GT(middle(), 0.0F);
}

TEST_F(Rendering, NullOutputIsAnAssertion) {
    add_database("a.stars", kHeader);
    EXPECT_THROW(Lumivar_Render(snapshot(), 4, 4, PF_PixelFormat_ARGB32, nullptr), AssertXception);
}

TEST_F(Rendering, FrameThatItsImageCannotHoldIsRefusedBeforeAnythingIsAllocated) {
    add_database("a.stars", kHeader);
    FakeWorld world(1, 1, PF_PixelFormat_ARGB32);
    // 16384 x 16384 x 16 bytes are 2^32: the image's sizes would wrap to 0.
    try {
        Lumivar_Render(snapshot(), 16384, 16384, PF_PixelFormat_ARGB32, &world.world);
        ADD_FAILURE() << "nothing thrown";
    } catch (const StrXception& failure) {
        EXPECT_EQ(std::string(failure.message().c_str())
                      .rfind("a frame of 16384 x 16384 pixels is too large in <", 0),
                  0U);
    }
    EXPECT_FALSE(globals->stardb) << "refused before the database is opened";
    EXPECT_THROW(Lumivar_Render(snapshot(), -1, 4, PF_PixelFormat_ARGB32, &world.world),
                 StrXception);
    EXPECT_TRUE(world.untouched());
}

TEST(FloatImage, FitsUpToFourGibibytesLessOne) {
    EXPECT_TRUE(float_image_fits(1920, 1080));
    EXPECT_TRUE(float_image_fits(16384, 16383));
    EXPECT_FALSE(float_image_fits(16384, 16384));
    EXPECT_TRUE(float_image_fits(268435455, 1));
    EXPECT_FALSE(float_image_fits(268435456, 1));
    EXPECT_FALSE(float_image_fits(INT32_MAX, INT32_MAX));
    EXPECT_TRUE(float_image_fits(1, 268435455));
    EXPECT_FALSE(float_image_fits(1, 268435456));
    EXPECT_TRUE(float_image_fits(0, 0));
    EXPECT_TRUE(float_image_fits(5, 0));
    EXPECT_FALSE(float_image_fits(-1, 5));
    EXPECT_FALSE(float_image_fits(5, -1));
    EXPECT_FALSE(float_image_fits(-4, -4));
}

TEST_F(Rendering, ThreeControlsDoNotReachThePicture) {
    add_database("a.stars", support::catalogue_header("LUMIVAR2") + kAhead);
    FakeWorld plain(kWidth, kHeight, PF_PixelFormat_ARGB128, 0);
    draw(plain);
    host.values[12].u.bd.value = 0;
    host.values[14].u.pd.value = 0;
    host.values[15].u.bd.value = 1;
    FakeWorld other(kWidth, kHeight, PF_PixelFormat_ARGB128, 0);
    draw(other);
    EXPECT_EQ(std::memcmp(plain.world.data, other.world.data,
                          static_cast<size_t>(plain.world.rowbytes) * kHeight),
              0);
}

TEST_F(Rendering, PreRenderUnitesTheInputsArea) {
    host.pre_input.output_request.rect = {1, 2, 3, 4};
    host.pre_input.output_request.field = 1;
    host.pre_input.output_request.channel_mask = 15;
    host.pre_input.output_request.preserve_rgb_of_zero_alpha = 1;
    host.checkout_result.result_rect = {0, 0, 100, 50};
    host.checkout_result.max_result_rect = {-10, -10, 110, 60};
    host.pre_output.max_result_rect = {-20, 0, 10, 10};
    EXPECT_EQ(pre_render(), 0);
    EXPECT_EQ(
        std::memcmp(&host.layer_request, &host.pre_input.output_request, sizeof host.layer_request),
        0);
    EXPECT_EQ(host.pre_output.result_rect.right, 100);
    EXPECT_EQ(host.pre_output.result_rect.bottom, 50);
    EXPECT_EQ(host.pre_output.max_result_rect.left, -20);
    EXPECT_EQ(host.pre_output.max_result_rect.top, -10);
    EXPECT_EQ(host.pre_output.max_result_rect.right, 110);
    EXPECT_EQ(host.pre_output.max_result_rect.bottom, 60);
    EXPECT_EQ(host.pre_output.delete_pre_render_data_func, &delete_MyInstance);
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Rendering, PreRenderReadsTheControlsBeforeItChecksOutTheLayer) {
    EXPECT_EQ(pre_render(), 0);
    EXPECT_EQ(host.log.front(), "checkout_param 8");
    const auto layer =
        std::find(host.log.begin(), host.log.end(), "checkout_layer 0 0 at 100 step 50 scale 1200");
    ASSERT_NE(layer, host.log.end());
    EXPECT_LT(std::find(host.log.begin(), host.log.end(), "AEGP_GetCompShutterFrameRange comp"),
              layer);
    const auto* read = static_cast<const MyInstance*>(host.pre_output.pre_render_data);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->star_brightness, 5.0);
    EXPECT_EQ(read->cameras.len(), 1U);
}

TEST_F(Rendering, PreRenderReportsTheCheckout) {
    host.failures["checkout_layer"] = {513};
    host.pre_output.result_rect = {1, 1, 2, 2};
    EXPECT_EQ(pre_render(), 513);
    EXPECT_EQ(host.pre_output.result_rect.right, 2);
    EXPECT_NE(host.pre_output.pre_render_data, nullptr) << "the host disposes of it";
}

TEST_F(Rendering, PreRenderIsQuietAboutTheControls) {
    host.failures["checkout_param"] = {513};
    EXPECT_EQ(pre_render(), 0);
}

TEST_F(Rendering, PreRenderWithAMissingSuiteStillHandsOverItsData) {
    host.missing_suites = {"AEGP PF Interface Suite"};
    EXPECT_EQ(pre_render(), 516);
    EXPECT_NE(host.pre_output.pre_render_data, nullptr);
    EXPECT_EQ(host.pre_output.delete_pre_render_data_func, &delete_MyInstance);
    EXPECT_TRUE(host.suites_balanced());
}

namespace {

/// A pre-rendered frame of 8 bits with a star in its middle.
class SmartRendering : public Rendering {
protected:
    SmartRendering() {
        host.input_world = &input;
        host.output_world = &output;
        add_database("a.stars", kHeader + kAhead);
        EXPECT_EQ(pre_render(), 0);
        host.log.clear();
    }
    bool drawn() const { return !output.untouched() && output.at8(16, 8).red > 0; }

    // The input has a size of its own: the frame is the output's.
    FakeWorld input{8, 8, PF_PixelFormat_ARGB32};
    FakeWorld output{kWidth, kHeight, PF_PixelFormat_ARGB32};
};

const Log kGoodFrame = {"checkout_layer_pixels 0",  "checkout_output",
                        "acquire PF World Suite 2", "PF_GetPixelFormat",
                        "release PF World Suite 2", "checkin_layer_pixels 0"};

}  // namespace

TEST_F(SmartRendering, DrawsAndAsksTheHostInThisOrder) {
    EXPECT_EQ(smart_render(), 0);
    EXPECT_EQ(host.log, kGoodFrame);
    EXPECT_TRUE(drawn());
    EXPECT_TRUE(output.margins_intact());
    EXPECT_TRUE(input.untouched());
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(SmartRendering, WithoutPreRenderDataDoesNothing) {
    host.render_input.pre_render_data = nullptr;
    EXPECT_EQ(SmartRender(&host.in_data, &host.out_data, &host.render_extra), 0);
    EXPECT_EQ(host.log, Log{});
}

TEST_F(SmartRendering, FormatThatIsNotWrittenIs516WithoutAMessage) {
    input.format = PF_PixelFormat_BGRA32;
    EXPECT_EQ(smart_render(), 516);
    EXPECT_TRUE(output.untouched());
    EXPECT_STREQ(host.out_data.return_msg, "");
    EXPECT_EQ(host.log, kGoodFrame);
}

TEST_F(SmartRendering, FailedInputCheckoutStillTriesAndChecksIn) {
    host.failures["checkout_layer_pixels"] = {513};
    EXPECT_EQ(smart_render(), 516) << "there is no output world";
    EXPECT_EQ(host.log, (Log{"checkout_layer_pixels 0", "release PF World Suite 2",
                             "checkin_layer_pixels 0"}));
    EXPECT_TRUE(output.untouched());
}

TEST_F(SmartRendering, FailedOutputCheckoutUsesTheWorldLeftOver) {
    host.failures["checkout_output"] = {513};
    host.leftover_output = &output.world;
    // Drawn, but with no format to convert to.
    EXPECT_EQ(smart_render(), 516);
    EXPECT_TRUE(globals->stardb) << "the frame was drawn";
    EXPECT_TRUE(output.untouched());
}

TEST_F(SmartRendering, NullOutputIs516) {
    host.output_world = nullptr;
    EXPECT_EQ(smart_render(), 516);
    EXPECT_EQ(host.log, kGoodFrame);
}

TEST_F(SmartRendering, MissingWorldSuiteIs516WithItsMessage) {
    host.missing_suites = {"PF World Suite"};
    EXPECT_EQ(smart_render(), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Couldn't load suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
    EXPECT_TRUE(output.untouched());
    EXPECT_TRUE(globals->stardb) << "the frame was drawn all the same";
}

TEST_F(SmartRendering, FailedFormatQueryIs516) {
    host.failures["PF_GetPixelFormat"] = {512};
    EXPECT_EQ(smart_render(), 516) << "the format is none";
    EXPECT_EQ(host.log, kGoodFrame);
    EXPECT_TRUE(output.untouched());
}

TEST_F(SmartRendering, FailedCheckInIsReportedAfterAGoodFrame) {
    host.failures["checkin_layer_pixels"] = {515};
    EXPECT_EQ(smart_render(), 515);
    EXPECT_TRUE(drawn());
}

TEST_F(SmartRendering, FailedCheckInDoesNotHideTheFramesFailure) {
    host.failures["checkin_layer_pixels"] = {515};
    input.format = PF_PixelFormat_BGRA32;
    EXPECT_EQ(smart_render(), 516);
}

TEST_F(SmartRendering, ReleaseWithoutBasicSuiteHasItsOwnMessage) {
    host.in_data.pica_basicP = nullptr;
    EXPECT_EQ(smart_render(), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Couldn't release suite.");
}

TEST_F(SmartRendering, DispatcherReturnsTheDependencyHandlersZero) {
    host.render_input.pre_render_data = host.pre_output.pre_render_data;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 0);
    EXPECT_TRUE(drawn());

    input.format = PF_PixelFormat_BGRA32;
    host.render_extra.cb = &host.render_callbacks;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 0) << "also for a failed frame";
    host.failures["checkout_layer_pixels"] = {513};
    host.render_extra.cb = &host.render_callbacks;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 0);
}

TEST_F(SmartRendering, DispatcherLeavesADependencyHandleInTheRecordsSecondSlot) {
    // The check type is the first word of the pointer to the input.
    PF_SmartRenderInput* const pointer = &host.render_input;
    std::int32_t first_word = 0;
    std::memcpy(&first_word, &pointer, sizeof first_word);
    ASSERT_TRUE(first_word != 1 && first_word != 2);

    host.render_input.pre_render_data = host.pre_output.pre_render_data;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 0);
    EXPECT_EQ(host.render_extra.input, pointer);
    PF_Handle handle = nullptr;
    std::memcpy(&handle, &host.render_extra.cb, sizeof handle);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(FakeHost::handle_text(handle), "");
    EXPECT_EQ(host.handle_size(handle), 1U);
}

TEST_F(SmartRendering, MissingHandleSuiteComesBackFromTheDispatcher) {
    host.missing_suites = {"PF Handle Suite"};
    host.render_input.pre_render_data = host.pre_output.pre_render_data;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 516);
    EXPECT_TRUE(drawn());
    EXPECT_TRUE(host.suites_balanced());
}

namespace {

class PlainRendering : public Rendering {
protected:
    PF_Err render(FakeWorld& world) {
        host.output_world = &world;
        return send(PF_Cmd_RENDER, nullptr, &world.world);
    }
    void expect_fill_color() const {
        EXPECT_EQ(host.fill_color.alpha, 40);
        EXPECT_EQ(host.fill_color.red, 50);
        EXPECT_EQ(host.fill_color.green, 60);
        EXPECT_EQ(host.fill_color.blue, 70);
    }
};

}  // namespace

TEST_F(PlainRendering, FillsThroughTheSuite) {
    FakeWorld world(4, 3, PF_PixelFormat_ARGB32);
    EXPECT_EQ(render(world), 0);
    EXPECT_EQ(host.log, (Log{"acquire PF Fill Matte Suite 2", "suite fill",
                             "release PF Fill Matte Suite 2"}));
    expect_fill_color();
}

TEST_F(PlainRendering, FillsThroughTheUtilitiesUnderPremiere) {
    host.in_data.appl_id = 0x50724D72;
    FakeWorld world(4, 3, PF_PixelFormat_ARGB32);
    EXPECT_EQ(render(world), 0);
    EXPECT_EQ(host.log, Log{"utils fill"});
    expect_fill_color();
}

TEST_F(PlainRendering, ReportsTheFillsStatus) {
    FakeWorld world(4, 3, PF_PixelFormat_ARGB32);
    host.failures = {{"suite fill", {512}}, {"utils fill", {513}}};
    EXPECT_EQ(render(world), 512);
    host.in_data.appl_id = 0x50724D72;
    EXPECT_EQ(render(world), 513);
}

TEST_F(PlainRendering, PaintsARampInSixteenBits) {
    FakeWorld world(300, 260, PF_PixelFormat_ARGB64);
    EXPECT_EQ(render(world), 0);
    EXPECT_EQ(host.log, Log{"get_pixel_data16"});
    const auto widened = [](int v) {
        return static_cast<int>(std::floor((v * 32768 + 128) / 255.0));
    };
    for (int y = 0; y < 260; ++y) {
        for (int x = 0; x < 300; ++x) {
            const PF_Pixel16 pixel = world.at16(x, y);
            ASSERT_EQ(pixel.alpha, 32768);
            ASSERT_EQ(pixel.red, widened(x % 256)) << x;
            ASSERT_EQ(pixel.green, widened(y % 256)) << y;
            ASSERT_EQ(pixel.blue, widened(2 * x % 256)) << x;
        }
    }
    // By hand: (255 x 32768 + 128) / 255 is 32768.5, (32768 + 128) / 255 is 129.004.
    EXPECT_EQ(world.at16(255, 0).red, 32768);
    EXPECT_EQ(world.at16(256, 1).red, 0);
    EXPECT_EQ(world.at16(256, 1).green, 129);
    EXPECT_TRUE(world.margins_intact());
}

TEST_F(PlainRendering, ReportsARefusedAccessToThePixels) {
    host.failures["get_pixel_data16"] = {515};
    FakeWorld world(4, 3, PF_PixelFormat_ARGB64);
    EXPECT_EQ(render(world), 515);
    EXPECT_TRUE(world.untouched());
}
