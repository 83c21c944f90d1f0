#include <gtest/gtest.h>
#include <libimgops/renderer.h>
#include <libimgops/starfile.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "star_scene.h"
#include "support/expect_throw.h"
#include "support/pixels.h"
#include "support/scratch.h"

namespace {

using namespace star_scene;
using support::CatalogueStar;
using support::GuardedFrame;

/// Light at the frame's centre of a white star of luminance 1 there.
float peak_of_samples(const StarRendererData& data, int samples = 1) {
    StarFrame one(data, {CatalogueStar()});
    for (int i = 1; i < samples; ++i) {
        one.cams.append(facing_x());
    }
    one.draw();
    return one.centre();
}

/// Gaussian radii of a drawn spot, from its centre's neighbours two pixels off.
std::pair<double, double> radii(const StarRendererData& data) {
    StarFrame one(data, {CatalogueStar()});
    one.draw();
    const double centre = one.centre();
    return {2 / std::sqrt(std::log(centre / one.frame.r(kCentreX + 2, kCentreY))),
            2 / std::sqrt(std::log(centre / one.frame.r(kCentreX, kCentreY + 2)))};
}

/// Where the light of the frame is centred along x.
double centroid_x(GuardedFrame& frame) {
    double sum = 0, moment = 0;
    support::for_each_pixel(frame.width(), frame.height(), [&](int x, int y) {
        sum += frame.r(x, y);
        moment += static_cast<double>(frame.r(x, y)) * x;
    });
    return moment / sum;
}

}  // namespace

TEST(Records, HaveTheDefaultsAndValuesOfSavedProjects) {
    const camera defaults;
    // The exact decimal values of the nearest single-precision numbers.
    EXPECT_EQ(defaults.focal, 3.200000047683716);
    EXPECT_EQ(defaults.near_clip, 0.10000000149011612);
    EXPECT_EQ(defaults.far_clip, -1.0);
    EXPECT_EQ((std::vector<int>{Persp, HemiSph, AzEqu}), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ((std::vector<int>{STARS_LINES_ALL, STARS_LINES_EVEN, STARS_LINES_ODD}),
              (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(sizeof(op_stars_projection), 4U);
    EXPECT_EQ(sizeof(op_stars_lines), 4U);
}

TEST(Intensity, IsFourTimesTheBrightness) {
    StarRendererData data = plain_settings();
    data.brightness = 1.25;
    EXPECT_FLOAT_EQ(peak_of_samples(data), 5.0F);
    EXPECT_FLOAT_EQ(peak_of_samples(data, 2), 5.0F) << "one segment, not shared";
    EXPECT_FLOAT_EQ(peak_of_samples(data, 3), 5.0F) << "two segments of a half";
}

TEST(Intensity, IsSharedByTheSegments) {
    // Three samples, two of them behind the camera: one segment is drawn, with half the light of
    // the same segment alone.
    const auto light = [](std::initializer_list<camera> samples) {
        StarFrame one(plain_settings(), {CatalogueStar()}, samples);
        one.draw();
        return one.centre();
    };
    const camera front = facing_x(), back = facing_x(178);
    const float alone = light({front, back});
    ASSERT_GT(alone, 0.0F);
    EXPECT_FLOAT_EQ(light({front, back, back}), alone / 2);
}

// Both sizes are thousandths of half of 100 pixels; the width is multiplied by the pixels' aspect.
TEST(Spot, IsMeasuredByTheWidthAndDimmedInsteadOfSmallerThanAPixel) {
    const struct {
        const char* what;
        double size_x, size_y;
        double window[4];
        double w, h;
        float peak;
    } rows[] = {{"two sizes", 40, 60, {-2, 2, -1, 1}, 2, 3, 1},
                {"a window as wide as high", 40, 40, {-1, 1, -1, 1}, 4, 2, 1},
                {"a window the other way round", 40, 40, {4, -4, 2, -2}, 2, 2, 1},
                {"half a pixel wide", 10, 40, {-2, 2, -1, 1}, 1, 2, 0.5F},
                {"and a quarter high", 10, 5, {-2, 2, -1, 1}, 1, 1, 0.125F},
                {"a pixel exactly", 20, 20, {-2, 2, -1, 1}, 1, 1, 1},
                {"half a pixel times an aspect of 4", 10, 40, {-0.5, 0.5, -1, 1}, 2, 2, 1}};
    for (const auto& row : rows) {
        StarRendererData data = plain_settings();
        data.spot_size_x = row.size_x;
        data.spot_size_y = row.size_y;
        data.window_x0 = row.window[0];
        data.window_x1 = row.window[1];
        data.window_y0 = row.window[2];
        data.window_y1 = row.window[3];
        EXPECT_FLOAT_EQ(peak_of_samples(data), row.peak) << row.what;
        const auto [w, h] = radii(data);
        EXPECT_NEAR(w, row.w, 1e-5) << row.what;
        EXPECT_NEAR(h, row.h, 1e-5) << row.what;
    }
}

TEST(Spot, IsWorkedOutInDoubleAndStoredSingle) {
    // Spots below a pixel dim a still star by their width, to the last bit.
    StarRendererData data = plain_settings();
    data.window_x0 = -1.7;
    data.window_x1 = 1.7;
    int differ = 0;
    for (int i = 1; i < 50; ++i) {
        data.spot_size_x = 0.31 * i;
        const double aspect = 100.0 / 50.0 / (3.4 / 2.0);
        const auto width = static_cast<float>(data.spot_size_x * 0.0005 * 100 * aspect);
        ASSERT_LT(width, 1.0F);
        EXPECT_EQ(peak_of_samples(data), width) << data.spot_size_x;
        const auto stored = static_cast<float>(data.spot_size_x * 0.0005 * 100);
        differ += stored * static_cast<float>(aspect) != width ? 1 : 0;
    }
    EXPECT_GT(differ, 0) << "these sizes do not tell double from single precision";
}

TEST(SetUp, SurvivesAFrameWithoutRows) {
    StarFrame one(plain_settings(), {CatalogueStar()});
    GuardedFrame flat(kWidth, 0);
    EXPECT_NO_THROW(draw_all(one.data, flat, one.input, one.cams));
}

TEST(SetUp, BakesThePerspectiveIntoPerspAlone) {
    // 30 degrees to the left as seen through focal 1.5 and a window of +-2.
    StarRendererData data = plain_settings();
    const double angle = PI / 6;
    const struct {
        op_stars_projection projection;
        double radius;
    } rows[] = {{Persp, 1.5 * std::tan(angle)}, {HemiSph, std::sin(angle)}, {AzEqu, 30.0 / 90.0}};
    for (const auto& row : rows) {
        data.projection = row.projection;
        CatalogueStar star;
        star.lon = 30;
        StarFrame one(data, {star});
        one.cams[0].focal = 1.5;
        EXPECT_TRUE(one.draw());
        EXPECT_NEAR(centroid_x(one.frame), 50 - 25 * row.radius, 0.001) << row.projection;
    }
}

TEST(SetUp, TurnsTheWorldBeforeThePerspective) {
    // Nearer by 2 along the view: a star 10 away and 45 degrees off is seen 45 degrees off at
    // (7.07, 7.07 - 2).
    CatalogueStar star;
    star.lon = -45;
    star.distance = 10;
    StarFrame one(plain_settings(), {star}, {facing_x()}, support::kVersion2);
    one.cams[0].focal = 1;
    one.cams[0].xform(3, 2) = -2;
    EXPECT_TRUE(one.draw());
    const double side = 10 * std::sqrt(0.5);
    EXPECT_NEAR(centroid_x(one.frame), 50 + 25 * side / (side - 2), 0.001);
}

TEST(SetUp, AssertsACamera) {
    StarFrame one(plain_settings(), {}, {});
    try {
        one.renderer();
        FAIL() << "no camera was taken";
    } catch (const AssertXception& x) {
        EXPECT_STREQ(x.expression(), "priv->cams.len() > 0");
        EXPECT_STREQ(x.file(), "libimgops/stars.cpp");
        EXPECT_EQ(x.line(), 464);
        EXPECT_EQ(
            std::string(x.function()).find("StarRenderer::StarRenderer(const StarRendererData"),
            0U);
    }
    EXPECT_EQ(one.input.reads(), 0) << "the header is left for the next frame";
}

TEST(SetUp, RefusesABadHeader) {
    for (const char* magic : {"LUMIVAR3", "lumivar1", "LUMIVAR0"}) {
        StarFrame one(plain_settings(), {CatalogueStar()}, {facing_x()}, magic);
        const std::string message = thrown_message([&] { one.renderer(); });
        EXPECT_EQ(message.find("error in star database file in <StarRenderer::StarRenderer("), 0U)
            << message;
        EXPECT_NE(message.find("> (libimgops/stars.cpp:518)"), std::string::npos) << message;
    }
}

TEST(StarLoop, ReadsEveryRecordOnceInOrder) {
    CatalogueStar left, middle, right;
    left.lon = 10;
    right.lon = -10;
    StarFrame frame(plain_settings(), {left, middle, right});
    StarRenderer renderer = frame.renderer();
    EXPECT_EQ(frame.input.reads(), 1) << "the header";

    bool drew = false;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_TRUE(drew);
    EXPECT_EQ(frame.centre(), 0.0F) << "the first one is on the left";
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_GT(frame.centre(), 0.9F);
    EXPECT_FALSE(renderer.render_star(drew)) << "none after the third";
    EXPECT_EQ(frame.input.reads(), 4);

    drew = false;
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_FALSE(drew);
    EXPECT_EQ(frame.input.reads(), 4) << "nothing beyond the end";
    EXPECT_EQ(frame.input.resets(), 0) << "rewinding is the caller's";
}

TEST(StarLoop, RemembersThatSomethingWasDrawn) {
    CatalogueStar dark;
    dark.luminance = 0;
    StarFrame frame(plain_settings(), {dark, CatalogueStar(), dark, CatalogueStar()});
    StarRenderer renderer = frame.renderer();
    bool drew = false;
    renderer.render_star(drew);
    EXPECT_FALSE(drew);
    renderer.render_star(drew);
    EXPECT_TRUE(drew);
    renderer.render_star(drew);
    EXPECT_TRUE(drew) << "never cleared";
    renderer.render_star(drew);
    EXPECT_FLOAT_EQ(frame.centre(), 2.0F) << "drawn though something was drawn before";
}

TEST(StarLoop, EndsAtOnceWithoutBrightness) {
    for (const double none : {0.0, -0.0}) {
        StarFrame frame(plain_settings(), {CatalogueStar()});
        frame.data.brightness = none;
        StarRenderer renderer = frame.renderer();
        bool drew = false;
        EXPECT_FALSE(renderer.render_star(drew));
        EXPECT_FALSE(drew);
        EXPECT_EQ(frame.input.reads(), 1) << "the header only";
    }
}

TEST(StarLoop, EndsAtOnceAfterALoneHeader) {
    const ScratchFolder folder;
    const std::string path = folder / "sky.stars";
    // A whole header, a cut one, and one with part of a star.
    for (const unsigned size : {32U, 8U, 31U, 63U}) {
        write_file(path,
                   support::catalogue_bytes(support::kVersion2, {CatalogueStar()}).substr(0, size));
        const scoped_ptr<StarInput> input(op_stars_file_input(path.c_str()));
        StarFrame frame(plain_settings(), {});
        EXPECT_FALSE(draw_all(frame.data, frame.frame, *input, frame.cams)) << size;
        input->reset();
        StarRenderer renderer(frame.data, frame.fb, *input, frame.cams);
        bool drew = false;
        renderer.render_stars(drew);
        EXPECT_FALSE(drew) << size;
        EXPECT_TRUE(frame.frame.is_blank());
    }
}

TEST(Frames, FollowEachOtherAfterAReset) {
    const ScratchFolder folder;
    const std::string path = folder / "sky.stars";
    support::write_catalogue(path, support::kVersion1, {CatalogueStar(), CatalogueStar()});
    const scoped_ptr<StarInput> input(op_stars_file_input(path.c_str()));
    Array<camera> cams;
    cams.append(facing_x());
    StarRendererData data = plain_settings();
    GuardedFrame first(kWidth, kHeight), second(kWidth, kHeight);
    EXPECT_TRUE(draw_all(data, first, *input, cams));
    input->reset();
    EXPECT_TRUE(draw_all(data, second, *input, cams));
    EXPECT_TRUE(first.same_bits(second));
    input->reset();

    // A frame that ends early leaves the source where it stands: the next one fails its header
    // check, and goes on failing until somebody rewinds.
    data.projection = static_cast<op_stars_projection>(3);
    GuardedFrame failed(kWidth, kHeight);
    EXPECT_EQ(
        thrown_message([&] { draw_all(data, failed, *input, cams); }).find("unknown projection"),
        0U);
    data.projection = Persp;
    EXPECT_EQ(thrown_message([&] {
                  draw_all(data, failed, *input, cams);
              }).find("error in star database file"),
              0U);
    EXPECT_TRUE(failed.is_blank());
    input->reset();
    GuardedFrame third(kWidth, kHeight);
    EXPECT_TRUE(draw_all(data, third, *input, cams));
    EXPECT_TRUE(first.same_bits(third));
}
