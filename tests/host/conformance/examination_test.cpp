// How rows come into a report.
#include "examination.h"

#include <conformance/deviations.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using conformance::Examination;
using conformance::Finding;
using conformance::Report;
using conformance::Row;
using conformance::Verdict;

using Texts = std::vector<std::string>;

constexpr conformance::RowText kRow = {"frames.float", "a frame", "a promise"};
const std::string kStaysOut(conformance::kParametersStayOut);

/// The one row of an effect of this name in which these are found.
Row row_of(const std::string& match_name, const std::vector<Finding>& findings) {
    Examination run(CONFORMING_EFFECT, {});
    run.set_match_name(match_name);
    run.enter(kRow, findings, "all is well");
    return run.finish().rows.front();
}

Texts texts(const Row& row) {
    Texts all;
    for (const conformance::RowFinding& finding : row.findings) {
        all.push_back(finding.text);
    }
    return all;
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
    const Row row = row_of(
        "An Effect",
        {{"", "1", ""}, {"", "2", ""}, {"", "1", ""}, {"", "3", ""}, {"", "4", ""}, {"", "5", ""}});
    EXPECT_EQ(row.answer, "1; 2; 3; and 2 more");
    EXPECT_EQ(texts(row), (Texts{"1", "2", "3", "4", "5"})) << "each once";
    EXPECT_EQ(row.verdict, Verdict::Fail);
}

TEST(EnteredRow, IsKeptWhereTheContractKeepsAllThatIsFound) {
    const Row row = row_of("Lumivar Star Field", {{"", "six", kStaysOut}});
    EXPECT_EQ(row.verdict, Verdict::Deviation);
    ASSERT_EQ(row.findings.size(), 1U);
    EXPECT_EQ(row.findings[0].deviation, kStaysOut);
    EXPECT_TRUE(row.findings[0].kept);
    EXPECT_EQ(row.deviations, Texts{kStaysOut});
}

TEST(EnteredRow, FailsForTheRestAndTellsItFirst) {
    const Row row = row_of("Lumivar Star Field", {{"", "six", kStaysOut}, {"", "worse", ""}});
    EXPECT_EQ(row.verdict, Verdict::Fail);
    EXPECT_EQ(row.answer, "worse; six");
    ASSERT_EQ(row.findings.size(), 2U);
    EXPECT_FALSE(row.findings[0].kept);
    EXPECT_TRUE(row.findings[1].kept);
    EXPECT_EQ(row.deviations, Texts{kStaysOut});
}

TEST(EnteredRow, FailsInAnEffectOfAnotherName) {
    const Row row = row_of("Another", {{"", "six", kStaysOut}});
    EXPECT_EQ(row.verdict, Verdict::Fail);
    EXPECT_FALSE(row.findings.at(0).kept);
    EXPECT_EQ(row.deviations, Texts{kStaysOut}) << "it shows all the same";
}

TEST(EnteredTexts, ActOnNoTerminal) {
    Examination run(CONFORMING_EFFECT, {});
    run.set_match_name("Na\x1Bme");
    run.enter({"faults.missing-\x1B[2J", "a \x7F suite", "\xC2\x9B promise"}, {}, "line\nline");
    run.enter(kRow, {{"", "\x1B]0;title\a", ""}}, "");
    conformance::Heard died;
    died.died = "killed by SIGABRT";
    died.doing = "a\rb";
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

TEST(ExaminationProgress, TellsWhatIsProbedBeforeItIs) {
    std::vector<std::pair<std::size_t, std::string>> told;
    conformance::Options options;
    options.time_limit = std::chrono::milliseconds(60000);
    options.progress = [&](std::size_t probes, const std::string& row) {
        told.emplace_back(probes, row);
    };
    Examination run(CONFORMING_EFFECT, options);
    const auto body = [](conformance::Notes& notes) { notes.say("here"); };
    EXPECT_EQ(run.probe("frames.float", body).said, "here");
    run.probe("faults.\x1B", body);
    EXPECT_EQ(told, (std::vector<std::pair<std::size_t, std::string>>{{0, "frames.float"},
                                                                      {1, "faults.\\x1B"}}));
}

}  // namespace
