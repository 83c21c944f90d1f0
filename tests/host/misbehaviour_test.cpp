// What the host notices of an effect that breaks the rules.
#include <gtest/gtest.h>
#include <host/session.h>

#include <cstddef>
#include <string>
#include <utility>

#include "modules/noticed.h"
#include "modules/test_effect.h"
#include "session_scene.h"
#include "support/variable.h"
#include "violations.h"

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

class Violation : public testing::TestWithParam<Noticed> {};
INSTANTIATE_TEST_SUITE_P(Rules, Violation, testing::ValuesIn(kNoticed));

TEST_P(Violation, IsNoticedInThatFrameAndInNoOther) {
    Session session(TEST_EFFECT);
    const Frame bad = session.render(mischievous(GetParam().mischief), {0, 24});
    EXPECT_EQ(joined(bad.violations), GetParam().text);
    for (const host::Violation& violation : bad.violations) {
        EXPECT_EQ(violation.rule, GetParam().rule);
    }
    const Frame good = session.render(mischievous(kNone), {0, 24});
    EXPECT_EQ(joined(good.violations), "");
    EXPECT_EQ(joined(session.violations()), GetParam().text);
}

TEST(Misbehaviour, AnExceptionOutOfTheEntryPointIsADefectOfTheModule) {
    const std::pair<Mischief, const char*> defects[] = {
        {kThrowStandard, "std::runtime_error (\"boom\") left it during PF_Cmd_SMART_RENDER"},
        {kThrowForeign, "(anonymous namespace)::ForeignTrouble left it during PF_Cmd_SMART_RENDER"},
        {kThrowNumber, "int (516) left it during PF_Cmd_SMART_RENDER"},
        {kThrowInDeleter,
         "std::runtime_error (\"deleter trouble\") left it during the deletion of its pre-render "
         "data"}};
    Session session(TEST_EFFECT);
    for (const auto& [mischief, what] : defects) {
        try {
            session.render(mischievous(mischief), {0, 24});
            ADD_FAILURE() << what;
        } catch (const host::ModuleDefect& error) {
            EXPECT_EQ(error.what(), "defect of the plug-in: an exception of type " +
                                        std::string(what) + "; a real host would have crashed");
        }
    }
    EXPECT_EQ(session.live_handles(), 0u) << "the pre-render data was deleted all the same";
    EXPECT_TRUE(session.render(mischievous(kNone), {0, 24}).drawn) << "the session goes on";
}

TEST(Misbehaviour, WhatIsLeftUndrawnHoldsTheMarkWishedFor) {
    Session session(TEST_EFFECT);
    const RenderOptions options = {.mark = std::byte{0x11}};
    const Frame blank = session.render(mischievous(kDrawNothing), {0, 24}, options);
    EXPECT_EQ(blank.status, 0);
    EXPECT_TRUE(blank.rendered);
    EXPECT_FALSE(blank.drawn);
    EXPECT_EQ(blank.undrawn_pixels, 64u * 36u);
    EXPECT_EQ(blank.world.row(35)[63 * 16 + 15], std::byte{0x11});
    const Frame drawn = session.render(mischievous(kNone), {0, 24}, options);
    EXPECT_EQ(drawn.undrawn_pixels, 0u);
    const Frame partly = session.render(mischievous(kForgetAlpha), {0, 24}, options);
    EXPECT_EQ(partly.undrawn_pixels, 0u) << "of whole pixels";
    EXPECT_EQ(partly.world.row(0)[3], std::byte{0x11});
    EXPECT_NE(partly.world.row(0)[11], std::byte{0x11});
    const Frame half = session.render(mischievous(kDrawHalf), {0, 24});
    EXPECT_TRUE(half.drawn);
    EXPECT_EQ(half.undrawn_pixels, 64u * 18u);
    const Frame over_zeros = session.render(mischievous(kDrawHalf), {0, 24}, {.mark = std::byte{}});
    EXPECT_EQ(over_zeros.undrawn_pixels, 64u * 18u);
}

TEST(Misbehaviour, AFailedRenderKeepsItsStatusAndMessage) {
    const Frame frame = render(kFailWithMessage);
    EXPECT_EQ(frame.status, 516);
    EXPECT_EQ(frame.message.text, "no can do");
    EXPECT_TRUE(frame.message.is_error);
    EXPECT_FALSE(frame.drawn);
    EXPECT_EQ(frame.data_deletions, 1);
    // An overlong one is cut to the buffer.
    EXPECT_EQ(render(kOverlongMessage).message.text, std::string(255, 'm'));
    EXPECT_EQ(render(kUnterminatedMessage).message.text, std::string(256, 'u'));
}

TEST(Misbehaviour, IsNoneInAnEmptyResultAnUnknownSuiteAWishOfTheMomentAndDynamicFlags) {
    const Frame empty = render(kEmptyResult);
    EXPECT_FALSE(empty.rendered);
    EXPECT_EQ(empty.data_deletions, 1);
    EXPECT_TRUE(empty.violations.empty());
    const Frame refused = render(kUnknownSuite);
    EXPECT_EQ(refused.status, 0) << "the effect checks it";
    EXPECT_TRUE(refused.drawn);
    EXPECT_TRUE(refused.violations.empty()) << "asking is allowed";
    Session session(TEST_EFFECT);
    EXPECT_EQ(joined(session.render(mischievous(kAskForRefresh), {0, 24}).violations), "");
    session.dynamic_flags(small_scene(), {0, 24});
    EXPECT_EQ(joined(session.violations()), "");
}

TEST(Misbehaviour, AHandleInPlaceOfTheCallbacksIsDisposedOfAndOneLeftIsMissedAtTheEnd) {
    Session session(TEST_EFFECT);
    const Frame frame = session.render(mischievous(kHandleForCallbacks), {0, 24});
    EXPECT_TRUE(frame.handle_left);
    EXPECT_FALSE(session.render(mischievous(kNone), {0, 24}).handle_left);
    EXPECT_TRUE(frame.violations.empty()) << frame.violations.front();
    EXPECT_EQ(session.live_handles(), 0u);
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

constexpr char kHeldSuite[] =
    "suite \"PF Handle Suite\" version 2 was acquired 1 times more than it was released";

/// A set-up fault for the length of a test.
class SetUpFault : public testing::Test {
protected:
    void choose(const char* fault) { chosen_.set(fault); }
    std::string refusal_with(const char* fault) {
        choose(fault);
        try {
            const Session session(SET_UP_FAULTS);
        } catch (const host::EffectError& error) {
            return error.what() + (" " + std::to_string(error.command())) + " " +
                   std::to_string(error.status()) + " [" + error.message() + "]";
        }
        return "accepted";
    }

private:
    Variable chosen_{"SET_UP_FAULT", ""};
};

TEST_F(SetUpFault, ARefusalCarriesTheEffectsMessage) {
    EXPECT_EQ(refusal_with("refuse"), "not today 1 512 [not today]");
    EXPECT_EQ(refusal_with("refuse silently"),
              "the plug-in answered PF_Cmd_GLOBAL_SETUP with status 4 1 4 []");
    EXPECT_EQ(refusal_with("parameters refused"),
              "the plug-in answered PF_Cmd_PARAMS_SETUP with status 512 4 512 []");
    // A parameter in another place.
    EXPECT_EQ(refusal_with("inserted"),
              "the plug-in answered PF_Cmd_PARAMS_SETUP with status 513 4 513 []");
    EXPECT_EQ(refusal_with(""), "accepted") << "it can be tried again";
}

TEST_F(SetUpFault, ARefusalTellsWhatIsStillHeld) {
    choose("refuse holding a suite");
    try {
        const Session session(SET_UP_FAULTS);
        FAIL() << "accepted";
    } catch (const host::EffectError& error) {
        EXPECT_EQ(joined(error.violations()), kHeldSuite);
    }
}

TEST_F(SetUpFault, AnExceptionIsADefect) {
    choose("throw");
    EXPECT_THROW(Session{SET_UP_FAULTS}, host::ModuleDefect);
    choose("throw at the end");
    Session session(SET_UP_FAULTS);
    EXPECT_THROW(session.close(), host::ModuleDefect);
    EXPECT_EQ(refusal_with(""), "accepted") << "unloaded all the same";
}

TEST_F(SetUpFault, AMessageWithoutFailureIsKept) {
    choose("warn");
    const Session session(SET_UP_FAULTS);
    ASSERT_EQ(session.messages().size(), 1u);
    EXPECT_EQ(session.messages()[0].text, "something is missing");
    EXPECT_TRUE(session.messages()[0].is_error);
    EXPECT_EQ(session.info().out_flags, 0) << "the display flag is no property of the effect";
}

TEST_F(SetUpFault, IsNoticed) {
    struct Row {
        const char* fault;
        host::Rule rule;
        const char* text;
    };
    const Row rows[] = {
        {"wrong count", host::Rule::ControlCount,
         "PF_Cmd_PARAMS_SETUP: num_params is 5, but with the input layer 2 were added"},
        {"parameter too early", host::Rule::Calls, "add_param: null, or outside parameter set-up"},
        {"null label", host::Rule::ControlTexts, "add_param: the label of \"Box\" is null"},
        {"long name", host::Rule::ControlTexts,
         "add_param: the name \"A name of more than thirty-one l\" has no terminator"},
        {"overrun", host::Rule::Records,
         "PF_Cmd_GLOBAL_SETUP: bytes behind the output record were written to"},
        {"sequence suite", host::Rule::Suites, kHeldSuite}};
    for (const Row& row : rows) {
        choose(row.fault);
        Session session(SET_UP_FAULTS);
        session.close();
        ASSERT_EQ(session.violations().size(), 1u) << row.fault;
        EXPECT_EQ(session.violations()[0].text, row.text);
        EXPECT_EQ(session.violations()[0].rule, row.rule) << row.fault;
    }
    choose("");
    Session session(SET_UP_FAULTS);
    session.close();
    EXPECT_EQ(joined(session.violations()), "");
}

TEST_F(SetUpFault, AnEffectWithoutSmartRenderingDrawsNoFloats) {
    Session session(SET_UP_FAULTS);
    for (const host::Depth depth : {host::Depth::Float, host::Depth::Bits16}) {
        EXPECT_THROW(session.render(small_scene(), {0, 24}, {.depth = depth}), host::FrameError);
    }
    EXPECT_FALSE(session.render(small_scene(), {0, 24}, {.depth = host::Depth::Bits8}).drawn);
}

}  // namespace
