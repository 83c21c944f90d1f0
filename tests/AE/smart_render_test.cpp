// The status of a smart render, one level below the dispatcher, which replaces it.
#include "rendering_fixture.h"

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
