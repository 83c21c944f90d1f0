// The commands of README.md, run as they stand in a folder where the paths in them lead to the tree
// and to the build.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;

/// The lines of the shell's blocks that call the program.
std::vector<std::string> commands_in(const std::string& document) {
    std::istringstream text(read_file(document));
    std::vector<std::string> commands;
    bool in_block = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("```")) {
            in_block = line == "```sh";
        } else if (in_block && line.starts_with("build/release/bin/lumivar ")) {
            commands.push_back(line);
        }
    }
    return commands;
}

TEST(Readme, ItsCommandsRunAsTheyStand) {
    const ScratchFolder folder;
    fs::create_directories(folder / "build/release");
    const fs::path program = fs::canonical(LUMIVAR_PROGRAM);
    fs::create_directory_symlink(program.parent_path(), folder / "build/release/bin");
    fs::create_directory_symlink(program.parent_path().parent_path() / "plugin",
                                 folder / "build/release/plugin");
    for (const char* name : {"data", "scenes"}) {
        fs::create_directory_symlink(fs::path(LUMIVAR_SOURCE_DIR) / name, folder / name);
    }

    const std::vector<std::string> commands = commands_in(LUMIVAR_SOURCE_DIR "/README.md");
    ASSERT_GE(commands.size(), 5U);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        ToolOptions shell;
        shell.program = "/bin/sh";
        const ToolResult result =
            run_tool({"-c", "cd '" + folder.path() + "' && " + command}, shell);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");

        // The file that it was to write, "####" standing for the number of a frame.
        const std::size_t option = command.find(" -o ");
        if (option != std::string::npos) {
            std::string file = command.substr(option + 4);
            file = file.substr(0, file.find(' '));
            const std::size_t number = file.find("####");
            if (number != std::string::npos) {
                file.replace(number, 4, "0000");
            }
            EXPECT_TRUE(fs::is_regular_file(folder / file)) << file;
        }
    }
}

}  // namespace
