// lumivar check, as a user and a script run it. What the rows find is tested with the run itself.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "failure_of.h"
#include "host/modules/test_effect.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;

/// For the effect that conforms but for this.
ToolOptions with(test_effect::Mischief mischief) {
    return {.environment = {"MISCHIEF=" + std::to_string(mischief)}};
}

TEST(Check, FindsThePluginOfTheProgramInOrder) {
    const ToolResult result =
        run_tool({"check", "--json", "--time-limit", "60"}, {.program = LUMIVAR_PROGRAM});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "") << "no progress where there is no terminal";
    const nlohmann::json report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["match_name"], "Lumivar Star Field");
    EXPECT_EQ(report["passed"], true);
    EXPECT_EQ(report["not_examined"], nlohmann::json::array());
    EXPECT_TRUE(holds(report["module"], "plugin/Lumivar.plugin/Contents/MacOS/Lumivar"));
    EXPECT_GT(report["rows"].size(), 100U);
    for (const nlohmann::json& row : report["rows"]) {
        EXPECT_NE(row["verdict"], "fail") << row;
        EXPECT_EQ(row["findings"].empty(), row["verdict"] == "pass") << row;
    }
}

TEST(Check, TellsTheSameRowsAsATableAndAsJson) {
    const std::string module = CONFORMING_EFFECT;
    const ToolOptions broken = with(test_effect::kWritePastRow);
    const ToolResult table = run_tool({"check", module, "--time-limit", "60"}, broken);
    const ToolResult json = run_tool({"check", module, "--time-limit", "60", "--json"}, broken);
    const nlohmann::json report = nlohmann::json::parse(json.out);
    const std::map<std::string, std::string> words = {{"pass", "pass"}, {"fail", "FAIL"}};
    std::size_t place = 0;
    for (const nlohmann::json& row : report["rows"]) {
        const std::string begin =
            "\n" + words.at(row["verdict"]) + "  " + row["id"].get<std::string>() + "  ";
        place = table.out.find(begin, place);
        ASSERT_NE(place, std::string::npos) << begin;
    }
    const std::size_t rows = report["rows"].size();
    EXPECT_EQ(report["counts"]["rows"], rows);
    EXPECT_TRUE(holds(table.out, "\n" + std::to_string(rows) + " rows: "));
    EXPECT_EQ(report["counts"]["fail"], 1);
    EXPECT_TRUE(holds(table.out, "\nRows that fail\n\n      frames.bounds\n\n"));
    EXPECT_TRUE(
        holds(table.out, "\nNot examined\n\n      bundle.registration: there is no Info.plist"));
    EXPECT_EQ(report["not_examined"][0]["what"], "bundle.registration");
    EXPECT_EQ(report["passed"], false);
    for (const ToolResult& result : {table, json}) {
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err.find("lumivar: the check frames.bounds (all of these frames) fails: "
                                  "the plug-in wrote outside the output's pixels: in the padding "
                                  "of row 1"),
                  0U)
            << result.err;
    }
}

/// Whether it holds more than lines of plain characters.
bool acts_on_terminal(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char character) {
        return (character < ' ' && character != '\n') || character > '~';
    });
}

TEST(Check, LetsNoModuleActOnTheTerminal) {
    for (const char* form : {"--json", "--time-limit=60"}) {
        const ToolResult result =
            run_tool({"check", CONFORMING_EFFECT, "--rows", "frames.16", form},
                     with(test_effect::kActOnTheTerminal));
        EXPECT_FALSE(acts_on_terminal(result.out)) << form;
        EXPECT_EQ(result.err,
                  "lumivar: the check frames.16-bit (a 16-bit frame) fails: status 516: "
                  "\\x1B[2Jnone\\n\\xC2\\x9B2J\n");
    }
}

TEST(Check, NeedsNoStandardStreamsButTheOneThatItWritesTo) {
    const ToolResult result =
        run_tool({"check", CONFORMING_EFFECT, "--rows", "frames.", "--json"},
                 {.program = LUMIVAR_PROGRAM, .closed = {STDIN_FILENO, STDERR_FILENO}});
    EXPECT_EQ(result.code, 0);
    const nlohmann::json report = nlohmann::json::parse(result.out);
    ASSERT_FALSE(report["rows"].empty());
    for (const nlohmann::json& row : report["rows"]) {
        EXPECT_EQ(row["verdict"], "pass") << row;
    }
}

TEST(Check, SaysThatItsReportIsLost) {
    for (const auto mischief : {test_effect::kNone, test_effect::kThrowStandard}) {
        ToolOptions full = with(mischief);
        full.output = "/dev/full";
        const ToolResult result = run_tool({"check", CONFORMING_EFFECT, "--rows", "frames."}, full);
        EXPECT_EQ(result.code, 1) << mischief;
        EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n") << mischief;
    }
}

TEST(Check, CountsTheRowsThatFail) {
    const ToolResult result = run_tool({"check", CONFORMING_EFFECT, "--rows", "frames."},
                                       with(test_effect::kThrowStandard));
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err.find("lumivar: 16 of "), 0U) << result.err;
    EXPECT_TRUE(holds(result.err,
                      " rows of the check fail: frames.8-bit, frames.16-bit, frames.float and 13 "
                      "more\n"))
        << result.err;
}

TEST(Check, NamesWhatIsNoPlugInAndTheRemedy) {
    const ScratchFolder folder;
    fs::create_directory(folder / "Empty.plugin");
    write_file(folder / "text", "no module");
    const std::string remedy =
        "; name a bundle, NAME.plugin with its module in Contents/MacOS/NAME\n";
    const auto complaint = [](const std::string& plugin) {
        const ToolResult result = run_tool({"check", plugin});
        EXPECT_EQ(result.code, 1);
        return result.err;
    };
    EXPECT_EQ(complaint(folder / "Empty.plugin"),
              "lumivar: \"" + (folder / "Empty.plugin") +
                  "\" is no plug-in bundle: it has no Contents/MacOS/Empty" + remedy);
    EXPECT_EQ(complaint(folder / "None.plugin"),
              "lumivar: there is no plug-in " + (folder / "None.plugin") + remedy);
    const std::string text = complaint(folder / "text");
    EXPECT_TRUE(holds(text, "lumivar: the check bundle.module (load the module) fails: \"" +
                                (folder / "text") + "\" cannot be loaded: "))
        << text;
    EXPECT_TRUE(holds(text, "; build it for this machine, with all it needs\n")) << text;
}

TEST(Check, ShowsOnATerminalWhatItLooksAt) {
    // One probe alone: more than a terminal holds would wait for a reader.
    const std::string shown = shown_on_terminal({"check", NO_ENTRY_POINT}, {}, 1);
    EXPECT_EQ(shown.find("\r\x1b[K0 probes: bundle.module\r\x1b[Klumivar: the check "), 0U)
        << shown;
}

TEST(Check, TeachesItself) {
    const ToolResult result = run_tool({"check", "--help"});
    EXPECT_EQ(result.code, 0);
    for (const char* part :
         {"BUNDLE", "--json", "--time-limit", "kept deviation", "== \"fail\"", "Examples:"}) {
        EXPECT_TRUE(holds(result.out, part)) << part;
    }
}

TEST(Check, TellsTheRowsAskedForAlone) {
    const ToolResult bundle = run_tool({"check", "--rows", "bundle.names", "--json"});
    EXPECT_EQ(bundle.code, 0) << bundle.err;
    const nlohmann::json report = nlohmann::json::parse(bundle.out);
    ASSERT_EQ(report["rows"].size(), 1U);
    EXPECT_EQ(report["rows"][0]["id"], "bundle.names");
    const ToolResult none = run_tool({"check", "--rows", "frames.no such"});
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.err,
              "lumivar: no row of this check begins with \"frames.no such\"; without --rows it "
              "tells them all\n");
}

TEST(Check, RefusesOtherTimeLimits) {
    for (const char* limit : {"0", "-1", "4000", "soon", ""}) {
        EXPECT_EQ(run_tool({"check", "--time-limit", limit}).code, 2) << limit;
    }
}

}  // namespace
