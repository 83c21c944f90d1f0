// lumivar check, as a user and a script run it. What the rows find is tested with the run itself.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/descriptor_flags.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "host/modules/test_effect.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;

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
    EXPECT_EQ(report["not_examined"], nlohmann::json::array());
    EXPECT_TRUE(holds(report["module"], "plugin/Lumivar.plugin/Contents/MacOS/Lumivar"));
    EXPECT_GT(report["rows"].size(), 100U);
    for (const nlohmann::json& row : report["rows"]) {
        EXPECT_NE(row["verdict"], "fail") << row;
        EXPECT_EQ(row["findings"].empty(), row["verdict"] == "pass") << row;
    }
}

/// How the table's rows begin: verdict and id.
std::vector<std::string> rows_of_table(const std::string& text) {
    std::vector<std::string> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        for (const char* verdict : {"pass  ", "FAIL  ", "kept  "}) {
            if (line.rfind(verdict, 0) == 0) {
                rows.push_back(line.substr(0, line.find("  ", 6)));
            }
        }
    }
    return rows;
}

TEST(Check, TellsTheSameRowsAsATableAndAsJson) {
    const std::string module = CONFORMING_EFFECT;
    ToolOptions broken;
    broken.environment = {"MISCHIEF=5"};  // writes past a row
    const ToolResult table = run_tool({"check", module, "--time-limit", "60"}, broken);
    const ToolResult json = run_tool({"check", module, "--time-limit", "60", "--json"}, broken);
    const nlohmann::json report = nlohmann::json::parse(json.out);
    const std::map<std::string, std::string> words = {
        {"pass", "pass  "}, {"fail", "FAIL  "}, {"kept", "kept  "}};
    std::vector<std::string> rows;
    for (const nlohmann::json& row : report["rows"]) {
        rows.push_back(words.at(row["verdict"]) + row["id"].get<std::string>());
    }
    EXPECT_EQ(rows_of_table(table.out), rows);
    EXPECT_EQ(report["counts"]["rows"], rows.size());
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
    ToolOptions acting;
    acting.environment = {"MISCHIEF=" + std::to_string(test_effect::kActOnTheTerminal)};
    for (const char* form : {"--json", "--time-limit=60"}) {
        const ToolResult result =
            run_tool({"check", CONFORMING_EFFECT, "--rows", "frames.16", form}, acting);
        EXPECT_FALSE(acts_on_terminal(result.out)) << form;
        EXPECT_EQ(result.err,
                  "lumivar: the check frames.16-bit (a 16-bit frame) fails: status 516: "
                  "\\x1B[2Jnone\\n\\xC2\\x9B2J\n");
    }
}

TEST(Check, NeedsNoStandardStreamsButTheOneThatItWritesTo) {
    ToolOptions alone;
    alone.closed = {STDIN_FILENO, STDERR_FILENO};
    const ToolResult result =
        run_tool({"check", CONFORMING_EFFECT, "--rows", "frames.", "--json"}, alone);
    EXPECT_EQ(result.code, 0);
    const nlohmann::json report = nlohmann::json::parse(result.out);
    ASSERT_FALSE(report["rows"].empty());
    for (const nlohmann::json& row : report["rows"]) {
        EXPECT_EQ(row["verdict"], "pass") << row;
    }
}

TEST(Check, SaysThatItsReportIsLost) {
    for (const char* mischief : {"MISCHIEF=1", "MISCHIEF=2"}) {  // none, throws
        ToolOptions full;
        full.environment = {mischief};
        full.output = "/dev/full";
        const ToolResult result = run_tool({"check", CONFORMING_EFFECT, "--rows", "frames."}, full);
        EXPECT_EQ(result.code, 1) << mischief;
        EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n") << mischief;
    }
}

TEST(Check, CountsTheRowsThatFail) {
    ToolOptions broken;
    broken.environment = {"MISCHIEF=2"};  // throws
    const ToolResult result = run_tool({"check", CONFORMING_EFFECT, "--rows", "frames."}, broken);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err.find("lumivar: 16 of "), 0U) << result.err;
    EXPECT_TRUE(holds(result.err,
                      " rows of the check fail: frames.8-bit, frames.16-bit, frames.float and 13 "
                      "more\n"))
        << result.err;
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
    EXPECT_TRUE(holds(result.err, "lumivar: the check bundle.module (load the module) fails: \"" +
                                      (folder / "text") + "\" cannot be loaded: "))
        << result.err;
    EXPECT_TRUE(holds(result.err, "; build it for this machine, with all it needs\n"));
}

TEST(Check, NamesAModuleWithoutAnEntryPointAndTheRemedy) {
    const ToolResult result = run_tool({"check", NO_ENTRY_POINT});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "lumivar: the check bundle.module (load the module) fails: \"" NO_ENTRY_POINT
              "\" exports no entry point EntryPointFunc; export it with C linkage and default "
              "visibility\n");
}

TEST(Check, ShowsOnATerminalWhatItLooksAt) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    ToolOptions options;
    options.error = ptsname(terminal);
    // Held open, so that what was written can still be read after the program has ended.
    const int other_end = open(options.error.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    // One probe alone: more than a terminal holds would wait for a reader.
    EXPECT_EQ(run_tool({"check", NO_ENTRY_POINT}, options).code, 1);
    std::array<char, 4096> text{};
    OSAPI::set_blocking(terminal, false);
    const ssize_t length = read(terminal, text.data(), text.size());
    ASSERT_GT(length, 0);
    const std::string shown(text.data(), static_cast<std::size_t>(length));
    EXPECT_EQ(shown.find("\r\x1b[K0 probes: bundle.module\r\x1b[Klumivar: the check "), 0U)
        << shown;
    close(other_end);
    close(terminal);
}

TEST(Check, TeachesItself) {
    const ToolResult result = run_tool({"check", "--help"});
    EXPECT_EQ(result.code, 0);
    for (const char* part :
         {"BUNDLE", "--json", "--time-limit", "kept deviation", "== \"fail\"", "Examples:"}) {
        EXPECT_TRUE(holds(result.out, part)) << part;
    }
    EXPECT_TRUE(holds(run_tool({"--help"}).out, "\n  check"));
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
    EXPECT_EQ(run_tool({"check", "--rows", ""}).code, 2);
}

TEST(Check, RefusesOtherTimeLimits) {
    for (const char* limit : {"0", "-1", "4000", "soon", ""}) {
        EXPECT_EQ(run_tool({"check", "--time-limit", limit}).code, 2) << limit;
    }
    EXPECT_EQ(run_tool({"check", ""}).code, 2);
}

}  // namespace
