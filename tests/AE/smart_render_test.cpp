// The render commands, and what they ask of the host.
#include "rendering_fixture.h"

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
