// A report of a check as people and programs read it.
#include "check_report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "failure_of.h"
#include "program_version.h"

namespace {

using check::Report;
using check::Row;
using check::Verdict;

Row row(const std::string& id, const std::string& answer, Verdict verdict) {
    return {.id = id,
            .sent = "something sent",
            .promise = "a promise",
            .answer = answer,
            .verdict = verdict};
}

TEST(ReportText, WrapsCellsAndSetsFamiliesApart) {
    Report report;
    report.file = "/some/Module";
    report.match_name = "A Name";
    report.rows = {
        row("bundle.one", "an answer", Verdict::Pass),
        row("frames.one", "a long answer that goes on for more than just the sixty-six characters",
            Verdict::Fail),
        row("frames.two", "a habit", Verdict::Kept)};
    report.rows[2].deviations = {"this one", "that one"};
    report.unexamined = {{"leaks", "why"}};
    EXPECT_EQ(lumivar::report_as_text(report),
              R"(/some/Module
registered as "A Name"

The bundle

      Id and what was sent
      Promised                                        Came back
pass  bundle.one  something sent
      a promise                                       an answer

Frames

      Id and what was sent
      Promised                                        Came back
FAIL  frames.one  something sent
      a promise                                       a long answer that goes on for more than just the sixty-six
                                                      characters
kept  frames.two  something sent
      a promise                                       a habit [this one, that one]

Not examined

      leaks: why

Rows that fail

      frames.one

3 rows: 1 pass, 1 kept deviations, 1 fail, 1 not examined
)");
}

TEST(ReportText, FitsATerminal) {
    Report report;
    report.rows = {row("bundle." + std::string(130, 'i'), std::string(300, 'x'), Verdict::Fail)};
    report.unexamined = {{"leaks", std::string(200, 'y')}};
    std::istringstream lines(lumivar::report_as_text(report));
    std::size_t longest = 0;
    for (std::string line; std::getline(lines, line);) {
        longest = std::max(longest, line.size());
    }
    EXPECT_EQ(longest, 120U);
}

TEST(ReportText, OfAFileWithAnActingNameActsOnNothing) {
    Report report;
    report.file = "/some/\x1B[2J/Module";
    EXPECT_EQ(lumivar::report_as_text(report).find("/some/\\x1B[2J/Module\n"), 0U);
    EXPECT_EQ(nlohmann::json::parse(lumivar::report_as_json(report))["module"],
              "/some/\\x1B[2J/Module");
}

TEST(ReportText, SetsColumnsByCharactersAndEndsWithTheCounts) {
    Report report;
    report.rows = {row("bundle.one", "an answer", Verdict::Pass)};
    report.rows[0].promise = "\u2605\u2605\u2605";
    const std::string text = lumivar::report_as_text(report);
    EXPECT_TRUE(
        holds(text, "      \u2605\u2605\u2605" + std::string(46 - 3 + 2, ' ') + "an answer\n"));
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2)),
              "\n1 rows: 1 pass, 0 kept deviations, 0 fail\n");
}

TEST(ReportJson, HasWhatProgramsGoBy) {
    Report report;
    report.file = "/some/Module";
    report.match_name = "A Name";
    report.rows = {row("bundle.one", "an answer", Verdict::Pass),
                   row("frames.one", "1; 2", Verdict::Fail), row("frames.two", "3", Verdict::Kept)};
    report.rows[1].findings = {{"1", "", false}, {"2", "a habit", true}};
    report.rows[1].deviations = {"a habit"};
    report.unexamined = {{"leaks", "why"}, {"faults", "because"}};
    report.defects = {{"leaks.float", "a slip"}};
    nlohmann::json expected = nlohmann::json::parse(R"({
        "format": 2,
        "module": "/some/Module",
        "match_name": "A Name",
        "passed": false,
        "counts": {"rows": 3, "pass": 1, "fail": 1, "kept": 1, "not_examined": 2, "defects": 1},
        "rows": [
            {"id": "bundle.one", "sent": "something sent", "promised": "a promise",
             "came_back": "an answer", "verdict": "pass", "findings": [], "deviations": []},
            {"id": "frames.one", "sent": "something sent", "promised": "a promise",
             "came_back": "1; 2", "verdict": "fail",
             "findings": [{"text": "1", "deviation": "", "kept": false},
                          {"text": "2", "deviation": "a habit", "kept": true}],
             "deviations": ["a habit"]},
            {"id": "frames.two", "sent": "something sent", "promised": "a promise",
             "came_back": "3", "verdict": "kept", "findings": [], "deviations": []}
        ],
        "not_examined": [{"what": "leaks", "why": "why"}, {"what": "faults", "why": "because"}],
        "defects": [{"what": "leaks.float", "why": "a slip"}]
    })");
    expected["program"] = lumivar::kProgramVersion;
    EXPECT_EQ(nlohmann::json::parse(lumivar::report_as_json(report)), expected);
}

TEST(DefectOfTheCheck, IsToldAsItsOwn) {
    Report report;
    report.rows = {row("frames.a", "fine", Verdict::Pass)};
    report.defects = {{"leaks.float", "a slip"}};
    EXPECT_FALSE(report.passed());
    EXPECT_TRUE(holds(lumivar::report_as_text(report),
                      "\nThe check itself failed, which says nothing about the plug-in\n\n"
                      "      leaks.float: a slip\n"));
    EXPECT_EQ(lumivar::failure_text(report),
              "the check itself failed, not the plug-in, at leaks.float: a slip");
}

TEST(FailureText, IsTheOneRowOrTheFirstIds) {
    Report report;
    report.rows = {row("frames.a", "trouble", Verdict::Fail), row("frames.b", "", Verdict::Pass)};
    EXPECT_EQ(lumivar::failure_text(report), "the check frames.a (something sent) fails: trouble");
    report.rows[1].verdict = Verdict::Fail;
    EXPECT_EQ(lumivar::failure_text(report), "2 of 2 rows of the check fail: frames.a, frames.b");
    report.rows.push_back(row("frames.c", "", Verdict::Fail));
    report.rows.push_back(row("frames.d", "", Verdict::Fail));
    EXPECT_EQ(lumivar::failure_text(report),
              "4 of 4 rows of the check fail: frames.a, frames.b, frames.c and 1 more");
}

}  // namespace
