// lumivar check, as a user and a script run it. What the rows find is tested with the run itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "check_report.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using conformance::Report;
using conformance::Row;
using conformance::Verdict;

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Check, FindsThePluginOfTheProgramInOrder) {
    const ToolResult result = run_tool({"check", "--json", "--time-limit", "60"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "") << "no progress where there is no terminal";
    const nlohmann::json report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["match_name"], "Lumivar Star Field");
    EXPECT_EQ(report["passed"], true);
    EXPECT_EQ(report["not_examined"],
              nlohmann::json::array({"frames.premiere-formats: this host draws 8-bit BGRA only, "
                                     "and the effect declares float BGRA and 16-bit BGRA"}));
    EXPECT_TRUE(holds(report["module"], "plugin/Lumivar.plugin/Contents/MacOS/Lumivar"));
    EXPECT_GT(report["rows"].size(), 100U);
    for (const nlohmann::json& row : report["rows"]) {
        EXPECT_NE(row["verdict"], "FAIL") << row;
    }
}

/// The table's rows: of each block the first line, whose verdict stands in the last column.
std::vector<std::string> verdicts_of_table(const std::string& text) {
    std::vector<std::string> verdicts;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        for (const char* verdict : {"  pass", "  FAIL", "  kept deviation"}) {
            const std::string end = verdict;
            if (line.size() > end.size() &&
                line.compare(line.size() - end.size(), end.size(), end) == 0) {
                verdicts.push_back(end.substr(2));
            }
        }
    }
    return verdicts;
}

TEST(Check, TellsTheSameRowsAsATableAndAsJson) {
    const std::string module = CONFORMING_EFFECT;
    ToolOptions broken;
    broken.environment = {"MISCHIEF=5"};  // writes past a row
    const ToolResult table = run_tool({"check", module, "--time-limit", "60"}, broken);
    const ToolResult json = run_tool({"check", module, "--time-limit", "60", "--json"}, broken);
    const nlohmann::json report = nlohmann::json::parse(json.out);
    std::vector<std::string> verdicts;
    for (const nlohmann::json& row : report["rows"]) {
        verdicts.push_back(row["verdict"]);
    }
    EXPECT_EQ(verdicts_of_table(table.out), verdicts);
    EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), "FAIL"), 1);
    for (const nlohmann::json& note : report["not_examined"]) {
        EXPECT_TRUE(holds(table.out, "\n" + note.get<std::string>() + "\n")) << note;
    }
    EXPECT_EQ(report["passed"], false);
    for (const ToolResult& result : {table, json}) {
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err.find("lumivar: the check \"all of these frames\" fails: the plug-in "
                                  "wrote outside the output's pixels: in the padding of row 1"),
                  0U)
            << result.err;
    }
}

TEST(Check, SaysThatItsReportIsLost) {
    for (const char* mischief : {"MISCHIEF=1", "MISCHIEF=2"}) {  // none, throws
        ToolOptions full;
        full.environment = {mischief};
        full.output = "/dev/full";
        const ToolResult result =
            run_tool({"check", CONFORMING_EFFECT, "--time-limit", "60"}, full);
        EXPECT_EQ(result.code, 1) << mischief;
        EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n") << mischief;
    }
}

TEST(Check, CountsTheRowsThatFail) {
    ToolOptions broken;
    broken.environment = {"MISCHIEF=2"};  // throws
    const ToolResult result = run_tool({"check", CONFORMING_EFFECT, "--time-limit", "60"}, broken);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err.find("lumivar: 15 of "), 0U) << result.err;
    EXPECT_TRUE(holds(result.out, "\nNot examined\n"));
}

TEST(Check, RefusesWhatIsNoBundleWithTheRemedy) {
    const ScratchFolder folder;
    fs::create_directory(folder / "Empty.plugin");
    const std::string remedy =
        "; name a bundle, NAME.plugin with its module in Contents/MacOS/NAME\n";
    const ToolResult empty = run_tool({"check", folder / "Empty.plugin"});
    EXPECT_EQ(empty.code, 1);
    EXPECT_EQ(empty.out, "");
    EXPECT_EQ(empty.err, "lumivar: \"" + (folder / "Empty.plugin") +
                             "\" is no plug-in bundle: it has no Contents/MacOS/Empty" + remedy);
    const ToolResult missing = run_tool({"check", folder / "None.plugin"});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.err, "lumivar: there is no plug-in " + (folder / "None.plugin") + remedy);
}

TEST(Check, SaysWhereItLookedForTheProgramsOwn) {
    const ScratchFolder folder;
    fs::create_directory(folder / "bin");
    fs::copy_file(LUMIVAR_PROGRAM, folder / "bin/lumivar");
    ToolOptions options;
    options.program = folder / "bin/lumivar";
    const ToolResult result = run_tool({"check"}, options);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "lumivar: cannot find the plug-in; it is in none of " +
                              (folder / "plugin/Lumivar.plugin") + ", " +
                              (folder / "lib/lumivar/Lumivar.plugin") + ", " +
                              (folder / "lib/Lumivar.plugin") +
                              "; name a bundle, NAME.plugin with its module in "
                              "Contents/MacOS/NAME\n");
}

TEST(Check, NamesAFileThatIsNoModuleAndTheRemedy) {
    const ScratchFolder folder;
    write_file(folder / "text", "no module");
    const ToolResult result = run_tool({"check", folder / "text"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "lumivar: the check \"load the module\" fails: \"" +
                                      (folder / "text") + "\" cannot be loaded: "))
        << result.err;
    EXPECT_TRUE(holds(result.err, "; build it for this machine, with all it needs\n"));
}

TEST(Check, NamesAModuleWithoutAnEntryPointAndTheRemedy) {
    const ToolResult result = run_tool({"check", NO_ENTRY_POINT});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "lumivar: the check \"load the module\" fails: \"" NO_ENTRY_POINT
              "\" exports no entry point EntryPointFunc; export it with C linkage and default "
              "visibility\n");
}

TEST(Check, TeachesItself) {
    const ToolResult result = run_tool({"check", "--help"});
    EXPECT_EQ(result.code, 0);
    for (const char* part : {"BUNDLE", "--json", "--time-limit", "kept deviation", "Examples:"}) {
        EXPECT_TRUE(holds(result.out, part)) << part;
    }
    EXPECT_TRUE(holds(run_tool({"--help"}).out, "\n  check"));
}

TEST(Check, RefusesOtherTimeLimits) {
    for (const char* limit : {"0", "-1", "4000", "soon", ""}) {
        EXPECT_EQ(run_tool({"check", "--time-limit", limit}).code, 2) << limit;
    }
    EXPECT_EQ(run_tool({"check", ""}).code, 2);
}

Row row(const std::string& id, const std::string& answer, Verdict verdict) {
    Row one;
    one.id = id;
    one.sent = "something sent";
    one.promise = "a promise";
    one.answer = answer;
    one.verdict = verdict;
    return one;
}

TEST(ReportText, WrapsCellsAndSetsFamiliesApart) {
    Report report;
    report.file = "/some/Module";
    report.match_name = "A Name";
    report.rows = {
        row("bundle.one", "an answer", Verdict::Pass),
        row("frames.one", "a long answer\nthat goes on for more than thirty-six characters",
            Verdict::Fail)};
    report.unexamined = {"leaks: why"};
    EXPECT_EQ(lumivar::report_as_text(report),
              R"(/some/Module
registered as "A Name"

The bundle

Sent                               Promised                         Came back                             Verdict
something sent                     a promise                        an answer                             pass

Frames

Sent                               Promised                         Came back                             Verdict
something sent                     a promise                        a long answer that goes on for more   FAIL
                                                                    than thirty-six characters

Not examined

leaks: why

2 rows: 1 pass, 0 kept deviations, 1 fail, 1 not examined
)");
    EXPECT_EQ(lumivar::failure_text(report),
              "the check \"something sent\" fails: a long answer\nthat goes on for more than "
              "thirty-six characters");
}

TEST(ReportText, EndsWithTheCountsAlone) {
    Report report;
    report.rows = {row("bundle.one", "an answer", Verdict::Pass)};
    const std::string text = lumivar::report_as_text(report);
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2)),
              "\n1 rows: 1 pass, 0 kept deviations, 0 fail\n");
}

TEST(ReportText, CutsWordsThatAreTooLong) {
    Report report;
    report.rows = {row("bundle.one", std::string(80, 'x'), Verdict::Pass)};
    EXPECT_TRUE(holds(lumivar::report_as_text(report), std::string(36, 'x') + "  pass\n"));
    EXPECT_FALSE(holds(lumivar::report_as_text(report), std::string(37, 'x')));
}

}  // namespace
