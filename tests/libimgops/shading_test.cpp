#include <gtest/gtest.h>
#include <libimgops/projection.h>
#include <libimgops/streak.h>

#include <cmath>
#include <limits>

#include "star_colour.h"
#include "star_scene.h"
#include "support/expect_throw.h"

namespace {

using namespace star_scene;
using support::CatalogueStar;
using support::GuardedFrame;

const op_stars_projection kUnknown = static_cast<op_stars_projection>(3);

/// Draws one star through the given cameras into `frame` and returns what the renderer says.
bool shade(GuardedFrame& frame, const StarRendererData& data, const CatalogueStar& star,
           std::initializer_list<camera> samples = {facing_x()},
           const char* version = support::kVersion1) {
    StarFrame one(data, {star}, samples, version);
    one.fb = frame.view();
    const bool drew = one.renderer().do_render_star(one.input.next());
    EXPECT_TRUE(frame.guards_intact());
    return drew;
}

/// Luminance of the pixel under the star: red of a white star, whose energy is its luminance.
float peak_at(const StarRendererData& data, float luminance) {
    GuardedFrame frame(kWidth, kHeight);
    CatalogueStar star;
    star.luminance = luminance;
    shade(frame, data, star);
    return frame.r(kCentreX, kCentreY);
}

/// The colour of the pixel under a star of luminance 1.
Color3 colour(const StarRendererData& data, unsigned char r, unsigned char g, unsigned char b) {
    GuardedFrame frame(kWidth, kHeight);
    CatalogueStar star;
    star.r = r;
    star.g = g;
    star.b = b;
    EXPECT_TRUE(shade(frame, data, star));
    return {frame.r(kCentreX, kCentreY), frame.g(kCentreX, kCentreY), frame.b(kCentreX, kCentreY)};
}

/// The transfer function of the sRGB standard, in double, from its published constants.
double standard_sRGB(int code) {
    const double x = code / 255.0;
    return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
}

/// Where a star at (lon, lat) without distance lands through `cam`, and whether it is visible.
bool place(const StarRendererData& data, const camera& cam, double lon, double lat, Vector2& out) {
    return world_to_screen(lon, lat, -1, 0, projection_matrix(cam, Persp), data.projection, kWidth,
                           kHeight, data.window_x0, data.window_x1, data.window_y0, data.window_y1,
                           out);
}

}  // namespace

TEST(Colour, DecodesEveryCodeAsSRGB) {
    EXPECT_EQ(sRGB_to_float(0), 0.0F);
    // The linear branch ends between codes 10 and 11: 10 / 255 / 12.92.
    EXPECT_NEAR(sRGB_to_float(10), 0.0030353, 5e-8);
    EXPECT_NEAR(sRGB_to_float(255), 1.0, 3e-7);
    for (int code = 0; code < 256; ++code) {
        const double expected = standard_sRGB(code);
        // Some five roundings of 6e-8, grown by the power of 2.4.
        EXPECT_NEAR(sRGB_to_float(static_cast<unsigned char>(code)), expected, 8e-7 * expected)
            << code;
    }
}

TEST(Colour, BreaksAtTheOlderPoint) {
    // 0.04 lies between the older breakpoint and the newer one: the power, not the line 0.0030960.
    EXPECT_NEAR(sRGB_decode(0.04F), std::pow(0.095 / 1.055, 2.4), 1e-9);
    EXPECT_EQ(sRGB_decode(0.03928F), 0.03928F * 0.07739938F);
    const float above = std::nextafter(0.03928F, 1.0F);
    EXPECT_NE(sRGB_decode(above), above * 0.07739938F);
}

TEST(Colour, BlendsExactlyAtBothEnds) {
    const Color3 a(0.1F, 0.7F, 1e8F), b(0.3F, -5.0F, 1.0F);
    const Color3 at_a = lerp(a, b, 0), at_b = lerp(a, b, 1), beyond = lerp(a, b, 2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(at_a[i], a[i]);
        EXPECT_EQ(at_b[i], b[i]) << "a + (b - a) t would lose the small end";
        EXPECT_EQ(beyond[i], -a[i] + b[i] * 2);
    }
}

// The threshold is held against the catalogue's own luminance, in double precision.
TEST(Luminance, IsThatAboveTheThresholdBiasedThenLimited) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const double tenth = static_cast<double>(0.1F);
    const struct {
        double threshold, bias_exponent, most;
        float luminance, peak, tolerance;
    } rows[] = {{0, 1, 1000, 0.3F, 0.3F, 0},
                {0.25, 1, 1000, 0.25F, 0.25F, 0},
                {0.25, 1, 1000, std::nextafter(0.25F, 0.0F), 0, 0},
                // The single-precision 0.1 is a little above the double one.
                {0.1, 1, 1000, 0.1F, 0.1F, 0},
                {std::nextafter(tenth, 1.0), 1, 1000, 0.1F, 0, 0},
                // Below the threshold, or above it, after the bias only.
                {0.4, 2, 1000, 0.5F, 0.25F, 0},
                {0.4, 0.5, 1000, 0.25F, 0, 0},
                {0, 0.5, 1000, 0.49F, 0.7F, 1e-7F},
                {0, 0.5, 0.6, 0.49F, 0.6F, 0},
                {0, 0.5, 0.6, 0.25F, 0.5F, 1e-7F},
                // A ceiling below the threshold is for all that pass it.
                {0.5, 1, 0.125, 0.5F, 0.125F, 0},
                {0.5, 1, 0.125, 0.75F, 0.125F, 0},
                {0.5, 1, 0.125, 40, 0.125F, 0},
                {0.5, 1, 0.125, kInf, 0.125F, 0},
                {0, kNone, 1000, 0.5F, 0, 0}};
    for (const auto& row : rows) {
        StarRendererData data = plain_settings();
        data.threshold = row.threshold;
        data.bias_exponent = row.bias_exponent;
        data.max_luminance = row.most;
        EXPECT_NEAR(peak_at(data, row.luminance), row.peak, row.tolerance)
            << row.luminance << " with threshold " << row.threshold << ", bias "
            << row.bias_exponent << ", at most " << row.most;
    }
}

TEST(Threshold, ComesBeforeEverythingElse) {
    StarRendererData data = plain_settings();
    data.threshold = 0.5;
    data.projection = kUnknown;
    CatalogueStar star;
    GuardedFrame frame(kWidth, kHeight);
    star.luminance = 0.49F;
    EXPECT_FALSE(shade(frame, data, star)) << "must not be projected";
    star.luminance = 0.5F;
    const std::string message = thrown_message([&] { shade(frame, data, star); });
    EXPECT_EQ(message.find("unknown projection in <"), 0U) << message;
    EXPECT_TRUE(frame.is_blank());
}

TEST(Threshold, LetsNotANumberPass) {
    StarRendererData data = plain_settings();
    data.threshold = 0.5;
    CatalogueStar star;
    star.luminance = std::numeric_limits<float>::quiet_NaN();
    GuardedFrame frame(kWidth, kHeight);
    EXPECT_FALSE(shade(frame, data, star)) << "no light in the end";
    EXPECT_TRUE(frame.is_blank());
    data.projection = kUnknown;
    EXPECT_NE(thrown_message([&] { shade(frame, data, star); }), "");
}

// The star has the codes 200, 100 and 50, the tint is 0.5, 0.25 and 0.75 as it is, not decoded.
TEST(Colour, IsTintedThenMovedFromMidGrey) {
    const double own[3] = {standard_sRGB(200), standard_sRGB(100), standard_sRGB(50)};
    const float tint[3] = {0.5F, 0.25F, 0.75F};
    for (const double strength : {0.0, 1.0, 0.25, 2.0}) {
        for (const double saturation : {1.0, 0.0, 2.0, 0.5}) {
            StarRendererData data = plain_settings();
            data.tint_color = {tint[0], tint[1], tint[2]};
            data.tint_strength = strength;
            data.saturation = saturation;
            const Color3 c = colour(data, 200, 100, 50);
            for (int i = 0; i < 3; ++i) {
                const double tinted = own[i] * (1 - strength) + double{tint[i]} * strength;
                EXPECT_NEAR(c[i], 0.5 + (tinted - 0.5) * saturation, 2e-6)
                    << strength << ' ' << saturation << ' ' << i;
            }
        }
    }
    StarRendererData data = plain_settings();
    data.saturation = 2;
    EXPECT_LT(colour(data, 200, 100, 50)[1], 0.0F) << "channels below 0.25 become negative";
    data.saturation = 0;
    EXPECT_EQ(colour(data, 200, 100, 50)[1], 0.5F) << "grey exactly";
    data.saturation = 1;
    data.tint_color = {tint[0], tint[1], tint[2]};
    data.tint_strength = 1;
    EXPECT_EQ(colour(data, 200, 100, 50)[1], 0.25F) << "the tint exactly";
}

TEST(OneSample, DrawsAStillSpotOnce) {
    const StarRendererData data = plain_settings();
    GuardedFrame frame(kWidth, kHeight), expected(kWidth, kHeight);
    CatalogueStar star;
    star.lon = 3;
    star.lat = 5;
    EXPECT_TRUE(shade(frame, data, star));
    Vector2 at;
    ASSERT_TRUE(place(data, facing_x(), 3, 5, at));
    const float white = sRGB_to_float(255);
    op_star_streak(expected.view(), at, at, 1, {white, white, white}, 2, 2, STARS_LINES_ALL);
    EXPECT_TRUE(frame.same_bits(expected));
}

TEST(OneSample, DrawsNothingBehindTheCamera) {
    GuardedFrame frame(kWidth, kHeight);
    // Mirrored, the star would be in the frame.
    Vector2 at;
    ASSERT_FALSE(place(plain_settings(), facing_x(180), 0, 0, at));
    ASSERT_NEAR(at[0], 50, 1);
    EXPECT_FALSE(shade(frame, plain_settings(), CatalogueStar(), {facing_x(180)}));
    EXPECT_TRUE(frame.is_blank());
}

TEST(OneSample, TellsWhetherLightArrived) {
    GuardedFrame frame(kWidth, kHeight);
    CatalogueStar aside;
    aside.lon = 80;
    EXPECT_FALSE(shade(frame, plain_settings(), aside)) << "in front, but off the frame";
    EXPECT_TRUE(frame.is_blank());
}

TEST(Samples, DrawTheSegmentsThatHaveAVisibleEnd) {
    const StarRendererData data = plain_settings();
    const camera front = facing_x(2), front_b = facing_x(-3), back = facing_x(176),
                 back_b = facing_x(185);
    const float white = sRGB_to_float(255);
    const struct {
        const char* name;
        camera samples[3];
        bool visible[3];
        bool segment[2];
    } rows[] = {{"all", {front, front_b, facing_x(4)}, {true, true, true}, {true, true}},
                {"middle", {back, front, back_b}, {false, true, false}, {true, true}},
                {"first", {front, back, back_b}, {true, false, false}, {true, false}},
                {"last", {back, back_b, front}, {false, false, true}, {false, true}},
                {"ends", {front, back, front_b}, {true, false, true}, {true, true}},
                {"none", {back, back_b, back}, {false, false, false}, {false, false}}};
    for (const auto& row : rows) {
        GuardedFrame frame(kWidth, kHeight), expected(kWidth, kHeight);
        const bool drew =
            shade(frame, data, CatalogueStar(), {row.samples[0], row.samples[1], row.samples[2]});
        Vector2 at[3];
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(place(data, row.samples[i], 0, 0, at[i]), row.visible[i]) << row.name << i;
        }
        bool expected_drew = false;
        for (int i = 0; i < 2; ++i) {
            if (row.segment[i]) {
                // Two segments share the energy. A mirrored end is taken as it is.
                expected_drew |= op_star_streak(expected.view(), at[i], at[i + 1], 0.5F,
                                                {white, white, white}, 2, 2, STARS_LINES_ALL);
            }
        }
        EXPECT_TRUE(frame.same_bits(expected)) << row.name;
        EXPECT_EQ(drew, expected_drew) << row.name;
        EXPECT_EQ(drew, row.segment[0] || row.segment[1]) << row.name;
    }
}

TEST(Samples, DrewWhenAnySegmentDid) {
    const StarRendererData data = plain_settings();
    const camera in = facing_x(0), in_b = facing_x(3), off = facing_x(60), off_b = facing_x(65);
    GuardedFrame frame(kWidth, kHeight);
    // The last segment lies off the frame in the first row, the first one in the second.
    EXPECT_TRUE(shade(frame, data, CatalogueStar(), {in, in_b, off, off_b}));
    EXPECT_TRUE(shade(frame, data, CatalogueStar(), {off_b, off, in, in_b}));
    EXPECT_FALSE(shade(frame, data, CatalogueStar(), {off, off_b, off}));
}

TEST(Samples, ShareOneStarsLightWhileNothingMoves) {
    GuardedFrame one(kWidth, kHeight), many(kWidth, kHeight);
    shade(one, plain_settings(), CatalogueStar());
    const camera c = facing_x();
    // Sixteen segments of no length, each a sixteenth.
    shade(many, plain_settings(), CatalogueStar(),
          {c, c, c, c, c, c, c, c, c, c, c, c, c, c, c, c, c});
    EXPECT_EQ(many.r(kCentreX, kCentreY), one.r(kCentreX, kCentreY));
}

TEST(Depth, IsUsedForVersionTwoWithTheSwitchOn) {
    StarRendererData data = plain_settings();
    // The world shifted by 1 along camera x: at distance 10 a tenth of that in front of the camera.
    camera moved = facing_x();
    moved.xform(3, 0) = 1;
    CatalogueStar star;
    star.distance = 10;
    const auto brightest = [&](const char* version) {
        GuardedFrame frame(kWidth, kHeight);
        EXPECT_TRUE(shade(frame, data, star, {moved}, version));
        // 0.1 x focal 2 of the half window of 2, of 50 pixels.
        return std::pair(frame.r(kCentreX, kCentreY), frame.r(kCentreX + 5, kCentreY));
    };
    const float off_peak = std::exp(-25.0F / 4);
    const auto far = brightest(support::kVersion1);
    EXPECT_NEAR(far.first, 1.0, 1e-6);
    EXPECT_NEAR(far.second, off_peak, 1e-6);
    const auto near = brightest(support::kVersion2);
    EXPECT_NEAR(near.first, off_peak, 1e-6);
    EXPECT_NEAR(near.second, 1.0, 1e-6);
    data.use_depth = false;
    EXPECT_EQ(brightest(support::kVersion2), far);
    // Crush takes the whole tenth.
    data.use_depth = true;
    data.parallax_crush = 10;
    EXPECT_EQ(brightest(support::kVersion2), far);
}

TEST(Lines, ReachTheRasteriser) {
    StarRendererData data = plain_settings();
    data.lines = STARS_LINES_EVEN;
    GuardedFrame frame(kWidth, kHeight);
    EXPECT_TRUE(shade(frame, data, CatalogueStar()));
    EXPECT_EQ(frame.r(kCentreX, 25), 0.0F);
    EXPECT_GT(frame.r(kCentreX, 24), 0.0F);
    EXPECT_GT(frame.r(kCentreX, 26), 0.0F);
}
