// The program from outside: help, version, exit codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tool_run.h"

namespace {

using Arguments = std::vector<std::string>;

// Those of the program as it is built; the other cases call its function.
const ToolOptions kBuilt = {.program = LUMIVAR_PROGRAM};

TEST(CommandLine, HelpTeachesWithExamplesAndNamesTheExitCodes) {
    const ToolResult result = run_tool({"--help"}, kBuilt);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    for (const char* text : {"render", "controls", "catalog", "\n  check",
                             "Examples:", "Exit codes: 0 done; 1 the work failed"}) {
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
    }
}

TEST(CommandLine, EveryCommandHasHelpWithExamples) {
    for (Arguments arguments : {Arguments{"render"}, Arguments{"controls"}, Arguments{"check"},
                                Arguments{"catalog", "import"}, Arguments{"catalog", "info"},
                                Arguments{"catalog", "verify"}, Arguments{"catalog", "dump"},
                                Arguments{"catalog", "merge"}, Arguments{"catalog", "filter"},
                                Arguments{"catalog", "sort"}, Arguments{"catalog", "synth"}}) {
        arguments.push_back("--help");
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 0) << arguments.front();
        EXPECT_NE(result.out.find("Examples:\n  lumivar "), std::string::npos) << result.out;
    }
}

TEST(CommandLine, SaysItsVersion) {
    const ToolResult result = run_tool({"--version"}, kBuilt);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "Lumivar 2.0.0\n");
}

TEST(CommandLine, UnusableArgumentsAreOneLineAndCodeTwo) {
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"catalog"}, Arguments{"catalog", "import"},
          Arguments{"catalog", "import", "a.csv"}, Arguments{"catalog", "info"},
          Arguments{"catalog", "info", "a", "b"}, Arguments{"catalog", "info", "--yaml", "a"}}) {
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.rfind("lumivar: ", 0), 0U) << result.err;
    }
}

TEST(CommandLine, NamesTheCommandOrOptionThatThereIsNot) {
    for (const Arguments& arguments :
         {Arguments{"paint"}, Arguments{"catalog", "paint"}, Arguments{"render", "--paint"}}) {
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.err, "lumivar: there is no command or option \"" + arguments.back() +
                                  "\" (lumivar --help shows the ways)\n");
    }
}

TEST(CommandLine, RefusesEmptyTextsWhichAnUnsetVariableOfAScriptGives) {
    const Arguments render = {"render", "/nonexistent/scene.json", "-o", "/nonexistent/a.####.exr"};
    for (const char* option : {"--catalogue", "--plugin", "--size", "--frames"}) {
        Arguments arguments = render;
        arguments.insert(arguments.end(), {option, ""});
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 2) << option;
        EXPECT_EQ(result.err, std::string("lumivar: ") + option +
                                  ": give a value, not an empty text (lumivar --help shows the "
                                  "ways)\n");
    }
    for (const Arguments& arguments :
         {Arguments{"render", "", "-o", "a.exr"}, Arguments{"render", "a.json", "-o", ""},
          Arguments{"controls", "--plugin", ""}, Arguments{"check", ""},
          Arguments{"check", "--rows", ""}, Arguments{"catalog", "info", ""},
          Arguments{"catalog", "import", "", "-o", "a.stars"},
          Arguments{"catalog", "import", "-", "-o", ""}}) {
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_NE(result.err.find(": give a value, not an empty text"), std::string::npos)
            << result.err;
    }
}

TEST(CommandLine, FailedWorkIsCodeOneAndOneLineThatLeavesTheTerminalAlone) {
    for (const auto& [name, shown] :
         {std::pair{"a", "a"}, {"a\nb", "a b"}, {"\x1B[2J\xFF", "\\x1B[2J\\xFF"}}) {
        const ToolResult result =
            run_tool({"catalog", "info", std::string("/nowhere/") + name}, kBuilt);
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, std::string("lumivar: cannot read /nowhere/") + shown +
                                  ": No such file or directory\n");
    }
}

TEST(CommandLine, ClosedOrFullStandardOutputIsAFailure) {
    const std::pair<const char*, ToolOptions> runs[] = {
        {"--version", {.program = LUMIVAR_PROGRAM, .closed = {1}}},
        {"--version", {.output = "/dev/full"}},
        {"--help", {.output = "/dev/full"}}};
    for (const auto& [flag, options] : runs) {
        const ToolResult result = run_tool({flag}, options);
        EXPECT_EQ(result.code, 1) << flag;
        EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n") << flag;
    }
}

}  // namespace
