// Images, their specs and formats, and what the library shares: errors and the memory of pixels.
#include <gtest/gtest.h>
#include <libkelvimage/core.h>
#include <libkelvimage/image.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/captured_output.h"
#include "support/expect_throw.h"

// The sanitizer's allocator is to fail as the system's does, with a null.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

TEST(Error, HasATextForEachCode) {
    const char* const texts[] = {
        "OK",
        "unknown error",
        "error opening file",
        "error stat()ing file",
        "error allocating memory",
        "error reading from file",
        "file is too short",
        "unknown file format",
        "invalid file",
        "operation cannot be performed on this image format",
        "error writing to file",
        "unimplemented image format translation",
    };
    for (int code = 0; code < 12; ++code) {
        EXPECT_STREQ(Kelv::Error(code).strerror(), texts[code]);
        EXPECT_EQ(Kelv::Error(code).code(), code);
    }
    for (const int code : {-1, 12, std::numeric_limits<int>::max()}) {
        EXPECT_STREQ(Kelv::Error(code).strerror(), "unknown error");
    }
}

TEST(Error, PrintsItsTextAsAnException) {
    const std::string printed = output_of(stderr, [] {
        try {
            throw Kelv::Error(6);
        } catch (const Xception& failure) {
            failure.print();
        }
    });
    EXPECT_EQ(printed, "libkelvimage error: file is too short\n");
}

std::string address(const void* pointer) {
    char text[64];
    std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}

// Pixel allocations are traced while the object lives.
class Traced {
public:
    Traced() { Kelv::TRACE_ALLOCATIONS = 1; }
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;
    ~Traced() { Kelv::TRACE_ALLOCATIONS = 0; }
};

TEST(PixelMemory, IsNotTracedUnlessAsked) {
    ASSERT_EQ(Kelv::TRACE_ALLOCATIONS, 0);
    const auto run = [] { Kelv::free_pixels(Kelv::malloc_pixels(64), 64); };
    EXPECT_EQ(output_of(stderr, run), "");
}

TEST(PixelMemory, IsTracedWhenAsked) {
    const Traced traced;
    std::string where;
    const std::string trace = output_of(stderr, [&] {
        char* pixels = Kelv::malloc_pixels(64);
        where = address(pixels);
        Kelv::free_pixels(pixels, 64);
    });
    EXPECT_EQ(trace, "libkelvimage: malloc_pixels(64) = " + where + "\nlibkelvimage: free_pixels(" +
                         where + ", 64)\n");
}

TEST(PixelMemory, ThatThereIsNotThrowsAfterItsTrace) {
    const Traced traced;
    // No allocator gives out more than half the addresses; a 32-bit system may well give half.
    const uword size = std::numeric_limits<uword>::max() / 2 + 1;
    std::string message;
    const std::string trace =
        output_of(stderr, [&] { message = thrown_message([=] { Kelv::malloc_pixels(size); }); });
    expect_message(message, "out of memory", "Kelv::malloc_pixels", "libkelvimage/core.cpp");
    // Between the two the sanitizer's allocator may put a warning of its own.
    const std::string start = "libkelvimage: malloc_pixels(" + std::to_string(size) + ")";
    const std::string end = " = " + address(nullptr) + "\n";
    ASSERT_GE(trace.size(), start.size() + end.size());
    EXPECT_EQ(trace.substr(0, start.size()), start);
    EXPECT_EQ(trace.substr(trace.size() - end.size()), end);
}

TEST(PixelMemory, FreeingNoneIsNoError) { Kelv::free_pixels(nullptr, 0); }

using Kelv::Image;
using Kelv::ImageSpec;

const char* const kFormatsSource = "libkelvimage/formats.cpp";
const char* const kImage = "libkelvimage/image.cpp";

static_assert(!std::is_copy_constructible_v<Image>);

// Value, name, bytes per pixel and bytes of the narrowest row of every format.
const struct FormatRow {
    int value;
    ImageSpec::PixelFormat format;
    const char* name;
    u32 bytes_per_pixel;
    int width;
    u32 natural_stride;
} kFormats[] = {
    {1, ImageSpec::BGRA_U8, "BGRA_U8", 4, 5, 20},
    {3, ImageSpec::G_U8, "G_U8", 1, 5, 5},
    {4, ImageSpec::BGRA_FLOAT, "BGRA_FLOAT", 16, 5, 80},
    {6, ImageSpec::G_FLOAT, "G_FLOAT", 4, 5, 20},
    {7, ImageSpec::YCBCR_422_8, "YCBCR_422_8", 3, 5, 24},
    {10, ImageSpec::DV_NTSC, "DV_NTSC", 0, 720, 250},
    {11, ImageSpec::YCBCR_422_10, "YCBCR_422_10", 0, 5, 128},
    {12, ImageSpec::YCBCR_444_FLOAT, "YCBCR_444_FLOAT", 12, 5, 60},
    {13, ImageSpec::CINEON, "CINEON", 4, 5, 20},
    {14, ImageSpec::G_U16, "G_U16", 2, 5, 10},
    {15, ImageSpec::DV100_1080i60, "DV100_1080i60", 0, 1280, 445},
    {16, ImageSpec::DV50_NTSC, "DV50_NTSC", 0, 720, 500},
    {17, ImageSpec::BGRA_U16, "BGRA_U16", 8, 5, 40},
    {18, ImageSpec::DNXHD_1080i60_10BIT, "DNXHD_1080i60_10BIT", 0, 1920, 850},
};

TEST(PixelFormat, ValuesNamesSizesAndStrides) {
    for (const FormatRow& row : kFormats) {
        EXPECT_EQ(row.format, row.value) << row.name;
        EXPECT_STREQ(ImageSpec::pixel_format_str(row.format), row.name);
        EXPECT_EQ(ImageSpec::bytes_per_pixel(row.format), row.bytes_per_pixel) << row.name;
        EXPECT_EQ(ImageSpec::natural_stride(row.width, row.format), row.natural_stride) << row.name;
        const ImageSpec spec(row.width, 2, row.format);
        EXPECT_EQ(spec.stride, row.natural_stride) << row.name;
        EXPECT_EQ(spec.bytes_per_pixel(), row.bytes_per_pixel) << row.name;
        EXPECT_EQ(Image(spec).allocated_size, 2 * row.natural_stride) << row.name;
    }
    EXPECT_EQ(ImageSpec::INVALID_FORMAT, 9999);
}

TEST(PixelFormat, UnassignedValuesAreUnknownHoweverTheyAreAskedFor) {
    for (const int value : {0, 2, 5, 8, 9, 19, 9999, -1}) {
        const auto format = static_cast<ImageSpec::PixelFormat>(value);
        const std::function<void()> questions[] = {
            [=] { ImageSpec::pixel_format_str(format); },
            [=] { ImageSpec::bytes_per_pixel(format); },
            [=] { ImageSpec::natural_stride(10, format); },
            [=] { ImageSpec(10, 10, format); },
        };
        for (const auto& question : questions) {
            expect_message(thrown_message(question), "unknown format",
                           "Kelv::ImageSpec::pixel_format_str", kFormatsSource);
        }
    }
}

TEST(NaturalStride, RowsOfHalvedColourAreWholeBlocks) {
    using Strides = std::vector<std::pair<int, u32>>;
    // Of 48 pixels in 128 bytes.
    for (const auto& [width, stride] : Strides{{0, 0},
                                               {1, 128},
                                               {6, 128},
                                               {43, 128},
                                               {48, 128},
                                               {49, 256},
                                               {96, 256},
                                               {97, 384},
                                               {720, 1920},
                                               {1280, 3456},
                                               {1920, 5120}}) {
        EXPECT_EQ(ImageSpec::natural_stride(width, ImageSpec::YCBCR_422_10), stride) << width;
    }
    // Of 12 bytes.
    for (const auto& [width, stride] :
         Strides{{0, 0}, {1, 12}, {4, 12}, {5, 24}, {8, 24}, {9, 36}, {720, 2160}}) {
        EXPECT_EQ(ImageSpec::natural_stride(width, ImageSpec::YCBCR_422_8), stride) << width;
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

// Each differs in one number from 30 x 2 pixels of BGRA_U8 in rows of 120 bytes.
const ImageSpec kUnlike[] = {
    {29, 2, 120, ImageSpec::BGRA_U8},
    {30, 3, 120, ImageSpec::BGRA_U8},
    {30, 2, 124, ImageSpec::BGRA_U8},
    {30, 2, 120, ImageSpec::G_FLOAT},
};

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
    for (const ImageSpec& other : kUnlike) {
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

TEST(Image, RefusesAStrideBelowItsWidth) {
    for (const unsigned int stride : {100U, 119U}) {
        expect_message(
            thrown_message([=] { Image image(ImageSpec(30, 2, stride, ImageSpec::BGRA_U8)); }),
            "ImageSpec stride is too small for width - did you forget set_natural_stride?",
            "Kelv::Image::alloc", kImage);
    }
    EXPECT_EQ(Image(ImageSpec(30, 2, 120, ImageSpec::BGRA_U8)).allocated_size, 240U);
    // Packed formats pass with any stride.
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
    Image image(ImageSpec(30, 2, 120, ImageSpec::BGRA_U8));
    for (const ImageSpec& spec : kUnlike) {
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

TEST(Image, LeavesPoisonInItsSpec) {
    alignas(Image) unsigned char memory[sizeof(Image)];
    Image* image = new (memory) Image(ImageSpec(3, 2, ImageSpec::BGRA_FLOAT));
    // The places, since the members must not be named any more afterwards.
    const struct {
        const void* place;
        int poison;
    } members[] = {
        {&image->width, -666}, {&image->height, -666}, {&image->stride, 0}, {&image->format, 9999}};
    image->~Image();
    for (const auto& member : members) {
        int number = 0;
        std::memcpy(&number, memory + (static_cast<const unsigned char*>(member.place) - memory),
                    sizeof number);
        EXPECT_EQ(number, member.poison);
    }
}

}  // namespace
