// What the host notices of an effect that breaks the rules.
#include <gtest/gtest.h>
#include <host/session.h>

#include <cstddef>
#include <cstdlib>
#include <ostream>
#include <string>

#include "modules/test_effect.h"
#include "session_scene.h"

namespace {

using namespace test_effect;
using host::Frame;
using host::RenderOptions;
using host::Scene;
using host::Session;
using host::Track;
using session_scene::set;
using session_scene::small_scene;

Scene mischievous(Mischief mischief) {
    Scene scene = small_scene();
    scene.controls = {set("Mischief", Track(static_cast<double>(mischief)))};
    return scene;
}

Frame render(Mischief mischief) {
    Session session(TEST_EFFECT);
    return session.render(mischievous(mischief), {0, 24});
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

struct Noticed {
    Mischief mischief;
    const char* violation;
};

std::ostream& operator<<(std::ostream& out, const Noticed& noticed) {
    return out << noticed.violation;
}

class Violation : public testing::TestWithParam<Noticed> {};

TEST_P(Violation, IsNoticedInThatFrameAndInNoOther) {
    Session session(TEST_EFFECT);
    const Frame bad = session.render(mischievous(GetParam().mischief), {0, 24});
    EXPECT_EQ(joined(bad.violations), GetParam().violation);
    const Frame good = session.render(mischievous(kNone), {0, 24});
    EXPECT_EQ(joined(good.violations), "");
    EXPECT_EQ(joined(session.violations()), GetParam().violation);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, Violation,
    testing::Values(
        Noticed{kWritePastRow,
                "the plug-in wrote outside the output's pixels: in the padding of row "
                "1, 3 bytes behind its last pixel"},
        Noticed{kWriteBefore,
                "the plug-in wrote outside the output's pixels: 2 bytes before the first pixel"},
        Noticed{kWriteBehind,
                "the plug-in wrote outside the output's pixels: 5 bytes behind the last row"},
        // Rows of 64 float pixels and 20 bytes.
        Noticed{kWriteRowAbove,
                "the plug-in wrote outside the output's pixels: 532 bytes before the first pixel"},
        Noticed{kWriteRowBelow,
                "the plug-in wrote outside the output's pixels: 512 bytes behind the last row"},
        Noticed{kWriteInput, "the plug-in wrote to the input layer's pixels"},
        Noticed{kClearInput, "the plug-in wrote to the input layer's pixels"},
        Noticed{kHalveInput, "the plug-in wrote to the input layer's pixels"},
        Noticed{kLeakSuite,
                "suite \"PF World Suite\" version 2 was acquired 1 times more than it was "
                "released"},
        Noticed{kReleaseUnheldSuite, "ReleaseSuite: name=\"PF World Suite\" version=2 is not held"},
        Noticed{kNoDeleter, "PF_Cmd_SMART_PRE_RENDER: pre-render data without a deleter is lost"},
        Noticed{kUnknownCheckout,
                "checkout_layer_pixels: the id 99 was not checked out at pre-render"},
        Noticed{kFetchTwice, "checkout_layer_pixels: the id 0 was fetched already"},
        Noticed{kDuplicateCheckout, "checkout_layer: the id 0 is in use"},
        Noticed{kNegativeCheckout, "checkout_layer: a negative id, -7"},
        Noticed{kOutputFirst, "checkout_output: the output is asked for before any input"},
        Noticed{kLargeResult,
                "PF_Cmd_SMART_PRE_RENDER: the result rectangle reaches beyond the request"},
        Noticed{kOverlongMessage, "sprintf: the text for return_msg is longer than it"},
        Noticed{kUnterminatedMessage,
                "PF_Cmd_SMART_RENDER: return_msg has no terminator within its 256 characters"},
        Noticed{kLeakHandle, "1 host handles were not disposed of"},
        Noticed{kCallFromThread, "3 calls from a thread without a command"},
        Noticed{kDisposeTwice,
                "host_dispose_handle: not a handle of this host, or disposed of already"},
        Noticed{kRubbishForCallbacks,
                "PF_Cmd_SMART_RENDER: the callbacks' slot holds neither them nor a handle"},
        Noticed{kChangeFlags,
                "PF_Cmd_SMART_PRE_RENDER: out_flags was changed\n"
                "PF_Cmd_SMART_PRE_RENDER: out_flags2 was changed"},
        Noticed{kWriteInData, "PF_Cmd_SMART_PRE_RENDER: the input record was written to"},
        Noticed{kWriteRenderInput,
                "PF_Cmd_SMART_RENDER: the render input's record was written to\n"
                "PF_Cmd_SMART_RENDER: the output world's record was written to\n"
                "PF_Cmd_SMART_RENDER: the input world's record was written to"},
        Noticed{kChangeCount, "PF_Cmd_SMART_RENDER: num_params was changed"},
        Noticed{kZeroTimeScale, "checkout_param: null, a time scale of 0, or no frame being made"},
        Noticed{kUnknownParameter, "checkout_param: no parameter 99"},
        Noticed{kForeignWorld,
                "PF_GetPixelFormat: null, or a world that this host did not hand out"}));

TEST(Misbehaviour, AnExceptionOutOfTheEntryPointIsADefectOfTheModule) {
    Session session(TEST_EFFECT);
    const auto defect = [&](Mischief mischief) -> std::string {
        try {
            session.render(mischievous(mischief), {0, 24});
        } catch (const host::ModuleDefect& error) {
            return error.what();
        }
        return "none";
    };
    EXPECT_EQ(defect(kThrowStandard),
              "defect of the plug-in: an exception of type std::runtime_error (\"boom\") left it "
              "during PF_Cmd_SMART_RENDER; a real host would have crashed");
    EXPECT_EQ(defect(kThrowForeign),
              "defect of the plug-in: an exception of type (anonymous namespace)::ForeignTrouble "
              "left it during PF_Cmd_SMART_RENDER; a real host would have crashed");
    EXPECT_EQ(defect(kThrowNumber),
              "defect of the plug-in: an exception of type int (516) left it during "
              "PF_Cmd_SMART_RENDER; a real host would have crashed");
    EXPECT_EQ(
        defect(kThrowInDeleter),
        "defect of the plug-in: an exception of type std::runtime_error (\"deleter trouble\") "
        "left it during the deletion of its pre-render data; a real host would have crashed");
    EXPECT_EQ(session.live_handles(), 0u) << "the pre-render data was deleted all the same";
    EXPECT_TRUE(session.render(mischievous(kNone), {0, 24}).drawn) << "the session goes on";
}

TEST(Misbehaviour, WishesOfTheMomentAndDynamicFlagsAreNone) {
    Session session(TEST_EFFECT);
    EXPECT_EQ(joined(session.render(mischievous(kAskForRefresh), {0, 24}).violations), "");
    session.dynamic_flags(small_scene(), {0, 24});
    EXPECT_EQ(joined(session.violations()), "");
}

TEST(Misbehaviour, AnUndrawnFrameIsSeen) {
    const Frame frame = render(kDrawNothing);
    EXPECT_EQ(frame.status, 0);
    EXPECT_TRUE(frame.rendered);
    EXPECT_FALSE(frame.drawn);
    EXPECT_EQ(frame.undrawn_pixels, 64u * 36u);
}

TEST(Misbehaviour, WhatIsLeftUndrawnHoldsTheMarkWishedFor) {
    Session session(TEST_EFFECT);
    RenderOptions options;
    options.mark = std::byte{0x11};
    const Frame blank = session.render(mischievous(kDrawNothing), {0, 24}, options);
    EXPECT_EQ(blank.undrawn_pixels, 64u * 36u);
    EXPECT_EQ(blank.world.row(35)[63 * 16 + 15], std::byte{0x11});
    const Frame drawn = session.render(mischievous(kNone), {0, 24}, options);
    EXPECT_EQ(drawn.undrawn_pixels, 0u);
    const Frame partly = session.render(mischievous(kForgetAlpha), {0, 24}, options);
    EXPECT_EQ(partly.undrawn_pixels, 0u) << "of whole pixels";
    EXPECT_EQ(partly.world.row(0)[3], std::byte{0x11});
    EXPECT_NE(partly.world.row(0)[11], std::byte{0x11});
}

TEST(Misbehaviour, AHalfDrawnFrameIsSeen) {
    const Frame frame = render(kDrawHalf);
    EXPECT_TRUE(frame.drawn);
    EXPECT_EQ(frame.undrawn_pixels, 64u * 18u);
}

TEST(Misbehaviour, AFailedRenderKeepsItsStatusAndMessage) {
    const Frame frame = render(kFailWithMessage);
    EXPECT_EQ(frame.status, 516);
    EXPECT_EQ(frame.message.text, "no can do");
    EXPECT_TRUE(frame.message.is_error);
    EXPECT_FALSE(frame.drawn);
    EXPECT_EQ(frame.data_deletions, 1);
}

TEST(Misbehaviour, AnOverlongMessageIsCutToTheBuffer) {
    EXPECT_EQ(render(kOverlongMessage).message.text, std::string(255, 'm'));
    EXPECT_EQ(render(kUnterminatedMessage).message.text, std::string(256, 'u'));
}

TEST(Misbehaviour, AnEmptyResultIsNotRendered) {
    const Frame frame = render(kEmptyResult);
    EXPECT_FALSE(frame.rendered);
    EXPECT_EQ(frame.data_deletions, 1);
    EXPECT_TRUE(frame.violations.empty());
}

TEST(Misbehaviour, AnUnknownSuiteIsRefusedWithANullTable) {
    const Frame frame = render(kUnknownSuite);
    EXPECT_EQ(frame.status, 0) << "the effect checks it";
    EXPECT_TRUE(frame.drawn);
    EXPECT_TRUE(frame.violations.empty()) << "asking is allowed";
}

TEST(Misbehaviour, AHandleInPlaceOfTheCallbacksIsDisposedOf) {
    Session session(TEST_EFFECT);
    const Frame frame = session.render(mischievous(kHandleForCallbacks), {0, 24});
    EXPECT_TRUE(frame.handle_left);
    EXPECT_FALSE(session.render(mischievous(kNone), {0, 24}).handle_left);
    EXPECT_TRUE(frame.violations.empty()) << frame.violations.front();
    EXPECT_EQ(session.live_handles(), 0u);
}

TEST(Misbehaviour, AHandleWithoutADeleterIsMissedAtTheEnd) {
    Session session(TEST_EFFECT);
    session.render(mischievous(kLeakHandle), {0, 24});
    session.close();
    EXPECT_EQ(joined(session.violations()),
              "1 host handles were not disposed of\n1 host handles were not disposed of");
}

TEST(MisbehaviourDeathTest, ASlotThatIsNotProvidedAbortsWithItsName) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(render(kCallUnprovided),
                 "stand-in host: the plug-in called AEGP Layer Suite 11: AEGP_GetLayerName, which "
                 "this host does not provide");
}

/// A set-up fault for the length of a test.
class SetUpFault : public testing::Test {
protected:
    static void choose(const char* fault) { setenv("SET_UP_FAULT", fault, 1); }
    ~SetUpFault() override { unsetenv("SET_UP_FAULT"); }

    static std::string violations_with(const char* fault) {
        choose(fault);
        Session session(SET_UP_FAULTS);
        session.close();
        return joined(session.violations());
    }
    static std::string refusal_with(const char* fault) {
        choose(fault);
        try {
            const Session session(SET_UP_FAULTS);
        } catch (const host::EffectError& error) {
            return error.what() + (" " + std::to_string(error.command())) + " " +
                   std::to_string(error.status()) + " [" + error.message() + "]";
        }
        return "accepted";
    }
};

TEST_F(SetUpFault, NoneIsNoViolation) { EXPECT_EQ(violations_with(""), ""); }

TEST_F(SetUpFault, ARefusalCarriesTheEffectsMessage) {
    EXPECT_EQ(refusal_with("refuse"), "not today 1 512 [not today]");
    EXPECT_EQ(refusal_with("refuse silently"),
              "the plug-in answered PF_Cmd_GLOBAL_SETUP with status 4 1 4 []");
    EXPECT_EQ(refusal_with("parameters refused"),
              "the plug-in answered PF_Cmd_PARAMS_SETUP with status 512 4 512 []");
}

TEST_F(SetUpFault, ARefusalTellsWhatIsStillHeld) {
    choose("refuse holding a suite");
    try {
        const Session session(SET_UP_FAULTS);
        FAIL() << "accepted";
    } catch (const host::EffectError& error) {
        EXPECT_EQ(joined(error.violations()),
                  "suite \"PF Handle Suite\" version 2 was acquired 1 times more than it was "
                  "released");
    }
}

TEST_F(SetUpFault, ARefusedPlugInCanBeTriedAgain) {
    refusal_with("refuse");
    choose("");
    EXPECT_NO_THROW(Session{SET_UP_FAULTS});
}

TEST_F(SetUpFault, AnExceptionIsADefect) {
    choose("throw");
    EXPECT_THROW(Session{SET_UP_FAULTS}, host::ModuleDefect);
    choose("throw at the end");
    Session session(SET_UP_FAULTS);
    EXPECT_THROW(session.close(), host::ModuleDefect);
    choose("");
    EXPECT_NO_THROW(Session{SET_UP_FAULTS}) << "unloaded all the same";
}

TEST_F(SetUpFault, AMessageWithoutFailureIsKept) {
    choose("warn");
    const Session session(SET_UP_FAULTS);
    ASSERT_EQ(session.messages().size(), 1u);
    EXPECT_EQ(session.messages()[0].text, "something is missing");
    EXPECT_TRUE(session.messages()[0].is_error);
    EXPECT_EQ(session.info().out_flags, 0) << "the display flag is no property of the effect";
}

TEST_F(SetUpFault, AWrongCountOfParametersIsNoticed) {
    EXPECT_EQ(violations_with("wrong count"),
              "PF_Cmd_PARAMS_SETUP: num_params is 5, but with the input layer 2 were added");
}

TEST_F(SetUpFault, AParameterInAnotherPlaceIsNoticedAndRefused) {
    EXPECT_EQ(refusal_with("inserted"),
              "the plug-in answered PF_Cmd_PARAMS_SETUP with status 513 4 513 []");
}

TEST_F(SetUpFault, AParameterOutsideParameterSetUpIsNoticed) {
    EXPECT_EQ(violations_with("parameter too early"),
              "add_param: null, or outside parameter set-up");
}

TEST_F(SetUpFault, TextsOutOfOrderAreNoticed) {
    EXPECT_EQ(violations_with("null label"), "add_param: the label of \"Box\" is null");
    EXPECT_EQ(violations_with("long name"),
              "add_param: the name \"A name of more than thirty-one l\" has no terminator");
}

TEST_F(SetUpFault, WritingBehindTheOutputRecordIsNoticed) {
    EXPECT_EQ(violations_with("overrun"),
              "PF_Cmd_GLOBAL_SETUP: bytes behind the output record were written to");
}

TEST_F(SetUpFault, ASuiteHeldToTheEndIsNoticed) {
    EXPECT_EQ(violations_with("sequence suite"),
              "suite \"PF Handle Suite\" version 2 was acquired 1 times more than it was released");
}

TEST_F(SetUpFault, AnEffectWithoutSmartRenderingDrawsNoFloats) {
    choose("");
    Session session(SET_UP_FAULTS);
    RenderOptions options;
    EXPECT_THROW(session.render(small_scene(), {0, 24}, options), host::FrameError);
    options.depth = host::Depth::Bits16;
    EXPECT_THROW(session.render(small_scene(), {0, 24}, options), host::FrameError);
    options.depth = host::Depth::Bits8;
    EXPECT_FALSE(session.render(small_scene(), {0, 24}, options).drawn);
}

}  // namespace
