// Effects that break one rule each: the check finds that rule, and no other of its family.
#include <check/check.h>
#include <gtest/gtest.h>
#include <host/errors.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "modules/noticed.h"
#include "modules/test_effect.h"
#include "report_support.h"
#include "support/variable.h"

namespace {

using namespace test_effect;
using namespace report_support;
using check::Report;

/// Checks the test effect with a mischief, rows that begin with `rows` alone.
Report check_with(Mischief mischief, const std::string& rows = "",
                  std::chrono::milliseconds limit = kPatience) {
    const Variable asked("MISCHIEF", std::to_string(mischief));
    return check_rows(CONFORMING_EFFECT, rows, limit);
}

/// Rows by their ids; one needs no braces.
struct Rows : Ids {
    using Ids::Ids;
    Rows(const char* id) : Ids{id} {}
    Rows(const Ids& ids) : Ids(ids) {}
};

struct Broken {
    Mischief mischief;
    Rows rows;
    std::string answer;  ///< part of what one of them says
};

std::ostream& operator<<(std::ostream& out, const Broken& broken) {
    return out << "mischief " << broken.mischief;
}

/// Every row in which a frame is smart rendered.
const Ids kRenders = {
    "frames.8-bit",     "frames.16-bit",   "frames.float",       "frames.first",
    "frames.last",      "frames.reopened", "frames.still",       "frames.no-camera",
    "frames.one-pixel", "frames.part",     "frames.downsampled", "frames.aspect",
    "frames.empty",     "frames.again",    "frames.rows",        "frames.interleaved"};

/// Those at the greatest depth, and therefore all but two.
const Ids kFloatRenders = [] {
    Ids ids = kRenders;
    ids.erase("frames.8-bit");
    ids.erase("frames.16-bit");
    return ids;
}();

const Ids kFrameLeaks = {"leaks.8-bit", "leaks.16-bit", "leaks.float"};
const Ids kPlainLeaks = {"leaks.plain-8-bit", "leaks.plain-16-bit", "leaks.premiere"};

/// A row of what is sent as both applications.
Ids both(const std::string& id) { return {id, id + "-premiere"}; }

Ids with(Ids ids, const Ids& more) {
    ids.insert(more.begin(), more.end());
    return ids;
}

/// The family of all of these rows; empty, which is the whole check, when they are of several.
std::string family_of(const Ids& rows) {
    const std::string family = rows.begin()->substr(0, rows.begin()->find('.') + 1);
    const bool one = std::all_of(rows.begin(), rows.end(),
                                 [&](const std::string& id) { return id.rfind(family, 0) == 0; });
    return one ? family : "";
}

class BrokenEffect : public testing::TestWithParam<Broken> {};

TEST_P(BrokenEffect, IsCaughtByItsRowsAlone) {
    const Report report = check_with(GetParam().mischief, family_of(GetParam().rows));
    EXPECT_EQ(failing(report), GetParam().rows);
    EXPECT_TRUE(std::any_of(GetParam().rows.begin(), GetParam().rows.end(),
                            [&](const std::string& id) {
                                return row(report, id).answer.find(GetParam().answer) !=
                                       std::string::npos;
                            }))
        << row(report, *GetParam().rows.begin()).answer;
}

constexpr char kHeap[] = "bytes of heap lost each time";
constexpr char kFailed[] = "status 516";

const std::vector<Broken> kBrokenEffects = [] {
    std::vector<Broken> all = {
        {kThrowStandard, kRenders, "std::runtime_error (\"boom\") left it"},
        {kThrowForeign, kRenders, "ForeignTrouble left it"},
        {kThrowNumber, kRenders, "type int (516) left it"},
        {kWriteRowAbove, "frames.bounds", "bytes before the first pixel"},
        {kWriteRowBelow, "frames.bounds", "bytes behind the last row"},
        {kForgetAlpha,
         {"frames.16-bit", "frames.again"},
         "the second picture differs from the first"},
        {kAddToOutput, "frames.again", "the second picture differs from the first"},
        {kExceedWhite, "frames.16-bit", "1296 channels are above 32768, first in row 0, column 0"},
        {kDrawNotANumber, kFloatRenders, "1296 channels are not finite, first in row 0, column 0"},
        {kHandleForCallbacks, "frames.record", "a handle stands in the slot"},
        {kWriteParameters, "frames.record", "PF_Cmd_RENDER: a parameter's record was written to"},
        {kChangeVersion, "frames.record",
         "PF_Cmd_RENDER: my_version was changed (3 times, first in frames.plain-8-bit)"},
        {kCrash, "frames.16-bit", "killed by SIGILL during a 16-bit frame"},
        {kEndProcess, "frames.16-bit",
         "the process was ended with exit code 0 during a 16-bit frame"},
        {kExit, "frames.16-bit", "the process was ended by a call of exit during a 16-bit frame"},
        {kLeaveProcess, "frames.16-bit", "left running"},
        {kLeakMemory, kFrameLeaks, kHeap},
        {kLeakEverySecond, kFrameLeaks, "bytes of heap lost in 8 rounds"},
        {kFailFirst, with({"frames.first"}, kFrameLeaks), kFailed},
        {kFailLast, "frames.last", kFailed},
        {kFailThird, kFrameLeaks, "frame 2: status 516"},
        {kFailPart, "frames.part", kFailed},
        {kFailDownsampled, "frames.downsampled", kFailed},
        {kFailAspect, "frames.aspect", kFailed},
        {kCallInThird, kFrameLeaks, "frame 2: checkin_param: null"},
        {kLeakDescriptor, kFrameLeaks, "1 file descriptors lost each time"},
        {kLeakInFloat, "leaks.float", kHeap},
        {kLeakInPremiere, "leaks.premiere", kHeap},
        {kLeakInPremiereFloat, "leaks.premiere-float", kHeap},
        {kFailInPremiere16, "frames.premiere-16-bit", kFailed},
        {kWritePastRowInPremiere16, "frames.bounds",
         "3 bytes behind its last pixel (once, in frames.premiere-16-bit)"},
        {kIgnoreFillInPremiere16, "faults.fill", "status 0, no picture"},
        {kLeakAtSetUp, both("leaks.sessions"), kHeap},
        {kLeakInAbout, both("leaks.questions"), kHeap},
        {kLeakInResetup, both("leaks.questions"), kHeap},
        {kLeakInFlatten, both("leaks.questions"), kHeap},
        {kLeakOnError, "faults.checkout_output", kHeap},
        {kCrashAfterFlatten, "frames.reopened", "killed by SIGILL during a frame before"},
        {kForgetInFlatten, "frames.reopened", "the picture afterwards differs from the one before"},
        {kLeakWhenDenied, "faults.set-up.host_new_handle",
         "call 1 of host_new_handle failing with 4, again and again"},
        {kThrowOnError, "faults.checkout_output",
         "(\"no output\") left it during PF_Cmd_SMART_RENDER; a real host would have crashed (3 "
         "times in 8-bit, 16-bit and float, first with call 1 of checkout_output failing with 4)"},
        {kHandleOnError, "faults.checkout_output",
         "a handle stands in the slot of the callbacks (6 times in 8-bit, 16-bit and float, first "
         "with call 1 of checkout_output failing with 4)"},
        {kCrashDeniedResetup, "faults.set-up.host_new_handle",
         "killed by SIGILL during sequence re-set-up; call 1 of host_new_handle failing with 4"},
        {kLeakInPlain, kPlainLeaks, kHeap},
        {kLeakInFlagQuery, with(with(both("leaks.questions"), kPlainLeaks), kFrameLeaks), kHeap},
        {kKeepFlagParameter, with(both("setup.dynamic-flags"), {"frames.parameters"}),
         "1 parameters checked out and not in again"},
        {kFloatWithoutSmart, "setup.flags",
         "PF_OutFlag2_FLOAT_COLOR_AWARE needs PF_OutFlag2_SUPPORTS_SMART_RENDER; declare both or "
         "neither"},
        {kOverrideFlags, "setup.flags",
         "PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS is for the registration alone"},
        {kTurnOnFlag, both("setup.dynamic-flags"),
         "turns on 0x4 in out_flags, which set-up did not declare"},
        {kTurnOnFlag2, both("setup.dynamic-flags"),
         "turns on 0x80 in out_flags2, which set-up did not declare"},
        {kRefuseUserChange, both("setup.unasked"), "command 13: status 516"},
        {kWriteArbitrary, both("setup.unasked"), "command 22: its record was written to"},
        {kRefuseUpdates, both("setup.update-controls"), "command 14: status 516"},
        {kCrashInSecondPlain,
         {"leaks.plain-16-bit", "faults.without-faults"},
         "killed by SIGILL during a plain 16-bit render"},
        {kCrashAfterAbout,
         {"leaks.questions-premiere", "faults.set-up.without-faults"},
         "killed by SIGILL during dependencies, all; set-up and questions"},
        {kActOnTheTerminal, "frames.16-bit", "status 516: \\x1B[2Jnone\\n\\xC2\\x9B2J"},
        {kRefuseFlatten, "setup.flatten-premiere", "command 7: status 516"},
        {kCallAtSequenceDown, "frames.calls", "or no frame being made"},
        {kDisposeTwiceWhenTwo, "frames.calls",
         "or disposed of already (once, in frames.interleaved)"},
        {kIgnoreOnce, "faults.abort", "status 0, a picture without what failed"},
        {kKeepParameter, "frames.parameters", "6 parameters checked out and not in again"},
        {kWrongCount, "controls.count", "num_params is 8, but with the input layer 7"},
        {kStartOutside, "controls.ranges",
         "\"Gain\" starts at 300.5, outside its valid range, 0 to 10"},
        {kDefaultOutside, "controls.ranges",
         "\"Count\" has the default -6, outside its valid range, -5 to 20"},
        {kSliderOutside, "controls.ranges",
         "\"Count\" has a slider from 0 to 21, beyond its valid range, -5 to 20"},
        {kCheckboxOfFive, "controls.checkboxes", "\"Invert\" starts at 5, with default 1"},
        {kEmptyChoice, "controls.texts", "choice 2 of \"Mode\" has no text"},
        {kUnknownControl, "controls.kinds", "\"Strange\" is of the type 77"},
        {kSameId, "controls.ids", "\"Twin\" has the id 4, as another has"},
        {kKeepThird, kFrameLeaks, "frame 2: 1 parameters checked out and not in again"},
        {kSwallowCancel, "faults.checkout_output",
         "status 512 instead of 517, the user's cancellation (3 times in 8-bit, 16-bit and float, "
         "first with every call of checkout_output failing with 517)"},
        {kBlankWithoutHandle, "faults.host_new_handle", "status 0, no picture"}};
    // Those of which a row tells what the host notes.
    const std::pair<Rows, std::vector<Mischief>> noticed[] = {
        {"frames.bounds", {kWritePastRow, kWriteBefore, kWriteBehind}},
        {"frames.input", {kWriteInput, kClearInput, kHalveInput}},
        {"frames.calls", {kCallFromThread, kReleaseUnheldSuite, kNegativeCheckout, kDisposeTwice}},
        {"frames.suites", {kLeakSuite}},
        {"frames.deleter", {kNoDeleter}},
        {"frames.rectangles", {kLargeResult}},
        {"frames.messages", {kOverlongMessage, kUnterminatedMessage}},
        {"frames.handles", {kLeakHandle}},
        {"frames.record", {kRubbishForCallbacks, kChangeFlags, kChangeCount, kWriteInData}},
        {{"frames.layers", "faults.checkin_layer_pixels"}, {kReturnLayerTwice}}};
    for (const auto& [rows, mischiefs] : noticed) {
        for (const Mischief mischief : mischiefs) {
            all.push_back({mischief, rows, noticed_text(mischief)});
        }
    }
    return all;
}();

#ifdef REPRESENTATIVES_ONLY
/// One or two of each family: what they prove is that the check works as compiled here.
const std::set<Mischief> kRepresentatives = {kThrowForeign,        kWritePastRow, kLeakSuite,
                                             kRubbishForCallbacks, kCrash,        kExit,
                                             kLeaveProcess,        kLeakMemory,   kLeakWhenDenied,
                                             kThrowOnError,        kTurnOnFlag2,  kCheckboxOfFive};

std::vector<Broken> chosen() {
    std::vector<Broken> some;
    std::copy_if(kBrokenEffects.begin(), kBrokenEffects.end(), std::back_inserter(some),
                 [](const Broken& one) { return kRepresentatives.count(one.mischief) != 0; });
    return some;
}
#else
std::vector<Broken> chosen() { return kBrokenEffects; }
#endif

INSTANTIATE_TEST_SUITE_P(Rules, BrokenEffect, testing::ValuesIn(chosen()));

TEST(BrokenEffectThatCannotBeSetDown, FailsThatRowAndIsAskedNoMore) {
    const Ids down = {"setup.down"};
    const Report refused = check_with(kRefuseSetDown);
    EXPECT_EQ(failing(refused), down);
    EXPECT_NE(row(refused, "setup.down").answer.find("status 516"), std::string::npos);
    EXPECT_TRUE(leaves_out(refused, "frames: the effect cannot be set down, see setup.down"));
    const Report crashed = check_with(kCrashInSetDown);
    EXPECT_EQ(failing(crashed), down);
    EXPECT_EQ(row(crashed, "setup.down").answer,
              "killed by SIGILL during set-down, in PF_Cmd_GLOBAL_SETDOWN");
}

TEST(EffectThatStaysLoaded, IsToldThatItsEndWasNotSeen) {
    const Report report = check_with(kStayLoaded, "leaks.");
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_TRUE(leaves_out(report,
                           "leaks.unload: the module stays after it was unloaded, so that its end "
                           "was not seen; with g++, -fno-gnu-unique lets it go"));
}

TEST(BrokenEffectThatLosesMappings, IsCaughtWhereTheyTell) {
    const Report report = check_with(kLeakMapping, "leaks.");
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(failing(report), Ids{}) << "the sanitizer's own come and go";
#else
    EXPECT_EQ(failing(report), kFrameLeaks);
    EXPECT_EQ(row(report, "leaks.float").answer, "4096 bytes of address space lost each time");
#endif
}

#ifdef __linux__
/// Elsewhere the system keeps no track of what leaves the group.
TEST(BrokenEffectThatLeavesASession, IsCaughtToo) {
    const Report report = check_with(kLeaveSession, "frames.16");
    EXPECT_EQ(failing(report), Ids{"frames.16-bit"});
    EXPECT_EQ(row(report, "frames.16-bit").answer, "1 process was left running");
}
#endif

TEST(BrokenEffectThatHangs, CostsItsTimeLimitAndARow) {
    const Report report = check_with(kHang, "frames.16", std::chrono::milliseconds(2500));
    EXPECT_EQ(failing(report), Ids{"frames.16-bit"});
    EXPECT_EQ(row(report, "frames.16-bit").answer,
              "no answer within 2.5 s during a 16-bit frame, in PF_Cmd_SMART_RENDER");
}

TEST(BrokenEffectThatDrawsNothing, IsCaughtWhereverPixelsAreDue) {
    EXPECT_EQ(failing(check_with(kDrawNothing, "frames.")), kRenders);
}

TEST(BrokenEffectThatTakesItsTime, HasItForEachFrame) {
    // 33 frames of a tenth of a second each, looked at for what they lose.
    const Report report =
        check_with(kSlowLeakOnError, "faults.checkout_output", std::chrono::milliseconds(2500));
    EXPECT_EQ(failing(report), Ids{"faults.checkout_output"});
    EXPECT_NE(row(report, "faults.checkout_output").answer.find("lost each time"),
              std::string::npos)
        << row(report, "faults.checkout_output").answer;
}

TEST(EffectThatLeavesLayersToItsHost, Passes) {
    // Checking in is optional: a host takes them back when the render returns.
    const Report report = check_with(kKeepLayer, "frames.");
    EXPECT_EQ(failing(report), Ids{});
    // One in each depth; one each in the first and the last frame, in the rows without blur,
    // without a camera, of one pixel, of a part, at half resolution, of other pixels, and after the
    // empty request; two each of the same frame twice, with longer rows and round flatten; three
    // with the two layers.
    EXPECT_EQ(row(report, "frames.layers").answer,
              "nothing found; 21 left for the host to take back");
}

TEST(EffectsThatDoNothingWrong, Pass) {
    EXPECT_EQ(failing(check_with(kGroups, "controls.")), Ids{}) << "their ends without an id";
    EXPECT_EQ(failing(check_with(kAskForRefresh, "frames.")), Ids{});
}

TEST(EffectWithInterfaces, IsToldWhatThisHostCannotAsk) {
    const Report report = check_with(kDeclareInterfaces, "setup.");
    EXPECT_EQ(failing(report), Ids{}) << "it traps when it is asked";
    for (const char* command : {"9", "15", "19", "20", "21", "31", "32", "33"}) {
        const std::string note = std::string("setup.command-") + command + ": the effect declares ";
        const std::vector<std::string> notes = unexamined(report);
        EXPECT_EQ(std::count_if(notes.begin(), notes.end(),
                                [&](const std::string& one) { return one.rfind(note, 0) == 0; }),
                  1)
            << note;
    }
    const Report supervised = check_with(kSupervise, "setup.");
    EXPECT_EQ(failing(supervised), Ids{});
    EXPECT_TRUE(leaves_out(supervised,
                           "setup.command-13: the effect supervises a control, and there is nobody "
                           "to change it"));
}

TEST(EffectThatUpdatesItsControls, IsAskedToWithTheirInitialValues) {
    const Report report = check_with(kDeclareUpdates, "setup.");
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(row(report, "setup.update-controls").verdict, check::Verdict::Pass);
    EXPECT_THROW(row(check_with(kNone, "setup."), "setup.update-controls"), std::runtime_error);
}

TEST(BrokenEffectThatCrashesUnasked, IsCaughtAndNotAskedAgain) {
    const Report report = check_with(kCrashInGpuSetup, "setup.");
    EXPECT_EQ(failing(report), (Ids{"setup.unasked", "setup.unasked-premiere"}));
    EXPECT_TRUE(leaves_out(
        report, "setup.unasked, again and again and in a host that fails: it fails once"));
    EXPECT_EQ(
        row(report, "setup.unasked").answer,
        "killed by SIGILL during commands that it did not ask for, in PF_Cmd_GPU_DEVICE_SETUP");
}

TEST(EffectWithoutSmartRendering, IsPlayedPlainlyAndHasNoRulesOfSmartFrames) {
    const Report report = check_with(kNoSmart, "frames.");
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(row(report, "frames.first").verdict, check::Verdict::Pass);
    EXPECT_EQ(row(report, "frames.bounds").answer, "nothing found");
    for (const char* rule : {"layers", "deleter", "rectangles"}) {
        const std::string id = std::string("frames.") + rule;
        EXPECT_THROW(row(report, id), std::runtime_error);
        EXPECT_TRUE(leaves_out(report, id + ": smart rendering is not declared")) << id;
    }
}

TEST(RulesOfFramesThatDied, AreNotKept) {
    // Of the smart frames only the one that is not rendered comes to its end; with it the three
    // plain kinds.
    const Report renders = check_with(kCrashSmart, "frames.");
    EXPECT_EQ(failing(renders), kRenders);
    EXPECT_EQ(row(renders, "frames.deleter").answer,
              "nothing found in the 1 of 17 rows that came to their end");
    EXPECT_EQ(row(renders, "frames.bounds").answer,
              "nothing found in the 4 of 20 rows that came to their end");
    const Report pre_renders = check_with(kCrashPreRender, "frames.");
    EXPECT_EQ(failing(pre_renders).count("frames.no-render"), 1U);
    EXPECT_EQ(row(pre_renders, "frames.bounds").answer,
              "nothing found in the 3 of 20 rows that came to their end");
    for (const char* rule : {"layers", "deleter", "rectangles"}) {
        EXPECT_TRUE(leaves_out(pre_renders, std::string("frames.") + rule +
                                                ": no frame that it is for came to its end"))
            << rule;
    }
}

TEST(EffectWithoutFloat, IsPlayedAtItsDeepest) {
    const Report report = check_with(kNoFloat);
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(report.unexamined.size(), 1U) << "the registration alone";
    for (const char* id : {"frames.still", "frames.interleaved", "leaks.16-bit",
                           "faults.checkout_param", "faults.checkout_output"}) {
        EXPECT_EQ(row(report, id).verdict, check::Verdict::Pass) << id;
    }
    EXPECT_THROW(row(report, "frames.float"), std::runtime_error);
}

/// Of the kinds of frame in Premiere Pro, those with a row.
Ids premiere_kinds(const Report& report) {
    Ids kinds;
    for (const check::Row& one : report.rows) {
        if (one.id.rfind("frames.premiere", 0) == 0) {
            kinds.insert(one.id);
        }
    }
    return kinds;
}

TEST(EffectWithFormatsOfPremiere, IsPlayedInEachOfThem) {
    const Report report = check_with(kWriteInPremiere, "frames.");
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(premiere_kinds(report),
              (Ids{"frames.premiere", "frames.premiere-16-bit", "frames.premiere-float"}));
    const Report filled = check_with(kPremiereFormats);
    EXPECT_EQ(failing(filled), Ids{});
    for (const char* kind : {"premiere", "premiere-16-bit", "premiere-float"}) {
        EXPECT_EQ(row(filled, "frames." + std::string(kind)).answer,
                  "status 0, all of 48 x 27 pixels drawn");
        row(filled, "leaks." + std::string(kind));
    }
    EXPECT_NE(row(filled, "faults.fill").sent.find("premiere, premiere-16-bit and premiere-float"),
              std::string::npos);
    EXPECT_EQ(premiere_kinds(check_with(kPremiereFloatAlone, "frames.")),
              Ids{"frames.premiere-float"});
    // In eight bits if it declares none.
    const Report none = check_with(kNoPremiereFormats, "frames.");
    EXPECT_EQ(failing(none), Ids{});
    EXPECT_EQ(premiere_kinds(none), Ids{"frames.premiere"});
}

TEST(EffectWithFormatsOfPremiere, IsToldWhichOfThemTheHostDoesNotDraw) {
    const std::string note =
        "frames.premiere-formats: this host draws one format of a depth, BGRA or 8-bit ARGB, and "
        "the effect also declares ";
    EXPECT_TRUE(
        leaves_out(check_with(kPremiereFormats, "frames."), note + "the format 0x12345678"));
    EXPECT_TRUE(leaves_out(check_with(kPremiereArgb, "frames."),
                           note + "float ARGB, 16-bit ARGB and 8-bit BGRA"));
    for (const std::string& other : unexamined(check_with(kPremiereFloat, "frames."))) {
        EXPECT_EQ(other.find("frames.premiere-formats"), std::string::npos);
    }
}

TEST(EffectWithFormatsOfPremiere, IsPlayedInNoneThatTheHostDoesNotKnow) {
    const Report report = check_with(kPremiereUnknown);
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(premiere_kinds(report), Ids{});
    EXPECT_TRUE(leaves_out(report,
                           "leaks.unload-premiere: this host draws in none of the formats that the "
                           "effect declares"));
}

TEST(EffectThatCallsWhatTheHostLacks, FailsNowhereAndIsToldTheFunction) {
    const Report report = check_with(kCallUnprovided, "frames.");
    EXPECT_EQ(failing(report), Ids{});
    for (const std::string& id : kRenders) {
        EXPECT_THROW(row(report, id), std::runtime_error) << id;
        EXPECT_TRUE(leaves_out(report, id + ": the plug-in calls AEGP Layer Suite 11: "
                                            "AEGP_GetLayerName, which this host does not provide"))
            << id;
    }
}

TEST(WhatAFailureHides, IsToldInsteadOfPassed) {
    const Report report = check_with(kThrowStandard);
    EXPECT_EQ(unexamined(report), (std::vector<std::string>{
                                      "bundle.registration: there is no Info.plist, PkgInfo or "
                                      "Resources/libconforming_effect.so.rsrc beside the module",
                                      "leaks.8-bit: a frame fails, see frames.8-bit",
                                      "leaks.16-bit: a frame fails, see frames.16-bit",
                                      "leaks.float: a frame fails, see frames.float",
                                      "leaks.unload: a frame fails, see frames.8-bit",
                                      "faults, 8-bit: it fails without faults, see frames.8-bit",
                                      "faults, 16-bit: it fails without faults, see frames.16-bit",
                                      "faults, float: it fails without faults, see frames.float"}));
}

/// Checks an effect whose set-up goes wrong.
Report check_set_up(const char* fault, const std::string& rows = "") {
    const Variable asked("SET_UP_FAULT", fault);
    return check_rows(SET_UP_FAULTS, rows);
}

TEST(SetUpThatFails, EndsTheRunWithItsReason) {
    const Report report = check_set_up("refuse");
    EXPECT_EQ(failing(report), Ids{"setup.session"});
    EXPECT_EQ(row(report, "setup.session").answer, "not today (status 512)");
    EXPECT_EQ(report.rows.size(), 2U) << "with the module itself";
    EXPECT_EQ(report.unexamined.size(), 6U) << "registration, questions and four families";
    for (const auto& [fault, answer] :
         {std::pair{"refuse holding a suite", "was acquired 1 times more"},
          {"throw", "left it during PF_Cmd_GLOBAL_SETUP"}}) {
        const Report other = check_set_up(fault);
        EXPECT_EQ(failing(other), Ids{"setup.session"});
        EXPECT_NE(row(other, "setup.session").answer.find(answer), std::string::npos) << fault;
    }
}

TEST(ModuleWithoutAnEntryPoint, FailsItsRowWithTheRemedy) {
    const Report report = check::run(NO_ENTRY_POINT);
    EXPECT_EQ(failing(report), Ids{"bundle.module"});
    EXPECT_EQ(row(report, "bundle.module").answer,
              "\"" NO_ENTRY_POINT
              "\" exports no entry point EntryPointFunc; export it with C linkage and default "
              "visibility");
}

TEST(RowsAskedFor, AreTheOnlyOnesTold) {
    // A row by itself, a rule for which the frames are looked at, a call.
    for (const auto& [mischief, id] : {std::pair{kLeakInFloat, "leaks.float"},
                                       {kLeakSuite, "frames.suites"},
                                       {kLeakOnError, "faults.checkout_output"}}) {
        const Report report = check_with(mischief, id);
        ASSERT_EQ(report.rows.size(), 1U);
        EXPECT_EQ(failing(report), Ids{id});
    }
    EXPECT_TRUE(check_with(kLeakInFloat, "leaks.float").unexamined.empty());
    EXPECT_TRUE(check_with(kNone, "no such").rows.empty());
}

TEST(RowsAskedFor, HaveTheVerdictOfTheWholeCheck) {
    // It leaves a handle each time: memory is lost too, which is no row's but that of handles.
    EXPECT_EQ(failing(check_with(kLeakHandle)), Ids{"frames.handles"});
    const Report leaks = check_with(kLeakHandle, "leaks.float");
    EXPECT_EQ(failing(leaks), Ids{"frames.handles"}) << "why the row is missing";
    EXPECT_TRUE(leaves_out(
        leaks, "leaks.float: the handles lost would count as memory, see frames.handles"));
    const Report refused = check_set_up("refuse", "frames.");
    EXPECT_EQ(failing(refused), Ids{"setup.session"});
    EXPECT_FALSE(refused.passed());
}

TEST(EffectThatDiesInOneKind, IsPlayedInTheOthers) {
    // A handle is asked for in the three smart kinds alone; the process dies in the first.
    const Report report = check_with(kCrashWithoutHandle, "faults.host_new_handle");
    ASSERT_EQ(report.rows.size(), 1U);
    EXPECT_EQ(report.rows[0].findings.size(), 1U);
    EXPECT_NE(report.rows[0].answer.find("(3 times in 8-bit, 16-bit and float)"), std::string::npos)
        << report.rows[0].answer;
}

TEST(NoModule, IsAnErrorAndNoReport) {
    EXPECT_THROW(check::run("/nowhere/No.plugin"), host::ModuleError);
}

TEST(ConformingEffect, PassesEveryRow) {
    std::size_t probes = 0;
    const auto progress = [&](std::size_t done, const std::string& row) {
        EXPECT_EQ(done, probes++);
        EXPECT_FALSE(row.empty());
    };
    const Report report =
        check::run(CONFORMING_EFFECT, {.time_limit = kPatience, .progress = progress});
    EXPECT_EQ(failing(report), Ids{});
    EXPECT_EQ(report.count(check::Verdict::Kept), 0U);
    EXPECT_GT(probes, 0U);
    // Whatever is asked is asked as both applications.
    for (const check::Row& one : report.rows) {
        const std::string other = one.id + "-premiere";
        if (one.sent.find("sequence") == 0 || one.sent.find("commands") == 0 ||
            one.sent.find("depend") == 0 || one.sent == "about" || one.sent.find("dyn") == 0) {
            if (one.id.find("-premiere") == std::string::npos && one.id != "setup.down") {
                EXPECT_EQ(row(report, other).sent, one.sent + ", in Premiere Pro") << other;
            }
        }
    }
    // What an effect can do about a call that fails differs.
    EXPECT_EQ(row(report, "faults.set-up.host_new_handle").promise,
              "an error, or it goes on; all is given back");
    EXPECT_EQ(row(report, "faults.host_new_handle").promise,
              "an error or a whole picture; all is given back");
    EXPECT_EQ(row(report, "faults.checkout_output").promise, "an error; all is given back");
    EXPECT_EQ(row(report, "faults.missing-PF-World-Suite").promise,
              "an error or a whole picture; all is given back");
    // Every call that the effect makes has its row.
    for (const char* id : {"faults.checkout_param", "faults.missing-PF-World-Suite",
                           "faults.AEGP_GetEffectCamera", "faults.fill", "faults.get_pixel_data16",
                           "faults.without-faults", "faults.set-up.without-faults",
                           "faults.set-up.add_param", "faults.set-up.AddSupportedPixelFormat"}) {
        EXPECT_EQ(row(report, id).verdict, check::Verdict::Pass) << id;
    }
}

}  // namespace
