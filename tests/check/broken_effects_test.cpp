// Effects that break one rule each: the check finds that rule, and no other of its family.
#include <check/check.h>
#include <gtest/gtest.h>
#include <host/errors.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "modules/noticed.h"
#include "modules/test_effect.h"
#include "report_support.h"

namespace {

using namespace test_effect;
using check::Options;
using check::Report;
using report_support::failing;
using report_support::row;

/// Checks the test effect with a mischief, rows that begin with `rows` alone.
Report check_with(Mischief mischief, const std::string& rows = "",
                  std::chrono::milliseconds limit = report_support::kPatience) {
    setenv("MISCHIEF", std::to_string(mischief).c_str(), 1);
    Options options;
    options.time_limit = limit;
    options.rows = rows;
    Report report = check::run(CONFORMING_EFFECT, options);
    unsetenv("MISCHIEF");
    return report;
}

bool leaves_out(const Report& report, const std::string& note) {
    const std::vector<std::string> notes = report_support::unexamined(report);
    return std::find(notes.begin(), notes.end(), note) != notes.end();
}

struct Broken {
    Mischief mischief;
    std::set<std::string> rows;
    /// Part of what one of them says; empty for what the host notes of this mischief.
    std::string answer = {};
};

std::ostream& operator<<(std::ostream& out, const Broken& broken) {
    return out << "mischief " << broken.mischief;
}

/// Every row in which a frame is smart rendered.
const std::set<std::string> kRenders = {
    "frames.8-bit",     "frames.16-bit",   "frames.float",       "frames.first",
    "frames.last",      "frames.reopened", "frames.still",       "frames.no-camera",
    "frames.one-pixel", "frames.part",     "frames.downsampled", "frames.aspect",
    "frames.empty",     "frames.again",    "frames.rows",        "frames.interleaved"};

/// Those at the greatest depth, and therefore all but two.
const std::set<std::string> kFloatRenders = [] {
    std::set<std::string> ids = kRenders;
    ids.erase("frames.8-bit");
    ids.erase("frames.16-bit");
    return ids;
}();

const std::set<std::string> kFrameLeaks = {"leaks.8-bit", "leaks.16-bit", "leaks.float"};

std::set<std::string> with(std::set<std::string> ids, const std::set<std::string>& more) {
    ids.insert(more.begin(), more.end());
    return ids;
}

/// The family of all of these rows; empty, which is the whole check, when they are of several.
std::string family_of(const std::set<std::string>& rows) {
    const std::string family = rows.begin()->substr(0, rows.begin()->find('.') + 1);
    const bool one = std::all_of(rows.begin(), rows.end(),
                                 [&](const std::string& id) { return id.rfind(family, 0) == 0; });
    return one ? family : "";
}

class BrokenEffect : public testing::TestWithParam<Broken> {};

TEST_P(BrokenEffect, IsCaughtByItsRowsAlone) {
    const Report report = check_with(GetParam().mischief, family_of(GetParam().rows));
    EXPECT_EQ(failing(report), GetParam().rows);
    const std::string& given = GetParam().answer;
    const std::string answer = given.empty() ? noticed_text(GetParam().mischief) : given;
    for (const std::string& id : GetParam().rows) {
        if (row(report, id).answer.find(answer) != std::string::npos) {
            return;
        }
    }
    ADD_FAILURE() << row(report, *GetParam().rows.begin()).answer;
}

const std::vector<Broken> kBrokenEffects = {
    Broken{kThrowStandard, kRenders, "std::runtime_error (\"boom\") left it"},
    Broken{kThrowForeign, kRenders, "ForeignTrouble left it"},
    Broken{kThrowNumber, kRenders, "type int (516) left it"},
    Broken{kWritePastRow, {"frames.bounds"}}, Broken{kWriteBefore, {"frames.bounds"}},
    Broken{kWriteBehind, {"frames.bounds"}},
    Broken{kWriteRowAbove, {"frames.bounds"}, "bytes before the first pixel"},
    Broken{kWriteRowBelow, {"frames.bounds"}, "bytes behind the last row"},
    Broken{kWriteInput, {"frames.input"}}, Broken{kClearInput, {"frames.input"}},
    Broken{kHalveInput, {"frames.input"}},
    Broken{kForgetAlpha,
           {"frames.16-bit", "frames.again"},
           "the second picture differs from the first"},
    Broken{kAddToOutput, {"frames.again"}, "the second picture differs from the first"},
    Broken{
        kExceedWhite, {"frames.16-bit"}, "1296 channels are above 32768, first in row 0, column 0"},
    Broken{kDrawNotANumber, kFloatRenders,
           "1296 channels are not finite, first in row 0, column 0"},
    Broken{kCallFromThread, {"frames.calls"}}, Broken{kLeakSuite, {"frames.suites"}},
    Broken{kReleaseUnheldSuite, {"frames.calls"}}, Broken{kNoDeleter, {"frames.deleter"}},
    Broken{kNegativeCheckout, {"frames.calls"}}, Broken{kLargeResult, {"frames.rectangles"}},
    Broken{kOverlongMessage, {"frames.messages"}},
    Broken{kUnterminatedMessage, {"frames.messages"}}, Broken{kLeakHandle, {"frames.handles"}},
    Broken{kDisposeTwice, {"frames.calls"}},
    Broken{kHandleForCallbacks, {"frames.record"}, "a handle stands in the slot"},
    Broken{kRubbishForCallbacks, {"frames.record"}}, Broken{kChangeFlags, {"frames.record"}},
    Broken{kChangeCount, {"frames.record"}}, Broken{kWriteInData, {"frames.record"}},
    Broken{
        kWriteParameters, {"frames.record"}, "PF_Cmd_RENDER: a parameter's record was written to"},
    Broken{kChangeVersion,
           {"frames.record"},
           "PF_Cmd_RENDER: my_version was changed (3 times, first in frames.plain-8-bit)"},
    Broken{kCrash, {"frames.16-bit"}, "killed by SIGILL during a 16-bit frame"},
    Broken{kEndProcess,
           {"frames.16-bit"},
           "the process was ended with exit code 0 during a 16-bit frame"},
    Broken{
        kExit, {"frames.16-bit"}, "the process was ended by a call of exit during a 16-bit frame"},
    Broken{kLeaveProcess, {"frames.16-bit"}, "left running"},
    Broken{kLeakMemory, kFrameLeaks, "bytes of heap lost each time"},
    Broken{kLeakEverySecond, kFrameLeaks, "bytes of heap lost in 8 rounds"},
    Broken{kFailFirst, with({"frames.first"}, kFrameLeaks), "status 516"},
    Broken{kFailLast, {"frames.last"}, "status 516"},
    Broken{kFailThird, kFrameLeaks, "frame 2: status 516"},
    Broken{kFailPart, {"frames.part"}, "status 516"},
    Broken{kFailDownsampled, {"frames.downsampled"}, "status 516"},
    Broken{kFailAspect, {"frames.aspect"}, "status 516"},
    Broken{kCallInThird, kFrameLeaks, "frame 2: checkin_param: null"},
    Broken{kLeakDescriptor, kFrameLeaks, "1 file descriptors lost each time"},
    Broken{kLeakInFloat, {"leaks.float"}, "bytes of heap lost each time"},
    Broken{kLeakInPremiere, {"leaks.premiere"}, "bytes of heap lost each time"},
    Broken{kLeakInPremiereFloat, {"leaks.premiere-float"}, "bytes of heap lost each time"},
    Broken{kFailInPremiere16, {"frames.premiere-16-bit"}, "status 516"},
    Broken{kWritePastRowInPremiere16,
           {"frames.bounds"},
           "3 bytes behind its last pixel (once, in frames.premiere-16-bit)"},
    Broken{kIgnoreFillInPremiere16, {"faults.fill"}, "status 0, no picture"},
    Broken{kLeakAtSetUp,
           {"leaks.sessions", "leaks.sessions-premiere"},
           "bytes of heap lost each time"},
    Broken{kLeakInAbout,
           {"leaks.questions", "leaks.questions-premiere"},
           "bytes of heap lost each time"},
    Broken{kLeakInResetup,
           {"leaks.questions", "leaks.questions-premiere"},
           "bytes of heap lost each time"},
    Broken{kLeakInFlatten,
           {"leaks.questions", "leaks.questions-premiere"},
           "bytes of heap lost each time"},
    Broken{kLeakOnError, {"faults.checkout_output"}, "bytes of heap lost each time"},
    Broken{kCrashAfterFlatten, {"frames.reopened"}, "killed by SIGILL during a frame before"},
    Broken{kForgetInFlatten,
           {"frames.reopened"},
           "the picture afterwards differs from the one before"},
    Broken{kLeakWhenDenied,
           {"faults.set-up.host_new_handle"},
           "call 1 of host_new_handle failing with 4, again and again"},
    Broken{kThrowOnError,
           {"faults.checkout_output"},
           "(\"no output\") left it during PF_Cmd_SMART_RENDER; a real host would have crashed "
           "(3 times in 8-bit, 16-bit and float, first with call 1 of checkout_output failing "
           "with 4)"},
    Broken{kHandleOnError,
           {"faults.checkout_output"},
           "a handle stands in the slot of the callbacks (6 times in 8-bit, 16-bit and float, "
           "first with call 1 of checkout_output failing with 4)"},
    Broken{kCrashDeniedResetup,
           {"faults.set-up.host_new_handle"},
           "killed by SIGILL during sequence re-set-up; call 1 of host_new_handle failing "
           "with 4"},
    Broken{kLeakInPlain,
           {"leaks.plain-8-bit", "leaks.plain-16-bit", "leaks.premiere"},
           "bytes of heap lost each time"},
    Broken{kLeakInFlagQuery,
           with({"leaks.questions", "leaks.questions-premiere", "leaks.plain-8-bit",
                 "leaks.plain-16-bit", "leaks.premiere"},
                kFrameLeaks),
           "bytes of heap lost each time"},
    Broken{kKeepFlagParameter,
           {"setup.dynamic-flags", "setup.dynamic-flags-premiere", "frames.parameters"},
           "1 parameters checked out and not in again"},
    Broken{kFloatWithoutSmart,
           {"setup.flags"},
           "PF_OutFlag2_FLOAT_COLOR_AWARE needs PF_OutFlag2_SUPPORTS_SMART_RENDER; declare "
           "both or neither"},
    Broken{kOverrideFlags,
           {"setup.flags"},
           "PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS is for the registration alone"},
    Broken{kTurnOnFlag,
           {"setup.dynamic-flags", "setup.dynamic-flags-premiere"},
           "turns on 0x4 in out_flags, which set-up did not declare"},
    Broken{kTurnOnFlag2,
           {"setup.dynamic-flags", "setup.dynamic-flags-premiere"},
           "turns on 0x80 in out_flags2, which set-up did not declare"},
    Broken{
        kRefuseUserChange, {"setup.unasked", "setup.unasked-premiere"}, "command 13: status 516"},
    Broken{kWriteArbitrary,
           {"setup.unasked", "setup.unasked-premiere"},
           "command 22: its record was written to"},
    Broken{kRefuseUpdates,
           {"setup.update-controls", "setup.update-controls-premiere"},
           "command 14: status 516"},
    Broken{kCrashInSecondPlain,
           {"leaks.plain-16-bit", "faults.without-faults"},
           "killed by SIGILL during a plain 16-bit render"},
    Broken{kCrashAfterAbout,
           {"leaks.questions-premiere", "faults.set-up.without-faults"},
           "killed by SIGILL during dependencies, all; set-up and questions"},
    Broken{kActOnTheTerminal, {"frames.16-bit"}, "status 516: \\x1B[2Jnone\\n\\xC2\\x9B2J"},
    Broken{kRefuseFlatten, {"setup.flatten-premiere"}, "command 7: status 516"},
    // It cares for the second answer as little as for the rule.
    Broken{kReturnLayerTwice, {"frames.layers", "faults.checkin_layer_pixels"}},
    Broken{kCallAtSequenceDown, {"frames.calls"}, "or no frame being made"},
    Broken{kDisposeTwiceWhenTwo,
           {"frames.calls"},
           "or disposed of already (once, in frames.interleaved)"},
    Broken{kIgnoreOnce, {"faults.abort"}, "status 0, a picture without what failed"},
    Broken{kKeepParameter, {"frames.parameters"}, "6 parameters checked out and not in again"},
    Broken{kWrongCount, {"controls.count"}, "num_params is 8, but with the input layer 7"},
    Broken{kStartOutside,
           {"controls.ranges"},
           "\"Gain\" starts at 300.5, outside its valid range, 0 to 10"},
    Broken{kDefaultOutside,
           {"controls.ranges"},
           "\"Count\" has the default -6, outside its valid range, -5 to 20"},
    Broken{kSliderOutside,
           {"controls.ranges"},
           "\"Count\" has a slider from 0 to 21, beyond its valid range, -5 to 20"},
    Broken{kCheckboxOfFive, {"controls.checkboxes"}, "\"Invert\" starts at 5, with default 1"},
    Broken{kEmptyChoice, {"controls.texts"}, "choice 2 of \"Mode\" has no text"},
    Broken{kUnknownControl, {"controls.kinds"}, "\"Strange\" is of the type 77"},
    Broken{kSameId, {"controls.ids"}, "\"Twin\" has the id 4, as another has"},
    Broken{kKeepThird, kFrameLeaks, "frame 2: 1 parameters checked out and not in again"},
    Broken{kSwallowCancel,
           {"faults.checkout_output"},
           "status 512 instead of 517, the user's cancellation (3 times in 8-bit, 16-bit and "
           "float, first with every call of checkout_output failing with 517)"},
    Broken{kBlankWithoutHandle, {"faults.host_new_handle"}, "status 0, no picture"}};

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
    const std::set<std::string> down = {"setup.down"};
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
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_TRUE(leaves_out(report,
                           "leaks.unload: the module stays after it was unloaded, so that its end "
                           "was not seen; with g++, -fno-gnu-unique lets it go"));
}

TEST(BrokenEffectThatLosesMappings, IsCaughtWhereTheyTell) {
    const Report report = check_with(kLeakMapping, "leaks.");
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(failing(report), std::set<std::string>{}) << "the sanitizer's own come and go";
#else
    EXPECT_EQ(failing(report), kFrameLeaks);
    EXPECT_EQ(row(report, "leaks.float").answer, "4096 bytes of address space lost each time");
#endif
}

#ifdef __linux__
/// Elsewhere the system keeps no track of what leaves the group.
TEST(BrokenEffectThatLeavesASession, IsCaughtToo) {
    const Report report = check_with(kLeaveSession, "frames.16");
    EXPECT_EQ(failing(report), std::set<std::string>{"frames.16-bit"});
    EXPECT_EQ(row(report, "frames.16-bit").answer, "1 process was left running");
}
#endif

TEST(BrokenEffectThatHangs, CostsItsTimeLimitAndARow) {
    const Report report = check_with(kHang, "frames.16", std::chrono::milliseconds(2500));
    EXPECT_EQ(failing(report), std::set<std::string>{"frames.16-bit"});
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
    EXPECT_EQ(failing(report), std::set<std::string>{"faults.checkout_output"});
    EXPECT_NE(row(report, "faults.checkout_output").answer.find("lost each time"),
              std::string::npos)
        << row(report, "faults.checkout_output").answer;
}

TEST(EffectThatLeavesLayersToItsHost, Passes) {
    // Checking in is optional: a host takes them back when the render returns.
    const Report report = check_with(kKeepLayer, "frames.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
    // One in each depth; one each in the first and the last frame, in the rows without blur,
    // without a camera, of one pixel, of a part, at half resolution, of other pixels, and after the
    // empty request; two each of the same frame twice, with longer rows and round flatten; three
    // with the two layers.
    EXPECT_EQ(row(report, "frames.layers").answer,
              "nothing found; 21 left for the host to take back");
}

TEST(EffectWithGroupsOfControls, MayLeaveTheirEndsWithoutAnId) {
    EXPECT_EQ(failing(check_with(kGroups, "controls.")), std::set<std::string>{});
}

TEST(EffectThatAsksForARefresh, Passes) {
    EXPECT_EQ(failing(check_with(kAskForRefresh, "frames.")), std::set<std::string>{});
}

TEST(EffectWithInterfaces, IsToldWhatThisHostCannotAsk) {
    const Report report = check_with(kDeclareInterfaces, "setup.");
    EXPECT_EQ(failing(report), std::set<std::string>{}) << "it traps when it is asked";
    for (const char* command : {"9", "15", "19", "20", "21", "31", "32", "33"}) {
        const std::string id = std::string("setup.command-") + command;
        EXPECT_EQ(std::count_if(report.unexamined.begin(), report.unexamined.end(),
                                [&](const check::Unexamined& note) {
                                    return note.what == id &&
                                           note.why.rfind("the effect declares ", 0) == 0;
                                }),
                  1)
            << id;
    }
    const Report supervised = check_with(kSupervise, "setup.");
    EXPECT_EQ(failing(supervised), std::set<std::string>{});
    EXPECT_TRUE(leaves_out(supervised,
                           "setup.command-13: the effect supervises a control, and there is nobody "
                           "to change it"));
}

TEST(EffectThatUpdatesItsControls, IsAskedToWithTheirInitialValues) {
    const Report report = check_with(kDeclareUpdates, "setup.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_EQ(row(report, "setup.update-controls").verdict, check::Verdict::Pass);
    EXPECT_THROW(row(check_with(kNone, "setup."), "setup.update-controls"), std::runtime_error);
}

TEST(BrokenEffectThatCrashesUnasked, IsCaughtAndNotAskedAgain) {
    const Report report = check_with(kCrashInGpuSetup, "setup.");
    EXPECT_EQ(failing(report), (std::set<std::string>{"setup.unasked", "setup.unasked-premiere"}));
    EXPECT_TRUE(leaves_out(
        report, "setup.unasked, again and again and in a host that fails: it fails once"));
    EXPECT_EQ(
        row(report, "setup.unasked").answer,
        "killed by SIGILL during commands that it did not ask for, in PF_Cmd_GPU_DEVICE_SETUP");
}

TEST(EffectWithoutSmartRendering, IsPlayedPlainlyAndHasNoRulesOfSmartFrames) {
    const Report report = check_with(kNoSmart, "frames.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
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
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_EQ(report.unexamined.size(), 1U) << "the registration alone";
    for (const char* id : {"frames.still", "frames.interleaved", "leaks.16-bit",
                           "faults.checkout_param", "faults.checkout_output"}) {
        EXPECT_EQ(row(report, id).verdict, check::Verdict::Pass) << id;
    }
    EXPECT_THROW(row(report, "frames.float"), std::runtime_error);
}

/// Of the kinds of frame in Premiere Pro, those with a row.
std::set<std::string> premiere_kinds(const Report& report) {
    std::set<std::string> kinds;
    for (const check::Row& one : report.rows) {
        if (one.id.rfind("frames.premiere", 0) == 0) {
            kinds.insert(one.id);
        }
    }
    return kinds;
}

TEST(EffectWithFormatsOfPremiere, IsPlayedInEachOfThem) {
    const Report report = check_with(kWriteInPremiere, "frames.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_EQ(premiere_kinds(report),
              (std::set<std::string>{"frames.premiere", "frames.premiere-16-bit",
                                     "frames.premiere-float"}));
    const Report filled = check_with(kPremiereFormats);
    EXPECT_EQ(failing(filled), std::set<std::string>{});
    for (const char* kind : {"premiere", "premiere-16-bit", "premiere-float"}) {
        EXPECT_EQ(row(filled, "frames." + std::string(kind)).answer,
                  "status 0, all of 48 x 27 pixels drawn");
        row(filled, "leaks." + std::string(kind));
    }
    EXPECT_NE(row(filled, "faults.fill").sent.find("premiere, premiere-16-bit and premiere-float"),
              std::string::npos);
    EXPECT_EQ(premiere_kinds(check_with(kPremiereFloatAlone, "frames.")),
              std::set<std::string>{"frames.premiere-float"});
}

TEST(EffectWithFormatsOfPremiere, IsPlayedInEightBitsIfItDeclaresNone) {
    const Report report = check_with(kNoPremiereFormats, "frames.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_EQ(premiere_kinds(report), std::set<std::string>{"frames.premiere"});
}

TEST(EffectWithFormatsOfPremiere, IsToldWhichOfThemTheHostDoesNotDraw) {
    const std::string note =
        "frames.premiere-formats: this host draws one format of a depth, BGRA or 8-bit ARGB, and "
        "the effect also declares ";
    EXPECT_TRUE(
        leaves_out(check_with(kPremiereFormats, "frames."), note + "the format 0x12345678"));
    EXPECT_TRUE(leaves_out(check_with(kPremiereArgb, "frames."),
                           note + "float ARGB, 16-bit ARGB and 8-bit BGRA"));
    for (const std::string& other :
         report_support::unexamined(check_with(kPremiereFloat, "frames."))) {
        EXPECT_EQ(other.find("frames.premiere-formats"), std::string::npos);
    }
}

TEST(EffectWithFormatsOfPremiere, IsPlayedInNoneThatTheHostDoesNotKnow) {
    const Report report = check_with(kPremiereUnknown);
    EXPECT_EQ(failing(report), std::set<std::string>{});
    EXPECT_EQ(premiere_kinds(report), std::set<std::string>{});
    EXPECT_TRUE(leaves_out(report,
                           "leaks.unload-premiere: this host draws in none of the formats that the "
                           "effect declares"));
}

TEST(EffectThatCallsWhatTheHostLacks, FailsNowhereAndIsToldTheFunction) {
    const Report report = check_with(kCallUnprovided, "frames.");
    EXPECT_EQ(failing(report), std::set<std::string>{});
    for (const std::string& id : kRenders) {
        EXPECT_THROW(row(report, id), std::runtime_error) << id;
        EXPECT_TRUE(leaves_out(report, id + ": the plug-in calls AEGP Layer Suite 11: "
                                            "AEGP_GetLayerName, which this host does not provide"))
            << id;
    }
}

TEST(WhatAFailureHides, IsToldInsteadOfPassed) {
    const Report report = check_with(kThrowStandard);
    EXPECT_EQ(
        report_support::unexamined(report),
        (std::vector<std::string>{"bundle.registration: there is no Info.plist, PkgInfo or "
                                  "Resources/libconforming_effect.so.rsrc beside the module",
                                  "leaks.8-bit: a frame fails, see frames.8-bit",
                                  "leaks.16-bit: a frame fails, see frames.16-bit",
                                  "leaks.float: a frame fails, see frames.float",
                                  "leaks.unload: a frame fails, see frames.8-bit",
                                  "faults, 8-bit: it fails without faults, see frames.8-bit",
                                  "faults, 16-bit: it fails without faults, see frames.16-bit",
                                  "faults, float: it fails without faults, see frames.float"}));
}

TEST(SetUpThatFails, EndsTheRunWithItsReason) {
    setenv("SET_UP_FAULT", "refuse", 1);
    const Report report = check::run(SET_UP_FAULTS);
    unsetenv("SET_UP_FAULT");
    EXPECT_EQ(failing(report), std::set<std::string>{"setup.session"});
    EXPECT_EQ(row(report, "setup.session").answer, "not today (status 512)");
    EXPECT_EQ(report.rows.size(), 2U) << "with the module itself";
    EXPECT_EQ(report.unexamined.size(), 6U) << "registration, questions and four families";
}

TEST(SetUpThatFails, TellsWhatIsStillHeldToo) {
    setenv("SET_UP_FAULT", "refuse holding a suite", 1);
    const Report report = check::run(SET_UP_FAULTS);
    unsetenv("SET_UP_FAULT");
    EXPECT_NE(row(report, "setup.session").answer.find("was acquired 1 times more"),
              std::string::npos);
}

TEST(SetUpThatThrows, IsARowToo) {
    setenv("SET_UP_FAULT", "throw", 1);
    const Report report = check::run(SET_UP_FAULTS);
    unsetenv("SET_UP_FAULT");
    EXPECT_EQ(failing(report), std::set<std::string>{"setup.session"});
    EXPECT_NE(row(report, "setup.session").answer.find("left it during PF_Cmd_GLOBAL_SETUP"),
              std::string::npos);
}

TEST(ModuleWithoutAnEntryPoint, FailsItsRowWithTheRemedy) {
    const Report report = check::run(NO_ENTRY_POINT);
    EXPECT_EQ(failing(report), std::set<std::string>{"bundle.module"});
    EXPECT_EQ(row(report, "bundle.module").answer,
              "\"" NO_ENTRY_POINT
              "\" exports no entry point EntryPointFunc; export it with C linkage and default "
              "visibility");
}

TEST(RowsAskedFor, AreTheOnlyOnesTold) {
    const Report one = check_with(kLeakInFloat, "leaks.float");
    ASSERT_EQ(one.rows.size(), 1U);
    EXPECT_EQ(one.rows[0].id, "leaks.float");
    EXPECT_EQ(one.rows[0].verdict, check::Verdict::Fail);
    EXPECT_TRUE(one.unexamined.empty());
    const Report rule = check_with(kLeakSuite, "frames.suites");
    ASSERT_EQ(rule.rows.size(), 1U);
    EXPECT_EQ(rule.rows[0].verdict, check::Verdict::Fail) << "the frames were looked at for it";
    const Report call = check_with(kLeakOnError, "faults.checkout_output");
    ASSERT_EQ(call.rows.size(), 1U);
    EXPECT_EQ(call.rows[0].verdict, check::Verdict::Fail);
    EXPECT_TRUE(check_with(kNone, "no such").rows.empty());
}

TEST(RowsAskedFor, HaveTheVerdictOfTheWholeCheck) {
    // It leaves a handle each time: memory is lost too, which is no row's but that of handles.
    EXPECT_EQ(failing(check_with(kLeakHandle)), std::set<std::string>{"frames.handles"});
    const Report leaks = check_with(kLeakHandle, "leaks.float");
    EXPECT_EQ(failing(leaks), std::set<std::string>{"frames.handles"}) << "why the row is missing";
    EXPECT_TRUE(leaves_out(
        leaks, "leaks.float: the handles lost would count as memory, see frames.handles"));
    setenv("SET_UP_FAULT", "refuse", 1);
    Options options;
    options.rows = "frames.";
    const Report refused = check::run(SET_UP_FAULTS, options);
    unsetenv("SET_UP_FAULT");
    EXPECT_EQ(failing(refused), std::set<std::string>{"setup.session"});
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
    Options options;
    options.time_limit = report_support::kPatience;
    options.progress = [&](std::size_t done, const std::string& row) {
        EXPECT_EQ(done, probes++);
        EXPECT_FALSE(row.empty());
    };
    const Report report = check::run(CONFORMING_EFFECT, options);
    EXPECT_EQ(failing(report), std::set<std::string>{});
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
