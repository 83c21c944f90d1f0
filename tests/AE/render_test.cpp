// From a snapshot to pixels.
#include <support/expect_throw.h>

#include "rendering_fixture.h"

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

namespace {

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
    // The format's code is "bgra", the lowest byte first.
    EXPECT_EQ(
        without_blanks(thrown_message([&] { draw(world); })),
        "unhandledPF_Pixelformat1634887522in<" + rendering_function() + ">(AE/LumivarAE.cpp:821)");
    EXPECT_TRUE(world.untouched());
    EXPECT_GT(middle(), 0.0F);
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
