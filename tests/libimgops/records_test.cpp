#include <libimgops/records.h>

#include <gtest/gtest.h>

#include <vector>

TEST(Camera, DefaultsAreSinglePrecisionNumbersWidened) {
    const camera defaults;
    // The exact decimal values of the nearest single-precision numbers.
    EXPECT_EQ(defaults.focal, 3.200000047683716);
    EXPECT_EQ(defaults.near_clip, 0.10000000149011612);
    EXPECT_EQ(defaults.far_clip, -1.0);
}

TEST(Enumerations, HaveTheValuesOfSavedProjects) {
    EXPECT_EQ(static_cast<int>(Persp), 0);
    EXPECT_EQ(static_cast<int>(HemiSph), 1);
    EXPECT_EQ(static_cast<int>(AzEqu), 2);
    EXPECT_EQ(static_cast<int>(STARS_LINES_ALL), 0);
    EXPECT_EQ(static_cast<int>(STARS_LINES_EVEN), 1);
    EXPECT_EQ(static_cast<int>(STARS_LINES_ODD), 2);
    EXPECT_EQ(sizeof(op_stars_projection), 4U);
    EXPECT_EQ(sizeof(op_stars_lines), 4U);
}

TEST(Framebuffer, AddressesEveryPixelOfAFourFloatImage) {
    // 3 x 2 pixels with two floats of padding a row; every float holds its own index.
    const int width = 3, height = 2, row_floats = 4 * width + 2;
    std::vector<float> image(row_floats * height);
    for (std::size_t i = 0; i < image.size(); ++i) {
        image[i] = static_cast<float>(i);
    }
    StarFramebuffer fb;
    fb.a = image.data();
    fb.r = fb.a + 1;
    fb.g = fb.a + 2;
    fb.b = fb.a + 3;
    fb.width = width;
    fb.height = height;
    fb.stride = row_floats;
    fb.pixel_stride = 4;
    for (int y = 0; y < fb.height; ++y) {
        for (int x = 0; x < fb.width; ++x) {
            const float pixel = static_cast<float>(14 * y + 4 * x);
            const int offset = fb.pixel_stride * x + fb.stride * y;
            EXPECT_EQ(fb.a[offset], pixel);
            EXPECT_EQ(fb.r[offset], pixel + 1);
            EXPECT_EQ(fb.g[offset], pixel + 2);
            EXPECT_EQ(fb.b[offset], pixel + 3);
        }
    }
}
