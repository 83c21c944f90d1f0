// Frames through the built module: what it asks of the host, what it leaves there, and what each
// refusal comes to.
#include <AE/instance.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "built_effect.h"
#include "support/pixels.h"

namespace {

Log joined(std::initializer_list<Log> parts) {
    Log all;
    for (const Log& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

class Frames : public BuiltEffect {
protected:
    Frames() {
        add_database("a.stars", kHeader + kAhead);
        set_up();
        host.input_world = &input;
        host.output_world = &output;
    }
    /// A pre-render that must succeed, then the render alone in the log.
    PF_Err render_after_pre_render() {
        EXPECT_EQ(pre_render(), 0);
        host.log.clear();
        return smart_render();
    }
    bool drawn() const { return !output.untouched() && output.at8(16, 8).red > 0; }

    // The input has a size of its own: the frame is the output's.
    FakeWorld input{8, 8, PF_PixelFormat_ARGB32};
    FakeWorld output{kWidth, kHeight, PF_PixelFormat_ARGB32};
};

const Log kControls = {
    "checkout_param 8",  "checkout_param 9",  "checkout_param 7",  "checkout_param 6",
    "checkout_param 1",  "checkout_param 2",  "checkout_param 3",  "checkout_param 4",
    "checkout_param 5",  "checkout_param 13", "checkout_param 10", "checkout_param 14",
    "checkout_param 15", "checkout_param 12", "checkout_param 11", "checkout_param 16"};
const Log kInput = {"checkout_layer 0 0 at 100 step 50 scale 1200"};
const Log kPixels = {"checkout_layer_pixels 0", "checkout_output", "acquire PF World Suite 2",
                     "PF_GetPixelFormat"};
const Log kEnd = {"release PF World Suite 2", "checkin_layer_pixels 0"};
// The dependency handler answers the same command.
const Log kDependencies = {"acquire PF Handle Suite 2", "acquire PF ANSI Suite 1",
                           "host_new_handle 1",         "strcpy",
                           "release PF Handle Suite 2", "release PF ANSI Suite 1"};

}  // namespace

TEST_F(Frames, PreRenderAsksForControlsCameraAndLayerInThisOrder) {
    host.has_camera = true;
    EXPECT_EQ(pre_render(), 0);
    EXPECT_EQ(host.log,
              joined({kControls,
                      {"acquire AEGP PF Interface Suite 1", "AEGP_ConvertEffectToCompTime 100/1200",
                       "AEGP_GetEffectCamera", "AEGP_GetEffectLayer", "acquire AEGP Layer Suite 11",
                       "AEGP_GetLayerParentComp effect layer", "acquire AEGP Comp Suite 9",
                       "AEGP_GetItemFromComp comp", "acquire AEGP Item Suite 10",
                       "AEGP_GetItemDimensions item", "AEGP_GetCompShutterFrameRange comp",
                       "AEGP_GetLayerToWorldXform camera layer", "acquire AEGP Stream Suite 7",
                       "AEGP_GetLayerStreamValue camera layer"},
                      kInput,
                      {"release AEGP PF Interface Suite 1", "release AEGP Layer Suite 11",
                       "release AEGP Item Suite 10", "release AEGP Comp Suite 9",
                       "release AEGP Stream Suite 7"}}));
    std::vector<FakeHost::ParamCheckout> checkouts;
    for (const int id : {8, 9, 7, 6, 1, 2, 3, 4, 5, 13, 10, 14, 15, 12, 11, 16}) {
        checkouts.push_back({id, 100, 50, 1200});
    }
    EXPECT_EQ(host.checkouts, checkouts);
    EXPECT_TRUE(host.cleared_records);
    // The composition time that the host tells is what the camera and the shutter are asked for.
    EXPECT_EQ(host.camera_times, (std::vector<FakeHost::Time>{{7, 24}}));
    EXPECT_EQ(host.shutter_times, (std::vector<FakeHost::Time>{{7, 24}}));
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Frames, PreRenderPassesTheRequestOnAndUnitesTheAreas) {
    host.pre_input.output_request.rect = {1, 2, 3, 4};
    host.pre_input.output_request.field = 1;
    host.pre_input.output_request.channel_mask = 15;
    host.pre_input.output_request.preserve_rgb_of_zero_alpha = 1;
    host.checkout_result.result_rect = {0, 0, 100, 50};
    host.checkout_result.max_result_rect = {-10, -10, 110, 60};
    host.pre_output.max_result_rect = {-20, 0, 10, 10};
    EXPECT_EQ(send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra), 0);
    EXPECT_EQ(
        std::memcmp(&host.layer_request, &host.pre_input.output_request, sizeof host.layer_request),
        0);
    const PF_LRect result = {0, 0, 100, 50};
    const PF_LRect whole = {-20, -10, 110, 60};
    EXPECT_EQ(std::memcmp(&host.pre_output.result_rect, &result, sizeof result), 0);
    EXPECT_EQ(std::memcmp(&host.pre_output.max_result_rect, &whole, sizeof whole), 0);
}

TEST_F(Frames, PreRenderReportsTheRefusedLayer) {
    host.failures["checkout_layer"] = {513};
    EXPECT_EQ(pre_render(), 513);
    EXPECT_NE(host.pre_output.pre_render_data, nullptr) << "the host disposes of it";
    EXPECT_NE(host.pre_output.delete_pre_render_data_func, nullptr);
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Frames, PreRenderIsQuietAboutARefusedControl) {
    for (int nth = 1; nth <= 16; ++nth) {
        SCOPED_TRACE(nth);
        FakeHost::Failure& failure = host.failures["checkout_param"];
        failure = {513, static_cast<int>(host.checkouts.size()) + nth};
        host.log.clear();
        EXPECT_EQ(pre_render(), 0);
        // Those before it, itself, no question of the camera, and the layer.
        Log expected(kControls.begin(), kControls.begin() + nth);
        EXPECT_EQ(host.log, joined({expected, kInput}));
    }
}

TEST_F(Frames, PreRenderReportsAMissingSuiteAndHandsItsDataOver) {
    host.has_camera = true;
    for (const char* suite : {"AEGP PF Interface Suite", "AEGP Layer Suite", "AEGP Comp Suite",
                              "AEGP Item Suite", "AEGP Stream Suite"}) {
        SCOPED_TRACE(suite);
        host.missing_suites = {suite};
        host.log.clear();
        EXPECT_EQ(pre_render(), 516);
        EXPECT_NE(host.pre_output.pre_render_data, nullptr);
        EXPECT_NE(host.pre_output.delete_pre_render_data_func, nullptr);
        EXPECT_EQ(std::count(host.log.begin(), host.log.end(), kInput[0]), 0);
        EXPECT_EQ(message(), "");
        EXPECT_TRUE(host.suites_balanced());
    }
}

TEST_F(Frames, RenderDrawsAndAsksInThisOrder) {
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_EQ(host.log, joined({kPixels, kEnd, kDependencies}));
    EXPECT_TRUE(drawn());
    EXPECT_TRUE(output.margins_intact());
    EXPECT_TRUE(input.untouched());
    EXPECT_TRUE(host.suites_balanced());
    EXPECT_EQ(message(), "");
    EXPECT_EQ(host.out_data.out_flags, 0);
}

TEST_F(Frames, RenderIsTheSameInEveryDepthUpToRounding) {
    FakeWorld in_8(kWidth, kHeight, PF_PixelFormat_ARGB32);
    FakeWorld in_16(kWidth, kHeight, PF_PixelFormat_ARGB64);
    FakeWorld in_float(kWidth, kHeight, PF_PixelFormat_ARGB128);
    for (FakeWorld* world : {&in_8, &in_16, &in_float}) {
        host.input_world = host.output_world = world;
        EXPECT_EQ(render_after_pre_render(), 0);
        EXPECT_TRUE(world->margins_intact());
    }
    const auto code = [](float f, float full) {
        return static_cast<int>(std::fmin(std::trunc(0.5F + f * full), full));
    };
    int between = 0;
    support::for_each_pixel(kWidth, kHeight, [&](int x, int y) {
        const PF_PixelFloat f = in_float.at_float(x, y);
        EXPECT_EQ(f.alpha, 1.0F);
        EXPECT_EQ(in_16.at16(x, y).alpha, 32768);
        EXPECT_EQ(in_16.at16(x, y).red, code(f.red, 32768));
        EXPECT_EQ(in_8.at8(x, y).alpha, 255);
        EXPECT_EQ(in_8.at8(x, y).red, code(f.red, 255));
        between += f.red > 0.0F && f.red < 1.0F ? 1 : 0;
    });
    EXPECT_GT(between, 0);
}

TEST_F(Frames, RenderWithoutPreRenderDataDoesNothingAndARefusedCheckInNoHarm) {
    EXPECT_EQ(smart_render(), 0);
    EXPECT_EQ(host.log, kDependencies);
    EXPECT_TRUE(output.untouched());
    host.failures["checkin_layer_pixels"] = {515};
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_TRUE(drawn());
}

TEST_F(Frames, RenderThatIsRefusedAnythingReturnsZeroAndLeavesItsWorldUntouched) {
    struct Refusal {
        const char* call;
        Log log;
    };
    const Refusal refusals[] = {
        {"checkout_layer_pixels", joined({{kPixels[0]}, kEnd, kDependencies})},
        {"checkout_output", joined({{kPixels[0], kPixels[1]}, kEnd, kDependencies})},
        {"PF_GetPixelFormat", joined({kPixels, kEnd, kDependencies})},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.call);
        host.failures = {{refusal.call, {513}}};
        EXPECT_EQ(render_after_pre_render(), 0);
        EXPECT_EQ(host.log, refusal.log);
        EXPECT_TRUE(output.untouched());
        EXPECT_EQ(message(), "");
    }
    host.failures.clear();
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_TRUE(drawn()) << "the next one is well";
}

TEST_F(Frames, RenderTellsOfAMissingWorldSuite) {
    host.missing_suites = {"PF World Suite"};
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_EQ(message(), "Couldn't load suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
    EXPECT_EQ(host.log, joined({{"checkout_layer_pixels 0", "checkout_output",
                                 "acquire PF World Suite 2", "sprintf"},
                                kEnd,
                                kDependencies}));
    EXPECT_TRUE(output.untouched());
}

TEST_F(Frames, RenderOfABrokenDatabaseReturnsZeroAndLeavesItsWorldUntouched) {
    for (const std::string& bytes :
         {std::string(), support::catalogue_header("LUMIVAR3") + kAhead,
          support::catalogue_header("lumivar1") + kAhead, std::string("LUMIVAR")}) {
        SCOPED_TRACE(bytes.substr(0, 8));
        replace_database("a.stars", bytes);
        EXPECT_EQ(render_after_pre_render(), 0);
        EXPECT_TRUE(output.untouched());
        EXPECT_EQ(message(), "");
    }
    replace_database("a.stars", kHeader + kAhead);
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_TRUE(drawn());
}

TEST_F(Frames, RenderLeavesADependencyHandleInTheRecordsSecondSlot) {
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_EQ(host.render_extra.input, &host.render_input);
    PF_Handle handle = nullptr;
    std::memcpy(&handle, &host.render_extra.cb, sizeof handle);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(FakeHost::handle_text(handle), "");
    EXPECT_EQ(host.handle_size(handle), 1U);

    host.failures["host_new_handle"] = {1};
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_EQ(host.render_extra.cb, nullptr) << "null where the host has no memory";
    EXPECT_TRUE(drawn());
}

TEST_F(Frames, RenderReportsTheSuitesThatItsLastWordsNeed) {
    for (const char* suite : {"PF Handle Suite", "PF ANSI Suite"}) {
        SCOPED_TRACE(suite);
        host.missing_suites = {suite};
        EXPECT_EQ(render_after_pre_render(), 516);
        EXPECT_TRUE(drawn());
        EXPECT_EQ(host.render_extra.cb, &host.render_callbacks) << "as it was";
        EXPECT_TRUE(host.suites_balanced());
    }
}

TEST_F(Frames, ThreeControlsDoNotReachThePicture) {
    FakeWorld plain(kWidth, kHeight, PF_PixelFormat_ARGB128, 0);
    FakeWorld other(kWidth, kHeight, PF_PixelFormat_ARGB128, 0);
    host.input_world = &plain;
    host.output_world = &plain;
    EXPECT_EQ(render_after_pre_render(), 0);
    host.values[k3DStars].u.bd.value = 0;
    host.values[kTreatPixelsAs].u.pd.value = 2;
    host.values[kAnamorphicDOF].u.bd.value = 1;
    host.output_world = &other;
    EXPECT_EQ(render_after_pre_render(), 0);
    EXPECT_GT(plain.at_float(kWidth / 2, kHeight / 2).red, 0.0F);
    EXPECT_EQ(std::memcmp(plain.world.data, other.world.data,
                          static_cast<std::size_t>(plain.world.rowbytes) * kHeight),
              0);
}

namespace {

/// Hosts without smart rendering: no stars, but a sign of life.
class PlainFrames : public BuiltEffect {
protected:
    PF_Err render(FakeWorld& world) {
        host.output_world = &world;
        return send(PF_Cmd_RENDER, nullptr, &world.world);
    }
};

}  // namespace

TEST_F(PlainFrames, FillThroughTheSuiteUnderPremiereThroughTheUtilities) {
    FakeWorld world(4, 3, PF_PixelFormat_ARGB32);
    const Log suite = {"acquire PF Fill Matte Suite 2", "suite fill",
                       "release PF Fill Matte Suite 2"};
    for (const bool premiere : {false, true}) {
        host.in_data.appl_id = premiere ? 0x50724D72 : kAppID_AfterEffects;
        for (const PF_Err status : {0, 512}) {
            host.failures = {{premiere ? "utils fill" : "suite fill", {status}}};
            host.log.clear();
            host.fill_colour = {};
            EXPECT_EQ(render(world), status);
            EXPECT_EQ(host.log, premiere ? Log{"utils fill"} : suite);
            EXPECT_EQ(host.fill_colour.alpha, 40);
            EXPECT_EQ(host.fill_colour.red, 50);
            EXPECT_EQ(host.fill_colour.green, 60);
            EXPECT_EQ(host.fill_colour.blue, 70);
        }
    }
}

TEST_F(PlainFrames, ReportWhatIsRefused) {
    FakeWorld shallow(4, 3, PF_PixelFormat_ARGB32);
    host.missing_suites = {"PF Fill Matte Suite"};
    EXPECT_EQ(render(shallow), 516);
    EXPECT_TRUE(host.suites_balanced());
    FakeWorld deep(4, 3, PF_PixelFormat_ARGB64);
    host.failures["get_pixel_data16"] = {515};
    EXPECT_EQ(render(deep), 515);
    EXPECT_TRUE(deep.untouched());
}

TEST_F(PlainFrames, PaintARampInSixteenBits) {
    FakeWorld world(300, 260, PF_PixelFormat_ARGB64);
    // Under Premiere too.
    for (const A_long application : {A_long{0x50724D72}, A_long{kAppID_AfterEffects}}) {
        host.in_data.appl_id = application;
        host.log.clear();
        EXPECT_EQ(render(world), 0);
        EXPECT_EQ(host.log, Log{"get_pixel_data16"});
    }
    const auto widened = [](int v) {
        return static_cast<int>(std::floor((v * 32768 + 128) / 255.0));
    };
    support::for_each_pixel(300, 260, [&](int x, int y) {
        const PF_Pixel16 pixel = world.at16(x, y);
        ASSERT_EQ(pixel.alpha, 32768);
        ASSERT_EQ(pixel.red, widened(x % 256)) << x;
        ASSERT_EQ(pixel.green, widened(y % 256)) << y;
        ASSERT_EQ(pixel.blue, widened(2 * x % 256)) << x;
    });
    // By hand: (255 x 32768 + 128) / 255 is 32768.5, (32768 + 128) / 255 is 129.004.
    EXPECT_EQ(world.at16(255, 0).red, 32768);
    EXPECT_EQ(world.at16(256, 1).red, 0);
    EXPECT_EQ(world.at16(256, 1).green, 129);
    EXPECT_TRUE(world.margins_intact());
}
