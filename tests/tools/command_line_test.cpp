// The program from outside: help, version, exit codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tool_run.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, HelpTeachesWithExamplesAndNamesTheExitCodes) {
    const ToolResult result = run_tool({"--help"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    for (const char* text :
         {"render", "controls", "catalog", "Examples:", "Exit codes: 0 done; 1 the work failed"}) {
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
    }
}

TEST(CommandLine, EveryCommandHasHelpWithExamples) {
    for (const Arguments& command :
         {Arguments{"render"}, Arguments{"controls"}, Arguments{"catalog", "import"},
          Arguments{"catalog", "info"}}) {
        Arguments arguments = command;
        arguments.push_back("--help");
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.code, 0) << command.back();
        EXPECT_NE(result.out.find("Examples:\n  lumivar "), std::string::npos) << command.back();
    }
}

TEST(CommandLine, SaysItsVersion) {
    const ToolResult result = run_tool({"--version"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "Lumivar 2.0.0\n");
}

TEST(CommandLine, UnusableArgumentsAreOneLineAndCodeTwo) {
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"paint"}, Arguments{"catalog"}, Arguments{"catalog", "import"},
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
          Arguments{"controls", "--plugin", ""}, Arguments{"catalog", "info", ""},
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
        const ToolResult result = run_tool({"catalog", "info", std::string("/nowhere/") + name});
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, std::string("lumivar: cannot read /nowhere/") + shown +
                                  ": No such file or directory\n");
    }
}

TEST(CommandLine, ClosedStandardOutputIsAFailure) {
    ToolOptions options;
    options.closed = {1};
    const ToolResult result = run_tool({"--version"}, options);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n");
}

TEST(CommandLine, FullStandardOutputIsAFailure) {
    ToolOptions options;
    options.output = "/dev/full";
    for (const char* flag : {"--version", "--help"}) {
        const ToolResult result = run_tool({flag}, options);
        EXPECT_EQ(result.code, 1) << flag;
        EXPECT_EQ(result.err, "lumivar: cannot write to standard output\n");
    }
}

}  // namespace
