// How rows come into a report, and how what the host notes is sorted.
#include "run.h"

#include <check/check.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "report_support.h"

namespace {

using report_support::texts;

using check::Finding;
using check::Report;
using check::Row;
using Checking = check::Run;
using check::Verdict;
using host::Rule;

using Texts = std::vector<std::string>;

const check::RowText kRow = {"frames.float", "a frame", "a promise"};
const std::string kStaysOut(check::kParametersStayOut);

/// The one row of an effect of this name in which these are found.
Row row_of(const std::string& match_name, const std::vector<Finding>& findings) {
    Checking run(CONFORMING_EFFECT, {});
    run.set_match_name(match_name);
    run.enter(kRow, findings, "all is well");
    return run.finish().rows.front();
}

TEST(EnteredRow, PassesWithItsAnswerWhenNothingIsFound) {
    const Row row = row_of("An Effect", {});
    EXPECT_EQ(row.id, "frames.float");
    EXPECT_EQ(row.sent, "a frame");
    EXPECT_EQ(row.promise, "a promise");
    EXPECT_EQ(row.answer, "all is well");
    EXPECT_EQ(row.verdict, Verdict::Pass);
    EXPECT_TRUE(row.findings.empty());
}

TEST(EnteredRow, KeepsAllFindingsAndTellsTheFirst) {
    const Row row = row_of("An Effect", {{"1"}, {"2"}, {"1"}, {"3"}, {"4"}, {"5"}});
    EXPECT_EQ(row.answer, "1; 2; 3; and 2 more");
    EXPECT_EQ(texts(row), (Texts{"1", "2", "3", "4", "5"})) << "each once";
    EXPECT_EQ(row.verdict, Verdict::Fail);
}

TEST(EnteredRow, IsKeptWhereTheContractOfThatEffectKeepsAllThatIsFound) {
    const Finding six = {"six", kStaysOut};
    const struct {
        const char* match_name;
        std::vector<Finding> findings;
        Verdict verdict;
        std::string answer;
        std::vector<bool> kept;
    } cases[] = {
        {"Lumivar Star Field", {six}, Verdict::Kept, "six", {true}},
        // The rest is told first.
        {"Lumivar Star Field", {six, {"worse"}}, Verdict::Fail, "worse; six", {false, true}},
        // It shows all the same.
        {"Another", {six}, Verdict::Fail, "six", {false}}};
    for (const auto& each : cases) {
        const Row row = row_of(each.match_name, each.findings);
        EXPECT_EQ(row.verdict, each.verdict);
        EXPECT_EQ(row.answer, each.answer);
        std::vector<bool> kept;
        for (const check::RowFinding& finding : row.findings) {
            kept.push_back(finding.kept);
        }
        EXPECT_EQ(kept, each.kept);
        EXPECT_EQ(row.findings.back().deviation, kStaysOut);
        EXPECT_EQ(row.deviations, Texts{kStaysOut});
    }
}

TEST(EnteredTexts, ActOnNoTerminal) {
    Checking run(CONFORMING_EFFECT, {});
    run.set_match_name("Na\x1Bme");
    run.enter({"faults.missing-\x1B[2J", "a \x7F suite", "\xC2\x9B promise"}, {}, "line\nline");
    run.enter(kRow, {{"\x1B]0;title\a"}}, "");
    check::Heard died;
    died.died = "killed by SIGABRT";
    died.kept["doing"] = "a\rb";
    died.last_words = "last \xFF words";
    run.enter(kRow, died);
    run.leave_out("faults.\x1B", "why\b");
    const Report report = run.finish();
    EXPECT_EQ(report.match_name, "Na\\x1Bme");
    EXPECT_EQ(report.rows[0].id, "faults.missing-\\x1B[2J");
    EXPECT_EQ(report.rows[0].sent, "a \\x7F suite");
    EXPECT_EQ(report.rows[0].promise, "\\xC2\\x9B promise");
    EXPECT_EQ(report.rows[0].answer, "line\\nline");
    EXPECT_EQ(report.rows[1].answer, "\\x1B]0;title\\x07");
    EXPECT_EQ(report.rows[1].findings.at(0).text, "\\x1B]0;title\\x07");
    EXPECT_EQ(report.rows[2].answer, "killed by SIGABRT during a\\rb: last \\xFF words");
    EXPECT_EQ(report.unexamined.at(0).what, "faults.\\x1B");
    EXPECT_EQ(report.unexamined.at(0).why, "why\\x08");
}

TEST(RunProgress, TellsWhatIsProbedBeforeItIs) {
    std::vector<std::pair<std::size_t, std::string>> told;
    const auto progress = [&](std::size_t probes, const std::string& row) {
        told.emplace_back(probes, row);
    };
    Checking run(CONFORMING_EFFECT,
                 {.time_limit = report_support::kPatience, .progress = progress});
    const auto body = [](check::Notes& notes) { notes.say("here"); };
    EXPECT_EQ(run.probe("frames.float", body).text("said"), "here");
    run.probe("faults.\x1B", body);
    EXPECT_EQ(told, (std::vector<std::pair<std::size_t, std::string>>{{0, "frames.float"},
                                                                      {1, "faults.\\x1B"}}));
}

TEST(RunOfSomeRows, KnowsWhatItHasToLookAt) {
    const Checking some(CONFORMING_EFFECT, {.rows = "faults.set"});
    EXPECT_TRUE(some.needs("faults"));
    EXPECT_TRUE(some.needs("faults.set-up.abort"));
    EXPECT_FALSE(some.needs("faults.abort"));
    EXPECT_TRUE(some.needs("frames.float")) << "faults stand on frames";
    EXPECT_TRUE(some.needs("leaks.float")) << "and on what is lost without them";
    EXPECT_FALSE(some.needs("controls"));
    EXPECT_TRUE(some.stands("controls.ids")) << "nobody looked";
    EXPECT_FALSE(some.stands("faults.set-up.abort")) << "it should be there";
    EXPECT_FALSE(some.wants("faults."));
    EXPECT_TRUE(Checking(CONFORMING_EFFECT, {.rows = "kept."}).needs("frames.float"))
        << "the list needs all";
}

TEST(DefectOfTheCheck, IsNoRowOfThePlugInAndDoesNotPass) {
    Checking run(CONFORMING_EFFECT, {});
    check::Heard heard;
    heard.kept["defect"] = "a slip";
    run.enter(kRow, heard);
    EXPECT_FALSE(run.stands(kRow.id)) << "nothing is built on it";
    const Report report = run.finish();
    EXPECT_TRUE(report.rows.empty());
    ASSERT_EQ(report.defects.size(), 1U);
    EXPECT_EQ(report.defects[0].what, "frames.float");
    EXPECT_EQ(report.defects[0].why, "a slip");
    EXPECT_FALSE(report.passed());
}

TEST(Rules, AreSortedIntoRowsByWhatTheyAre) {
    using check::row_of;
    EXPECT_EQ(row_of(Rule::Handles), "handles");
    EXPECT_EQ(row_of(Rule::LayerNotHeld), "layers");
    EXPECT_EQ(row_of(Rule::SuiteNotHeld), "calls");
    for (int rule = 0; rule < static_cast<int>(Rule::ControlCount); ++rule) {
        EXPECT_FALSE(check::of_controls(Rule{rule}));
        const auto named = [&](const check::RuleRow& row) {
            return row.name == row_of(Rule{rule});
        };
        EXPECT_EQ(std::count_if(check::kRuleRows.begin(), check::kRuleRows.end(), named), 1)
            << rule;
    }
    EXPECT_TRUE(check::of_controls(Rule::ControlCount));
    EXPECT_TRUE(check::of_controls(Rule::ChoiceCounts));
}

TEST(Rules, OfAFailingHostMayBeKept) {
    using check::deviation_under_faults;
    EXPECT_EQ(deviation_under_faults({Rule::SuiteNotHeld, "any words", "PF World Suite"}),
              check::kWorldSuiteReleased);
    EXPECT_EQ(deviation_under_faults({Rule::SuiteNotHeld, "PF World Suite", "PF Handle Suite"}),
              "");
    EXPECT_EQ(deviation_under_faults({Rule::LayerNotHeld, ""}), check::kLayerCheckedIn);
    EXPECT_EQ(deviation_under_faults({Rule::ParameterNotHeld, ""}), check::kParameterCheckedIn);
    EXPECT_EQ(deviation_under_faults({Rule::Calls, "PF World Suite is not held"}), "");
}

TEST(Rules, TellOfASetDownWhatWasNotToldBefore) {
    using check::beyond_at_set_down;
    using check::Violations;
    const host::Violation one = {Rule::Handles, "1 host handles were not disposed of"};
    const host::Violation two = {Rule::Handles, "2 host handles were not disposed of"};
    const host::Violation suite = {Rule::Suites, "suite"};
    const host::Violation x = {Rule::Calls, "x"};
    const host::Violation y = {Rule::Calls, "y"};
    EXPECT_EQ(beyond_at_set_down({two, suite, x, y}, {one, x}), (Violations{suite, y}))
        << "the same handles, held still, with more of their kind";
    EXPECT_EQ(beyond_at_set_down({two, suite}, {}), (Violations{two, suite}));
}

TEST(Deviations, BelongToOneEffect) {
    EXPECT_EQ(check::deviations_of("Lumivar Star Field").size(), 8U);
    EXPECT_TRUE(check::deviations_of("").empty());
    EXPECT_TRUE(check::deviations_of("Lumivar Star Fiel").empty());
    for (const check::Deviation& one : check::deviations_of("Lumivar Star Field")) {
        EXPECT_FALSE(one.reason.empty()) << one.name;
        EXPECT_FALSE(one.guide.empty()) << one.name;
    }
}

}  // namespace
