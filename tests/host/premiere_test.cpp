// Frames as Premiere Pro asks for them: in the pixel formats that the effect declares.
#include <gtest/gtest.h>
#include <host/errors.h>
#include <host/session.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "modules/test_effect.h"
#include "session_scene.h"
#include "support/variable.h"
#include "violations.h"

namespace {

using namespace test_effect;
using host::ChannelOrder;
using host::Depth;
using host::Frame;
using host::Session;
using host::Track;

template <class Channel>
using Pixel = std::array<Channel, 4>;

// As the interface has them.
constexpr std::int32_t kArgb8 = 0x62677261;
constexpr std::int32_t kBgra8 = 0x61726762;
constexpr std::int32_t kBgra16 = 0x61726742;
constexpr std::int32_t kBgraFloat = 0x61724742;

/// A session with an effect that declares to Premiere Pro what the mischief says.
class Premiere : public testing::Test {
protected:
    Session open(Mischief mischief) {
        asked_.set(std::to_string(mischief));
        return Session(CONFORMING_EFFECT, {.application = host::Application::Premiere});
    }

    /// The effect fills with the alpha 255, red of the control, green 60, blue 70.
    static Frame draw(Session& session, Depth depth) {
        host::Scene scene = session_scene::small_scene();
        scene.controls.push_back(session_scene::set("Count", Track(9.0)));
        return session.render(scene, {0, 24}, {.depth = depth});
    }

    Frame draw(Mischief mischief, Depth depth) {
        Session session = open(mischief);
        Frame frame = draw(session, depth);
        EXPECT_EQ(frame.undrawn_pixels, 0U);
        EXPECT_EQ(frame.status, 0);
        EXPECT_TRUE(frame.violations.empty()) << frame.violations.front();
        return frame;
    }

    static std::string refusal(Session& session, Depth depth) {
        try {
            draw(session, depth);
        } catch (const host::FrameError& error) {
            return error.what();
        }
        return "none";
    }

private:
    Variable asked_{"MISCHIEF", ""};
};

constexpr char kNoSixteen[] = "the effect does not declare 16-bit BGRA to Premiere Pro";
constexpr char kNoFloats[] = "the effect does not declare float BGRA to Premiere Pro";

/// The pixel's channels in their order in memory.
template <class Channel>
Pixel<Channel> in_memory(const Frame& frame, int x, int y) {
    Pixel<Channel> channels;
    std::memcpy(channels.data(), frame.world.row(y) + static_cast<std::size_t>(x) * sizeof channels,
                sizeof channels);
    return channels;
}

/// Both ways of looking at a filled frame, in two corners.
template <class Channel>
void expect_filled(const Frame& frame, std::int32_t format, Channel alpha, Channel red,
                   Channel green, Channel blue) {
    EXPECT_EQ(frame.pixel_format, format);
    EXPECT_EQ(frame.world.order(), ChannelOrder::Bgra);
    for (const auto& [x, y] : {std::pair(0, 0), std::pair(63, 35)}) {
        EXPECT_EQ(in_memory<Channel>(frame, x, y), (Pixel<Channel>{blue, green, red, alpha}));
        EXPECT_EQ(frame.world.pixel<Channel>(x, y), (Pixel<Channel>{alpha, red, green, blue}));
    }
}

TEST_F(Premiere, FillsEveryDepthUpToItsFullScale) {
    expect_filled<std::uint8_t>(draw(kPremiereFormats, Depth::Bits8), kBgra8, 255, 9, 60, 70);
    // 32768 / 255 times 70 is 8995.1, times 60 is 7710.1, times 9 is 1156.5 and a bit.
    expect_filled<std::uint16_t>(draw(kPremiereFormats, Depth::Bits16), kBgra16, 32768, 1157, 7710,
                                 8995);
    expect_filled<float>(draw(kPremiereFormats, Depth::Float), kBgraFloat, 1.0F, 9.0F / 255.0F,
                         60.0F / 255.0F, 70.0F / 255.0F);
}

TEST_F(Premiere, GivesEightBitArgbToAnEffectThatDeclaresNothing) {
    Session session = open(kNoPremiereFormats);
    EXPECT_TRUE(session.declared_pixel_formats().empty());
    const Frame frame = draw(session, Depth::Bits8);
    EXPECT_EQ(frame.pixel_format, kArgb8);
    EXPECT_EQ(frame.world.order(), ChannelOrder::Argb);
    EXPECT_EQ(in_memory<std::uint8_t>(frame, 63, 35), (Pixel<std::uint8_t>{255, 9, 60, 70}));
    EXPECT_EQ(refusal(session, Depth::Bits16), kNoSixteen);
    EXPECT_EQ(refusal(session, Depth::Float), kNoFloats);
}

TEST_F(Premiere, RefusesDepthsThatAreNotDeclared) {
    Session session = open(kPremiereFloat);
    EXPECT_EQ(session.declared_pixel_formats(), (std::vector<std::int32_t>{kBgra8, kBgraFloat}));
    EXPECT_EQ(refusal(session, Depth::Bits8), "none");
    EXPECT_EQ(refusal(session, Depth::Bits16), kNoSixteen)
        << "whatever it declares to After Effects";
    EXPECT_EQ(refusal(session, Depth::Float), "none");
    session.close();
    Session alone = open(kPremiereFloatAlone);
    EXPECT_EQ(refusal(alone, Depth::Bits8),
              "the effect declares neither 8-bit BGRA nor 8-bit ARGB to Premiere Pro");
    EXPECT_EQ(refusal(alone, Depth::Float), "none");
}

TEST_F(Premiere, TakesOfTwoFormatsOfADepthTheOneDeclaredFirst) {
    Session session = open(kPremiereArgb);
    EXPECT_EQ(draw(session, Depth::Bits8).pixel_format, kArgb8);
    EXPECT_EQ(refusal(session, Depth::Bits16), kNoSixteen) << "deeper ARGB is After Effects' alone";
    EXPECT_EQ(refusal(session, Depth::Float), kNoFloats);
}

TEST_F(Premiere, ReadsWhatAnEffectWroteInItsOwnOrder) {
    EXPECT_EQ(draw(kWriteInPremiere, Depth::Bits8).world.pixel<std::uint8_t>(63, 35),
              (Pixel<std::uint8_t>{255, 7, 35, 63}));
    EXPECT_EQ(draw(kWriteInPremiere, Depth::Bits16).world.pixel<std::uint16_t>(63, 35),
              (Pixel<std::uint16_t>{32768, 7, 35, 63}));
    EXPECT_EQ(draw(kWriteInPremiere, Depth::Float).world.pixel<float>(63, 35),
              (Pixel<float>{1, 7, 35, 63}));
}

TEST_F(Premiere, HasNoSixteenBitPixelAccess) {
    Session session = open(kAskPixels16InPremiere);
    for (const Depth depth : {Depth::Bits8, Depth::Bits16, Depth::Float}) {
        EXPECT_EQ(draw(session, depth).status, 515) << static_cast<int>(depth);
    }
}

TEST_F(Premiere, GuardsTheBytesAroundEveryFormat) {
    Session session = open(kWritePastRowInPremiere16);
    EXPECT_TRUE(draw(session, Depth::Float).violations.empty());
    EXPECT_EQ(joined(draw(session, Depth::Bits16).violations),
              "the plug-in wrote outside the output's pixels: in the padding of row 0, 3 bytes "
              "behind its last pixel");
}

}  // namespace
