// The commands of the documents, run as they stand in a folder where the paths in them lead to the
// tree and to the build, and where a few rows of each catalogue stand for what users download.
#include <gtest/gtest.h>
#include <wordexp.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/scratch.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;

/// The lines of the shell's blocks that call the program, which begins with `program`.
std::vector<std::string> commands_in(const std::string& document, const std::string& program) {
    std::istringstream text(read_file(document));
    std::vector<std::string> commands;
    bool in_block = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("```")) {
            in_block = line == "```sh";
        } else if (in_block && line.starts_with(program + " ")) {
            commands.push_back(line);
        }
    }
    return commands;
}

/// The file that a command was to write, "####" standing for the number of a frame.
void expect_output_of(const std::string& command, const ScratchFolder& folder) {
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

void link_tree(const ScratchFolder& folder) {
    for (const char* name : {"data", "scenes"}) {
        fs::create_directory_symlink(fs::path(LUMIVAR_SOURCE_DIR) / name, folder / name);
    }
}

TEST(Readme, ItsCommandsRunAsTheyStand) {
    const ScratchFolder folder;
    fs::create_directories(folder / "build/release");
    const fs::path program = fs::canonical(LUMIVAR_PROGRAM);
    fs::create_directory_symlink(program.parent_path(), folder / "build/release/bin");
    fs::create_directory_symlink(program.parent_path().parent_path() / "plugin",
                                 folder / "build/release/plugin");
    link_tree(folder);

    const std::vector<std::string> commands =
        commands_in(LUMIVAR_SOURCE_DIR "/README.md", "build/release/bin/lumivar");
    ASSERT_GE(commands.size(), 5U);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        ToolOptions shell;
        shell.program = "/bin/sh";
        const ToolResult result =
            run_tool({"-c", "cd '" + folder.path() + "' && " + command}, shell);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        expect_output_of(command, folder);
    }
}

/// The words that a shell makes of a command, patterns of file names filled in.
std::vector<std::string> shell_words(const std::string& command) {
    wordexp_t found{};
    EXPECT_EQ(wordexp(command.c_str(), &found, WRDE_NOCMD | WRDE_UNDEF), 0) << command;
    std::vector<std::string> words(found.we_wordv, found.we_wordv + found.we_wordc);
    wordfree(&found);
    return words;
}

/// Puts a few rows of each catalogue where the document has the user's downloads.
void link_downloads(const ScratchFolder& folder) {
    const fs::path samples = fs::path(LUMIVAR_SOURCE_DIR) / "tests/catalogue/samples";
    const std::pair<const char*, const char*> downloads[] = {
        {"hip_main.dat", "hip_main.dat"},
        {"catalog", "bsc5-catalog.dat"},
        {"tyc2.dat.00", "tyc2.dat"},
        {"suppl_1.dat", "tyc2-suppl_1.dat"},
        {"gaia.csv", "gaia_dr3_subset.csv"},
        {"hygdata_v41.csv", "hyg_v41.csv"},
        {"athyg_v32-1.csv.gz", "athyg_v40.csv"},
        {"asu.tsv", "vizier_hip_main_tab.tsv"},
    };
    for (const auto& [name, sample] : downloads) {
        fs::create_symlink(samples / sample, folder / name);
    }
    const std::string athyg = read_file(samples / "athyg_v40.csv");
    write_file(folder / "athyg_v32-2.csv.gz", athyg.substr(athyg.find('\n') + 1));
    write_file(folder / "mine.csv", "alpha,delta,V,temperature\n1.5,-0.1,2.0,9000\n");
}

TEST(CataloguesDocument, ItsCommandsRunInTheirOrder) {
    const ScratchFolder folder;
    link_tree(folder);
    link_downloads(folder);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const std::vector<std::string> commands =
        commands_in(LUMIVAR_SOURCE_DIR "/docs/catalogues.md", "lumivar");
    EXPECT_GE(commands.size(), 15U);
    for (std::string command : commands) {
        SCOPED_TRACE(command);
        // Millions of stars and of pixels would show nothing more here.
        const std::size_t millions = command.find("2500000");
        if (millions != std::string::npos) {
            command.replace(millions, 7, "2500");
        }
        std::vector<std::string> words = shell_words(command);
        words.erase(words.begin());
        if (words.front() == "render") {
            words.insert(words.end(), {"--size", "96x54"});
        }
        const ToolResult result = run_tool(words);
        EXPECT_EQ(result.code, 0) << result.err;
        expect_output_of(command, folder);
    }
    fs::current_path(before);
}

}  // namespace
