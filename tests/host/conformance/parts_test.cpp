// The parts of a conformance run by themselves, those that have no test of their own.
#include <conformance/deviations.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apart.h"
#include "examination.h"
#include "fault_family.h"
#include "faults.h"
#include "report_support.h"
#include "rules.h"

namespace {

using namespace std::string_literals;
using conformance::Notes;

TEST(Rules, SortWhatTheHostTells) {
    using conformance::rule_of;
    EXPECT_EQ(rule_of("1 host handles were not disposed of"), "handles");
    EXPECT_EQ(rule_of("suite \"S\" version 1 was acquired 1 times more than it was released"),
              "suites");
    EXPECT_EQ(rule_of("checkin_layer_pixels: the id 0 is not checked out"), "layers");
    EXPECT_EQ(rule_of("something new"), "calls") << "nothing is lost";
}

TEST(Rules, TellOfASetDownWhatWasNotToldBefore) {
    using conformance::beyond_at_set_down;
    const std::string one = "1 host handles were not disposed of";
    const std::string two = "2 host handles were not disposed of";
    const std::string suite =
        "suite \"S\" version 1 was acquired 1 times more than it was released";
    using Texts = std::vector<std::string>;
    EXPECT_EQ(beyond_at_set_down({two, suite, "x", "y"}, {one, "x"}), (Texts{suite, "y"}))
        << "the same handles, held still, with more of their kind";
    EXPECT_EQ(beyond_at_set_down({two, suite}, {}), (Texts{two, suite}));
}

TEST(Deviations, BelongToOneEffect) {
    EXPECT_EQ(conformance::deviations_of("Lumivar Star Field").size(), 8U);
    EXPECT_TRUE(conformance::deviations_of("").empty());
    EXPECT_TRUE(conformance::deviations_of("Lumivar Star Fiel").empty());
    for (const conformance::Deviation& one : conformance::deviations_of("Lumivar Star Field")) {
        EXPECT_FALSE(one.reason.empty()) << one.name;
        EXPECT_FALSE(one.guide.empty()) << one.name;
    }
}

TEST(FailingCalls, FailOneByOneAndAllTogether) {
    const auto calls = conformance::failing_calls({{"checkout_param", 2}});
    ASSERT_EQ(calls.size(), 1U);
    const auto faults = calls[0].faults();
    ASSERT_EQ(faults.size(), 3U);
    EXPECT_EQ(faults[0].nth, 1);
    EXPECT_EQ(faults[1].nth, 2);
    EXPECT_EQ(faults[2].nth, 0);
    EXPECT_EQ(calls[0].sent(), "checkout_param fails (2 calls)");
    EXPECT_EQ(calls[0].debt(), conformance::Debt::Error);
}

TEST(FailingCalls, OfASuiteIsThatItIsMissing) {
    const conformance::FailingCall call{host::acquire_call("PF World Suite"), 4};
    EXPECT_EQ(call.faults().size(), 1U);
    EXPECT_EQ(call.slug(), "missing-PF-World-Suite");
    EXPECT_EQ(call.sent(), "PF World Suite is missing");
    EXPECT_EQ(call.debt(), conformance::Debt::ErrorOrFallback);
    EXPECT_EQ((conformance::FailingCall{"sprintf", 1}.debt()), conformance::Debt::Nothing);
}

/// A family of which only the play differs: the good run makes one call.
conformance::Report report_of_family(const std::function<void(Notes&)>& play_well, int delivered) {
    conformance::Examination run(CONFORMING_EFFECT, {});
    run.enter({"base.row", "", ""}, {}, "");
    examine_family(run, {"kind",
                         "a play",
                         "base.row",
                         {},
                         [](const conformance::FailingCall&) { return "a promise"; },
                         [&](Notes& notes) {
                             play_well(notes);
                             return conformance::GoodRun{{{"abort", 1}}, {}, true};
                         },
                         [=](const conformance::FailingCall&, const conformance::GoodRun&, Notes&) {
                             return delivered;
                         }});
    conformance::Report report = run.finish();
    report.rows.erase(report.rows.begin());
    return report;
}

TEST(FaultFamily, HasARowWithoutFaultsAndOneForEachCall) {
    const auto report = report_of_family([](Notes&) {}, 1);
    ASSERT_EQ(report.rows.size(), 2U);
    EXPECT_EQ(report.rows[0].id, "faults.kind.without-faults");
    EXPECT_EQ(report.rows[0].answer, "status 0; calls that can fail: 1");
    EXPECT_EQ(report.rows[1].id, "faults.kind.abort");
    EXPECT_TRUE(report.passed());
    EXPECT_TRUE(report.unexamined.empty());
}

TEST(FaultFamily, LeavesOutByNameWhatCouldNotFail) {
    const auto report = report_of_family([](Notes&) {}, 0);
    EXPECT_EQ(report.rows.size(), 1U);
    EXPECT_EQ(report_support::unexamined(report),
              std::vector<std::string>{
                  "faults.kind.abort: the call was made in the run without faults alone"});
}

TEST(FaultFamily, FailsForWhatGoesWrongWithoutFaults) {
    for (const bool crash : {false, true}) {
        const auto report = report_of_family(
            [=](Notes& notes) {
                notes.doing("this");
                if (crash) {
                    std::abort();
                }
                notes.find("", "found");
            },
            1);
        ASSERT_EQ(report.rows.size(), 1U);
        EXPECT_EQ(report.rows[0].answer, crash ? "killed by SIGABRT during this" : "found");
        EXPECT_FALSE(report.passed());
        EXPECT_EQ(report_support::unexamined(report),
                  std::vector<std::string>{"faults.kind: it fails without faults, see "
                                           "faults.kind.without-faults"});
    }
}

}  // namespace
