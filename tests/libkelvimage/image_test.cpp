#include <gtest/gtest.h>
#include <libkelvimage/core.h>
#include <libkelvimage/image.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "support/captured_output.h"
#include "support/expect_throw.h"

namespace {

using Kelv::Image;
using Kelv::ImageSpec;

const char* const kFormatsSource = "libkelvimage/formats.cpp";
const char* const kImage = "libkelvimage/image.cpp";

static_assert(!std::is_copy_constructible_v<Image>);

// Value, name, bytes per pixel and bytes of the narrowest row of every format.
const struct FormatRow {
    int value;
    const char* name;
    u32 bytes_per_pixel;
    int width;
    u32 natural_stride;
} kFormats[] = {
    {1, "BGRA_U8", 4, 5, 20},
    {3, "G_U8", 1, 5, 5},
    {4, "BGRA_FLOAT", 16, 5, 80},
    {6, "G_FLOAT", 4, 5, 20},
    {7, "YCBCR_422_8", 3, 5, 24},
    {10, "DV_NTSC", 0, 720, 250},
    {11, "YCBCR_422_10", 0, 5, 128},
    {12, "YCBCR_444_FLOAT", 12, 5, 60},
    {13, "CINEON", 4, 5, 20},
    {14, "G_U16", 2, 5, 10},
    {15, "DV100_1080i60", 0, 1280, 445},
    {16, "DV50_NTSC", 0, 720, 500},
    {17, "BGRA_U16", 8, 5, 40},
    {18, "DNXHD_1080i60_10BIT", 0, 1920, 850},
};

ImageSpec::PixelFormat format_of(int value) { return static_cast<ImageSpec::PixelFormat>(value); }

TEST(PixelFormat, NamesSizesAndStrides) {
    for (const FormatRow& row : kFormats) {
        const ImageSpec::PixelFormat format = format_of(row.value);
        EXPECT_STREQ(ImageSpec::pixel_format_str(format), row.name);
        EXPECT_EQ(ImageSpec::bytes_per_pixel(format), row.bytes_per_pixel) << row.name;
        EXPECT_EQ(ImageSpec::natural_stride(row.width, format), row.natural_stride) << row.name;
        const ImageSpec spec(row.width, 2, format);
        EXPECT_EQ(spec.stride, row.natural_stride) << row.name;
        EXPECT_EQ(spec.bytes_per_pixel(), row.bytes_per_pixel) << row.name;
    }
}

TEST(PixelFormat, EnumeratorsHaveTheValuesOfTheirNames) {
    const ImageSpec::PixelFormat formats[] = {
        ImageSpec::BGRA_U8,       ImageSpec::G_U8,
        ImageSpec::BGRA_FLOAT,    ImageSpec::G_FLOAT,
        ImageSpec::YCBCR_422_8,   ImageSpec::DV_NTSC,
        ImageSpec::YCBCR_422_10,  ImageSpec::YCBCR_444_FLOAT,
        ImageSpec::CINEON,        ImageSpec::G_U16,
        ImageSpec::DV100_1080i60, ImageSpec::DV50_NTSC,
        ImageSpec::BGRA_U16,      ImageSpec::DNXHD_1080i60_10BIT,
    };
    int i = 0;
    for (const FormatRow& row : kFormats) {
        EXPECT_EQ(formats[i++], row.value) << row.name;
    }
    EXPECT_EQ(ImageSpec::INVALID_FORMAT, 9999);
}

TEST(PixelFormat, UnassignedValuesAreUnknownHoweverTheyAreAskedFor) {
    for (const int value : {0, 2, 5, 8, 9, 19, 9999, -1}) {
        const ImageSpec::PixelFormat format = format_of(value);
        const auto name = [=] { ImageSpec::pixel_format_str(format); };
        const auto size = [=] { ImageSpec::bytes_per_pixel(format); };
        const auto stride = [=] { ImageSpec::natural_stride(10, format); };
        const auto spec = [=] { ImageSpec(10, 10, format); };
        const std::string function = "Kelv::ImageSpec::pixel_format_str";
        expect_message(thrown_message(name), "unknown format", function, kFormatsSource);
        expect_message(thrown_message(size), "unknown format", function, kFormatsSource);
        expect_message(thrown_message(stride), "unknown format", function, kFormatsSource);
        expect_message(thrown_message(spec), "unknown format", function, kFormatsSource);
    }
}

TEST(NaturalStride, TenBitRowsAreWholeBlocksOf48Pixels) {
    const struct {
        int width;
        u32 stride;
    } table[] = {{0, 0},    {1, 128},  {6, 128},    {43, 128},    {48, 128},   {49, 256},
                 {96, 256}, {97, 384}, {720, 1920}, {1280, 3456}, {1920, 5120}};
    for (const auto& row : table) {
        EXPECT_EQ(ImageSpec::natural_stride(row.width, ImageSpec::YCBCR_422_10), row.stride)
            << row.width;
    }
}

TEST(NaturalStride, EightBitRowsAreWholeBlocksOfTwelveBytes) {
    const struct {
        int width;
        u32 stride;
    } table[] = {{0, 0}, {1, 12}, {4, 12}, {5, 24}, {8, 24}, {9, 36}, {720, 2160}};
    for (const auto& row : table) {
        EXPECT_EQ(ImageSpec::natural_stride(row.width, ImageSpec::YCBCR_422_8), row.stride)
            << row.width;
    }
}

TEST(NaturalStride, CameraFormatsComeInOneWidth) {
    const struct {
        ImageSpec::PixelFormat format;
        int width;
        const char* condition;
    } table[] = {
        {ImageSpec::DV_NTSC, 640, "width == 720"},
        {ImageSpec::DV50_NTSC, 721, "width == 720"},
        {ImageSpec::DV100_1080i60, 1920, "width == 1280"},
        {ImageSpec::DNXHD_1080i60_10BIT, 1280, "width == 1920"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(failed_assertion([&] { ImageSpec::natural_stride(row.width, row.format); }),
                  row.condition);
    }
}

TEST(NaturalStride, IsTruncatedTo32Bits) {
    // 16 x (2^28 + 1) = 2^32 + 16.
    EXPECT_EQ(ImageSpec::natural_stride((1 << 28) + 1, ImageSpec::BGRA_FLOAT), 16U);
}

TEST(ImageSpec, SetsItsNaturalStride) {
    ImageSpec spec(30, 2, 100, ImageSpec::BGRA_U8);
    EXPECT_EQ(spec.stride, 100U);
    spec.set_natural_stride();
    EXPECT_EQ(spec.stride, 120U);
}

TEST(ImageSpec, IsEqualWhenAllItsNumbersAre) {
    const ImageSpec spec(30, 2, 120, ImageSpec::BGRA_U8);
    EXPECT_TRUE(spec == ImageSpec(30, 2, ImageSpec::BGRA_U8));
    EXPECT_FALSE(spec != ImageSpec(30, 2, ImageSpec::BGRA_U8));
    const ImageSpec copy(spec);
    EXPECT_TRUE(spec == copy);
    EXPECT_FALSE(copy.has_metadata());
    ImageSpec assigned;
    assigned = spec;
    EXPECT_TRUE(spec == assigned);
    const ImageSpec others[] = {
        {31, 2, 120, ImageSpec::BGRA_U8},
        {30, 3, 120, ImageSpec::BGRA_U8},
        {30, 2, 124, ImageSpec::BGRA_U8},
        {30, 2, 120, ImageSpec::G_FLOAT},
    };
    for (const ImageSpec& other : others) {
        EXPECT_FALSE(spec == other);
        EXPECT_TRUE(spec != other);
    }
}

TEST(ImageSpec, PrintsNameAndSize) {
    const auto printed = [](ImageSpec::PixelFormat format) {
        return output_of(stdout, [=] { ImageSpec(1920, 1080, format).print(); });
    };
    EXPECT_EQ(printed(ImageSpec::BGRA_FLOAT), "BGRA_FLOAT     \t1920 x 1080");
    EXPECT_EQ(printed(ImageSpec::DNXHD_1080i60_10BIT), "DNXHD_1080i60_10BIT\t1920 x 1080");
}

TEST(Image, OwnsHeightTimesStrideBytes) {
    const Image image(ImageSpec(10, 4, 100, ImageSpec::BGRA_U8));
    EXPECT_EQ(image.allocated_size, 400U);
    EXPECT_EQ(image.line(0), image.pixels);
    EXPECT_EQ(image.line(3), image.pixels + 300);
    EXPECT_EQ(static_cast<void*>(image.line_float(2)), image.pixels + 200);
    // All of it may be written: the sanitizers watch.
    std::memset(image.pixels, 0xFF, image.allocated_size);
}

TEST(Image, HasItsBlockBetweenTheFirstRowAndTheSize) {
    const Image image(ImageSpec(3, 2, ImageSpec::BGRA_U8));
    const auto place = [](const void* member) { return static_cast<const char*>(member); };
    EXPECT_EQ(place(&image.allocated_size) - place(&image.pixels),
              static_cast<std::ptrdiff_t>(2 * sizeof(char*)));
}

TEST(Image, AllocatesEveryFormat) {
    for (const FormatRow& row : kFormats) {
        const Image image(ImageSpec(row.width, 3, format_of(row.value)));
        EXPECT_EQ(image.allocated_size, 3 * row.natural_stride) << row.name;
    }
}

TEST(Image, RefusesAStrideBelowItsWidth) {
    const std::string text =
        "ImageSpec stride is too small for width - did you forget set_natural_stride?";
    expect_message(thrown_message([] { Image image(ImageSpec(30, 2, 100, ImageSpec::BGRA_U8)); }),
                   text, "Kelv::Image::alloc", kImage);
    expect_message(thrown_message([] { Image image(ImageSpec(30, 2, 119, ImageSpec::BGRA_U8)); }),
                   text, "Kelv::Image::alloc", kImage);
    EXPECT_EQ(Image(ImageSpec(30, 2, 120, ImageSpec::BGRA_U8)).allocated_size, 240U);
}

TEST(Image, PackedFormatsPassWithAnyStride) {
    EXPECT_EQ(Image(ImageSpec(720, 480, 1, ImageSpec::DV_NTSC)).allocated_size, 480U);
}

TEST(Image, RefusesTheInvalidFormatBeforeAnythingElse) {
    EXPECT_EQ(failed_assertion([] { Image image(ImageSpec(30, 2, 1, ImageSpec::INVALID_FORMAT)); }),
              "spec.format != ImageSpec::INVALID_FORMAT");
}

TEST(Image, SizesWrapAroundAt32Bits) {
    // 2^14 rows of 2^18 bytes are 2^32; one row more leaves that row.
    const Image image(ImageSpec(1 << 16, (1 << 14) + 1, ImageSpec::BGRA_U8));
    EXPECT_EQ(image.allocated_size, 1U << 18);
    EXPECT_EQ(image.line(1 << 14), image.pixels);
    EXPECT_EQ(image.line((1 << 14) + 1) - image.pixels, 1 << 18);
    // A row of 2^32 + 16 bytes counts as 16, also when compared with the stride.
    EXPECT_EQ(Image(ImageSpec((1 << 28) + 1, 2, 16, ImageSpec::BGRA_FLOAT)).allocated_size, 32U);
}

TEST(Image, BlankIsZeroInEveryByte) {
    Image image(ImageSpec(3, 2, 20, ImageSpec::BGRA_U8));
    std::memset(image.pixels, 0xFF, image.allocated_size);
    image.make_blank();
    EXPECT_EQ(std::string(image.pixels, 40), std::string(40, '\0'));
}

TEST(Image, CopiesPixelsAndPadding) {
    const ImageSpec spec(3, 2, 20, ImageSpec::BGRA_U8);
    Image source(spec);
    Image target(spec);
    target.make_blank();
    for (int i = 0; i < 40; ++i) {
        source.pixels[i] = static_cast<char>(i);
    }
    target.copy_from(source);
    EXPECT_EQ(std::memcmp(target.pixels, source.pixels, 40), 0);
    EXPECT_NE(target.pixels, source.pixels);
    target.copy_from(target);
    EXPECT_EQ(std::memcmp(target.pixels, source.pixels, 40), 0);
}

TEST(Image, CopiesOnlyBetweenLikeImages) {
    Image image(ImageSpec(3, 2, 20, ImageSpec::BGRA_U8));
    const ImageSpec others[] = {
        {3, 2, 24, ImageSpec::BGRA_U8},
        {2, 2, 20, ImageSpec::BGRA_U8},
        {3, 3, 20, ImageSpec::BGRA_U8},
        {3, 2, 20, ImageSpec::G_FLOAT},
    };
    for (const ImageSpec& spec : others) {
        const Image other(spec);
        expect_message(thrown_message([&] { image.copy_from(other); }), "formats don't match\n",
                       "Kelv::Image::copy_from", kImage);
    }
}

TEST(Image, MayBeFreedAndAllocatedAnew) {
    Image image(ImageSpec(3, 2, ImageSpec::BGRA_U8));
    image.free();
    EXPECT_EQ(image.pixels, nullptr);
    EXPECT_EQ(image.allocated_size, 0U);
    // Harmless: the sanitizers watch.
    image.make_blank();
    Image also_freed(ImageSpec(3, 2, ImageSpec::BGRA_U8));
    also_freed.free();
    image.copy_from(also_freed);
    image.width = 100;
    image.set_natural_stride();
    image.alloc();
    EXPECT_EQ(image.allocated_size, 800U);
    image.make_blank();
    image.free();
}

TEST(Image, DumpsSizeAddressAndSpec) {
    const Image image(ImageSpec(3, 2, ImageSpec::G_U8));
    char expected[128];
    std::snprintf(expected, sizeof expected,
                  "Image (allocated_size 6 at %p) G_U8           \t3 x 2",
                  static_cast<void*>(image.pixels));
    EXPECT_EQ(output_of(stdout, [&] { image.dump(); }), expected);
}

TEST(Image, TracesItsPixels) {
    Kelv::TRACE_ALLOCATIONS = 1;
    const std::string trace =
        output_of(stderr, [] { const Image image(ImageSpec(3, 2, ImageSpec::G_U8)); });
    Kelv::TRACE_ALLOCATIONS = 0;
    EXPECT_EQ(trace.find("libkelvimage: malloc_pixels(6) = "), 0U);
    EXPECT_NE(trace.find("\nlibkelvimage: free_pixels("), std::string::npos);
    EXPECT_EQ(trace.substr(trace.size() - 5), ", 6)\n");
}

TEST(Image, LeavesPoisonInItsSpec) {
    alignas(Image) unsigned char memory[sizeof(Image)];
    Image* image = new (memory) Image(ImageSpec(3, 2, ImageSpec::BGRA_FLOAT));
    // The places, since the members must not be named any more afterwards.
    const auto place = [&](const void* member) {
        return static_cast<const unsigned char*>(member) - memory;
    };
    const std::ptrdiff_t width = place(&image->width);
    const std::ptrdiff_t height = place(&image->height);
    const std::ptrdiff_t stride = place(&image->stride);
    const std::ptrdiff_t format = place(&image->format);
    image->~Image();
    const auto number_at = [&](std::ptrdiff_t offset) {
        int number;
        std::memcpy(&number, memory + offset, sizeof number);
        return number;
    };
    EXPECT_EQ(number_at(width), -666);
    EXPECT_EQ(number_at(height), -666);
    EXPECT_EQ(number_at(stride), 0);
    EXPECT_EQ(number_at(format), 9999);
}

}  // namespace
