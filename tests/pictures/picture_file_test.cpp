// Pictures, read back through the picture library, which is the public judge of the formats.
#include "picture_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "failure_of.h"
#include "read_back.h"
#include "support/pixels.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using host::Depth;
using lumivar::FrameView;
using lumivar::PictureInfo;
using lumivar::write_picture;

/// Pixels of alpha, red, green, blue in rows with some bytes to spare, as a host may hold them.
template <class Sample>
class Frame {
public:
    Frame(int width, int height, Depth depth)
        : stride_(static_cast<std::size_t>(width) * 4 + 3),
          samples_(stride_ * static_cast<std::size_t>(height), Sample(77)) {
        view_ = {samples_.data(), static_cast<std::ptrdiff_t>(stride_ * sizeof(Sample)), width,
                 height, depth};
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    void set(int x, int y, Sample alpha, Sample red, Sample green, Sample blue) {
        Sample* pixel =
            &samples_[static_cast<std::size_t>(y) * stride_ + static_cast<std::size_t>(x) * 4];
        pixel[0] = alpha;
        pixel[1] = red;
        pixel[2] = green;
        pixel[3] = blue;
    }
    const FrameView& view() const { return view_; }

private:
    std::size_t stride_;
    std::vector<Sample> samples_;
    FrameView view_;
};

class Picture : public testing::Test {
protected:
    /// The frame as a file of this name has it.
    template <class Sample>
    ReadBack written(const std::string& name, const Frame<Sample>& frame, bool raw = false) {
        write_picture(folder / name, frame.view(), {}, {.raw = raw});
        return read_back(folder / name);
    }

    ScratchFolder folder;
};

class FloatPicture : public Picture, public testing::WithParamInterface<const char*> {};

TEST_P(FloatPicture, CarriesEveryBitOfEveryFloat) {
    // Not-a-numbers with their payloads, infinities, denormals, both zeros, negative and huge
    // values.
    const std::uint32_t patterns[] = {0x7FC00000, 0x7FC12345, 0xFFC00001, 0x7F800000, 0xFF800000,
                                      0x00000001, 0x807FFFFF, 0x00000000, 0x80000000, 0x3F800000,
                                      0xBE99999A, 0x7F7FFFFF, 0x00800000, 0x40490FDB};
    constexpr int kCount = std::size(patterns);
    Frame<float> frame(kCount, 3, Depth::Float);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < kCount; ++x) {
            const auto value = [&](int shift) {
                return std::bit_cast<float>(patterns[(x + y + shift) % kCount]);
            };
            frame.set(x, y, 1.0F, value(0), value(1), value(2));
        }
    }
    const ReadBack picture = written(GetParam(), frame);
    ASSERT_EQ(picture.spec.width, kCount);
    ASSERT_EQ(picture.spec.height, 3);
    ASSERT_EQ(picture.spec.nchannels, 4);
    ASSERT_EQ(picture.spec.format, OIIO::TypeFloat);
    EXPECT_EQ(picture.spec.channelnames, (std::vector<std::string>{"R", "G", "B", "A"}));
    EXPECT_EQ(picture.spec.get_string_attribute("oiio:ColorSpace", "Linear"), "Linear");
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < kCount; ++x) {
            for (int c = 0; c < 3; ++c) {
                ASSERT_EQ(picture.at<std::uint32_t>(x, y, c), patterns[(x + y + c) % kCount])
                    << x << "," << y << "," << c;
            }
            ASSERT_EQ(picture.at<float>(x, y, 3), 1.0F);
        }
    }
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{GetParam()});
}

TEST_P(FloatPicture, CarriesAlphaUntouchedWithTheColoursBesideIt) {
    Frame<float> frame(1, 1, Depth::Float);
    frame.set(0, 0, 0.5F, 0.25F, 4.0F, -1.0F);
    const ReadBack picture = written(GetParam(), frame);
    EXPECT_EQ(picture.samples<float>(), (std::vector{0.25F, 4.0F, -1.0F, 0.5F}));
}

TEST_P(FloatPicture, TurnsIntegerCodesIntoLinearLight) {
    Frame<std::uint8_t> eight(1, 1, Depth::Bits8);
    eight.set(0, 0, 255, 0, 51, 255);
    ReadBack picture = written(GetParam(), eight);
    ASSERT_EQ(picture.spec.format, OIIO::TypeFloat);
    EXPECT_EQ(picture.samples<float>(), (std::vector{0.0F, 0.2F, 1.0F, 1.0F}));

    Frame<std::uint16_t> sixteen(1, 1, Depth::Bits16);
    sixteen.set(0, 0, 32768, 1, 8192, 32768);
    picture = written(GetParam(), sixteen);
    EXPECT_EQ(picture.samples<float>(), (std::vector{0x1p-15F, 0.25F, 1.0F, 1.0F}));
}

INSTANTIATE_TEST_SUITE_P(Formats, FloatPicture, testing::Values("a.exr", "a.tif", "a.TIFF"),
                         [](const auto& format) {
                             std::string name = format.param;
                             return name.substr(2);
                         });

TEST_F(Picture, PngIsEncodedToSrgbAndClamped) {
    // Codes by hand, see the test of the curve: 0.002 -> 7, 0.01 -> 25, 0.2 -> 124, 0.5 -> 188.
    Frame<float> frame(3, 2, Depth::Float);
    frame.set(0, 0, 1, 0.0F, 0.002F, 0.01F);
    frame.set(1, 0, 1, 0.2F, 0.5F, 1.0F);
    frame.set(2, 0, 1, 1.5F, -0.3F, std::numeric_limits<float>::quiet_NaN());
    frame.set(0, 1, 1, std::numeric_limits<float>::infinity(), 1e30F, -1e30F);
    frame.set(1, 1, 1, 0.5F, 0.0F, 0.0F);
    frame.set(2, 1, 1, 0.0F, 0.0F, 0.5F);
    const ReadBack picture = written("a.png", frame);
    ASSERT_EQ(picture.spec.format, OIIO::TypeUInt8);
    ASSERT_EQ(picture.spec.nchannels, 3);
    EXPECT_EQ(picture.spec.get_string_attribute("oiio:ColorSpace"), "sRGB");
    EXPECT_EQ(picture.samples<std::uint8_t>(),
              (std::vector<std::uint8_t>{0, 7, 25, 124, 188, 255, 255, 0, 0,  // the first row
                                         255, 255, 0, 188, 0, 0, 0, 0, 188}));
}

TEST_F(Picture, PngOfIntegerFramesIsEncodedToo) {
    Frame<std::uint8_t> eight(1, 1, Depth::Bits8);
    eight.set(0, 0, 255, 0, 128, 255);  // 128 / 255: 0.736648 x 255 = 187.85
    EXPECT_EQ(written("a.png", eight).at<std::uint8_t>(0, 0, 1), 188);
    Frame<std::uint16_t> sixteen(1, 1, Depth::Bits16);
    sixteen.set(0, 0, 32768, 16384, 32768, 0);
    const ReadBack picture = written("a.png", sixteen);
    ASSERT_EQ(picture.spec.format, OIIO::TypeUInt8);
    EXPECT_EQ(picture.samples<std::uint8_t>(), (std::vector<std::uint8_t>{188, 255, 0}));
}

TEST_F(Picture, RawKeepsEightBitCodes) {
    Frame<std::uint8_t> frame(256, 1, Depth::Bits8);
    for (int x = 0; x < 256; ++x) {
        frame.set(x, 0, 255, static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(255 - x), 7);
    }
    for (const char* name : {"a.png", "a.tif"}) {
        const ReadBack picture = written(name, frame, true);
        ASSERT_EQ(picture.spec.format, OIIO::TypeUInt8) << name;
        for (int x = 0; x < 256; ++x) {
            ASSERT_EQ(picture.at<std::uint8_t>(x, 0, 0), x) << name;
            ASSERT_EQ(picture.at<std::uint8_t>(x, 0, 1), 255 - x) << name;
            ASSERT_EQ(picture.at<std::uint8_t>(x, 0, 2), 7) << name;
        }
    }
}

TEST_F(Picture, RawKeepsSixteenBitCodesOnTheHostsScale) {
    Frame<std::uint16_t> frame(3, 1, Depth::Bits16);
    frame.set(0, 0, 32768, 0, 1, 2);
    frame.set(1, 0, 32768, 255, 256, 257);
    frame.set(2, 0, 32768, 16384, 32767, 32768);
    for (const char* name : {"a.png", "a.tif"}) {
        const ReadBack picture = written(name, frame, true);
        ASSERT_EQ(picture.spec.format, OIIO::TypeUInt16) << name;
        const int expected[] = {0, 1, 2, 255, 256, 257, 16384, 32767, 32768};
        for (int i = 0; i < 9; ++i) {
            EXPECT_EQ(picture.at<std::uint16_t>(i / 3, 0, i % 3), expected[i]) << name;
        }
    }
}

TEST_F(Picture, JpegIsCloseToTheCodes) {
    Frame<float> frame(32, 32, Depth::Float);
    support::for_each_pixel(32, 32, [&](int x, int y) { frame.set(x, y, 1, 0.5F, 0.2F, 0.01F); });
    const ReadBack picture = written("a.jpg", frame);
    EXPECT_NEAR(picture.at<std::uint8_t>(16, 16, 0), 188, 3);
    EXPECT_NEAR(picture.at<std::uint8_t>(16, 16, 1), 124, 3);
    EXPECT_NEAR(picture.at<std::uint8_t>(16, 16, 2), 25, 3);
}

TEST_F(Picture, SaysHowItWasMade) {
    Frame<float> frame(2, 2, Depth::Float);
    PictureInfo info;
    info.title = "Star field";
    info.details = {{"catalogue", "hipparcos.stars"},
                    {"control:Star Brightness", "5"},
                    {"long", std::string(3000, 'x')}};
    info.settings = "KELVMETA1 float:gain=0.5";
    for (const char* name : {"a.exr", "a.tif", "a.png", "a.jpg"}) {
        SCOPED_TRACE(name);
        write_picture(folder / name, frame.view(), info, {});
        const OIIO::ImageSpec spec = read_back(folder / name).spec;
        const std::string description = spec.get_string_attribute("ImageDescription");
        EXPECT_EQ(description,
                  "Star field\ncatalogue: hipparcos.stars\ncontrol:Star Brightness: 5\nlong: " +
                      std::string(3000, 'x'));
        EXPECT_EQ(spec.get_string_attribute("Software"), "Lumivar 2.0.0");
    }
    const OIIO::ImageSpec spec = read_back(folder / "a.exr").spec;
    EXPECT_EQ(spec.get_string_attribute("lumivar:catalogue"), "hipparcos.stars");
    EXPECT_EQ(spec.get_string_attribute("lumivar:control:Star Brightness"), "5");
    for (const char* name : {"a.exr", "a.png"}) {
        EXPECT_EQ(read_back(folder / name).spec.get_string_attribute("lumivar:settings"),
                  "KELVMETA1 float:gain=0.5");
    }
}

TEST_F(Picture, SameFrameGivesTheSameBytes) {
    Frame<float> frame(5, 4, Depth::Float);
    for (const char* name : {"a.png", "a.jpg"}) {  // the others hold the date of making
        write_picture(folder / name, frame.view(), {}, {});
        const std::string first = read_file(folder / name);
        write_picture(folder / name, frame.view(), {}, {});
        EXPECT_TRUE(read_file(folder / name) == first) << name;
    }
}

TEST_F(Picture, RefusesWhatDoesNotGoTogether) {
    const auto fault = [](const std::string& path, Depth depth, bool raw) {
        return failure_of([&] { lumivar::check_picture_request(path, depth, {.raw = raw}); });
    };
    for (const std::string path : {"a.gif", "exr"}) {
        EXPECT_EQ(fault(path, Depth::Bits8, false),
                  "cannot tell the kind of picture from the name \"" + path +
                      "\"; end it with .exr, .tif, .png or .jpg");
    }
    EXPECT_EQ(fault("a.png", Depth::Float, true),
              "--raw writes integer codes, and a float frame has none; add --depth 8 or 16");
    EXPECT_EQ(fault("a.exr", Depth::Bits8, true),
              "--raw writes integer codes, and .exr has no channels for them; use .png or .tif");
    EXPECT_EQ(fault("a.jpg", Depth::Bits16, true),
              "--raw with 16 bits does not fit .jpg; use .png or .tif, or --depth 8");
    EXPECT_EQ(fault("a.jpg", Depth::Bits8, true), "no failure");
    EXPECT_EQ(fault("a.PNG", Depth::Bits16, true), "no failure");
}

TEST_F(Picture, TellsCompositingProgramsOfItsShot) {
    Frame<float> frame(2, 2, Depth::Float);
    PictureInfo info;
    info.shot.frame_rate = {24, 1};
    info.shot.frame = 90000 + 24 * 61 + 7;
    info.shot.world_to_camera.emplace();
    for (std::size_t i = 0; i < 16; ++i) {
        (*info.shot.world_to_camera)[i] = static_cast<float>(i) + 0.5F;
    }
    write_picture(folder / "a.exr", frame.view(), info, {});
    const OIIO::ImageSpec spec = read_back(folder / "a.exr").spec;
    int rate[2] = {0, 0};
    ASSERT_TRUE(spec.getattribute("framesPerSecond", OIIO::TypeRational, rate));
    EXPECT_EQ(rate[0], 24);
    EXPECT_EQ(rate[1], 1);
    // The names and types of the format itself, whatever the library calls them.
    const std::string bytes = read_file(folder / "a.exr");
    for (const std::string& attribute :
         {std::string("framesPerSecond\0rational", 24), std::string("timeCode\0timecode", 17),
          std::string("worldToCamera\0m44f", 18)}) {
        EXPECT_NE(bytes.find(attribute), std::string::npos) << attribute;
    }
    EXPECT_EQ(spec.get_int_attribute("frame"), 91471);
    // 91471 frames are 3811 s and 7 frames: 1 h 3 min 31 s.
    std::uint32_t code[2] = {0, 0};
    ASSERT_TRUE(spec.getattribute("smpte:TimeCode", OIIO::TypeTimeCode, code));
    EXPECT_EQ(code[0], 0x01033107U);
    float matrix[16] = {};
    ASSERT_TRUE(spec.getattribute("worldtocamera", OIIO::TypeMatrix, matrix));
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(matrix[i], static_cast<float>(i) + 0.5F);
    }
}

TEST_F(Picture, HasNoTimeCodeWhereTheRateIsBroken) {
    Frame<float> frame(2, 2, Depth::Float);
    PictureInfo info;
    info.shot.frame_rate = {24000, 1001};
    info.shot.frame = 3;
    write_picture(folder / "a.exr", frame.view(), info, {});
    const OIIO::ImageSpec spec = read_back(folder / "a.exr").spec;
    int rate[2] = {0, 0};
    ASSERT_TRUE(spec.getattribute("framesPerSecond", OIIO::TypeRational, rate));
    EXPECT_EQ(rate[0], 24000);
    EXPECT_EQ(rate[1], 1001);
    std::uint32_t code[2] = {0, 0};
    EXPECT_FALSE(spec.getattribute("smpte:TimeCode", OIIO::TypeTimeCode, code));
}

TEST_F(Picture, OfSixteenBitsIsEncodedToo) {
    Frame<float> frame(1, 1, Depth::Float);
    frame.set(0, 0, 1, 0.2F, 0.5F, 0.002F);  // 31754, 48192, 1693: see the test of the codes
    lumivar::PictureContent content;
    content.look = lumivar::Look{};
    content.look->bits = 16;
    for (const char* name : {"a.png", "a.tif"}) {
        write_picture(folder / name, frame.view(), {}, content);
        const ReadBack picture = read_back(folder / name);
        ASSERT_EQ(picture.spec.format, OIIO::TypeUInt16) << name;
        EXPECT_EQ(picture.samples<std::uint16_t>(),
                  (std::vector<std::uint16_t>{31754, 48192, 1693}));
    }
}

TEST_F(Picture, OfLinearLightHasAHaloWhereOneIsWanted) {
    Frame<float> frame(64, 64, Depth::Float);
    support::for_each_pixel(64, 64, [&](int x, int y) { frame.set(x, y, 0.25F, 0, 0, 0); });
    frame.set(32, 32, 0.25F, 0, 1000, 0);
    lumivar::PictureContent content;
    content.linear_halo = 1.0;
    write_picture(folder / "a.exr", frame.view(), {}, content);
    const ReadBack picture = read_back(folder / "a.exr");
    // At 64 pixels of width the Gaussians' sigmas are a thirtieth: 0.1, 0.267, 0.8 and 2.33.
    EXPECT_LT(picture.at<float>(32, 32, 1), 1000.0F);
    EXPECT_GT(picture.at<float>(34, 32, 1), 0.1F);
    EXPECT_EQ(picture.at<float>(34, 32, 0), 0.0F);
    EXPECT_EQ(picture.at<float>(34, 32, 3), 0.25F);
}

TEST_F(Picture, ThatAFormatCannotHoldIsAFailureThatNamesTheFile) {
    const Frame<float> wide(65536, 1, Depth::Float);  // a .jpg has 16 bits for its width
    const std::string failure =
        failure_of([&] { write_picture(folder / "a.jpg", wide.view(), {}, {}); });
    EXPECT_EQ(failure.rfind("cannot write " + (folder / "a.jpg") + ": ", 0), 0U) << failure;
    EXPECT_NE(failure.find("dimension"), std::string::npos) << failure;
    EXPECT_TRUE(names_in(folder.path()).empty());
}

TEST_F(Picture, RefusesALookWhereItCannotBe) {
    lumivar::PictureContent content;
    content.look = lumivar::Look{};
    const auto fault = [&](const std::string& path) {
        return failure_of([&] { lumivar::check_picture_request(path, Depth::Float, content); });
    };
    EXPECT_EQ(fault("a.exr"),
              ".exr stays scene-linear, without exposure and view; use .png, .jpg or .tif for a "
              "picture to look at");
    EXPECT_EQ(fault("a.jpg"), "no failure");
    content.look->bits = 16;
    EXPECT_EQ(fault("a.jpg"), ".jpg has no channels of 16 bits; use .png or .tif");
    EXPECT_EQ(fault("a.tif"), "no failure");
}

TEST_F(Picture, IsPackedAsAskedAndKeepsEveryBitButForCosines) {
    using lumivar::ExrCompression;
    Frame<float> frame(40, 37, Depth::Float);
    support::for_each_pixel(40, 37, [&](int x, int y) {
        const float light = std::exp(-0.05F * static_cast<float>((x - 20) * (x - 20) + y));
        frame.set(x, y, 1, light, 0.5F * light, 1e-5F * static_cast<float>(x * y % 7));
    });
    write_picture(folder / "usual.exr", frame.view(), {}, {});
    const ReadBack usual = read_back(folder / "usual.exr");
    EXPECT_EQ(usual.spec.get_string_attribute("compression"), "zips");
    const std::pair<ExrCompression, const char*> kinds[] = {
        {ExrCompression::None, "none"}, {ExrCompression::Rle, "rle"},
        {ExrCompression::Zips, "zips"}, {ExrCompression::Zip, "zip"},
        {ExrCompression::Piz, "piz"},   {ExrCompression::Dwaa, "dwaa"}};
    for (const auto& [compression, name] : kinds) {
        write_picture(folder / "a.exr", frame.view(), {}, {.compression = compression});
        const ReadBack picture = read_back(folder / "a.exr");
        EXPECT_EQ(picture.spec.get_string_attribute("compression").substr(0, 4),
                  std::string(name).substr(0, 4));
        if (compression != ExrCompression::Dwaa) {
            EXPECT_EQ(picture.bytes, usual.bytes) << name;
        } else {
            EXPECT_NEAR(picture.at<float>(20, 0, 0), 1.0F, 0.05F);
        }
    }
}

TEST_F(Picture, OfHalvesRoundsToElevenBits) {
    Frame<float> frame(3, 300, Depth::Float);  // more rows than are converted at a time
    frame.set(0, 299, 1.0F, 0.5F, 1.0F + 0x1p-10F, 1.0F + 0x1p-12F);
    frame.set(1, 0, 1.0F, 65504.0F, 65520.0F, -1e30F);
    frame.set(2, 299, 1.0F, std::numeric_limits<float>::quiet_NaN(), 0x1p-24F, 0x1p-26F);
    write_picture(folder / "a.exr", frame.view(), {}, {.half = true});
    const ReadBack picture = read_back(folder / "a.exr");
    ASSERT_EQ(picture.spec.format, OIIO::TypeHalf);
    const auto bits = [&](int x, int y, int c) { return picture.at<std::uint16_t>(x, y, c); };
    // By the format of IEEE 754: a sign, five bits of exponent with a bias of 15, ten of fraction.
    EXPECT_EQ(bits(0, 299, 0), 0x3800);
    EXPECT_EQ(bits(0, 299, 1), 0x3C01);
    EXPECT_EQ(bits(0, 299, 2), 0x3C00);
    EXPECT_EQ(bits(0, 299, 3), 0x3C00);
    EXPECT_EQ(bits(1, 0, 0), 0x7BFF) << "the largest number";
    EXPECT_EQ(bits(1, 0, 1), 0x7C00) << "infinite from halfway to the next one on";
    EXPECT_EQ(bits(1, 0, 2), 0xFC00);
    EXPECT_GT(bits(2, 299, 0) & 0x7FFFU, 0x7C00U) << "not a number";
    EXPECT_EQ(bits(2, 299, 1), 0x0001) << "the smallest";
    EXPECT_EQ(bits(2, 299, 2), 0x0000);
    lumivar::PictureContent content;
    content.half = true;
    EXPECT_EQ(failure_of([&] { lumivar::check_picture_request("a.tif", Depth::Float, content); }),
              "--half and --compression are of .exr; leave them out, or name the picture .exr");
}

TEST_F(Picture, OfAConfigurationsViewIsNotCalledSrgb) {
    write_file(folder / "config.ocio", R"(ocio_profile_version: 2
roles: {default: linear, scene_linear: linear}
displays:
  Screen:
    - !<View> {name: Plain, colorspace: linear}
colorspaces:
  - !<ColorSpace> {name: linear}
)");
    Frame<float> frame(2, 2, Depth::Float);
    lumivar::PictureContent content;
    content.look.emplace();
    write_picture(folder / "a.png", frame.view(), {}, content);
    EXPECT_NE(read_file(folder / "a.png").find("sRGB"), std::string::npos);
    content.look->view = lumivar::Look::View::Managed;
    content.look->managed = lumivar::found_in_config({folder / "config.ocio", "", "", ""});
    write_picture(folder / "a.png", frame.view(), {}, content);
    EXPECT_EQ(read_file(folder / "a.png").find("sRGB"), std::string::npos);
    EXPECT_EQ(read_file(folder / "a.png").find("gAMA"), std::string::npos);
}

}  // namespace
