#include <gtest/gtest.h>
#include <osapi/program.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/scratch.h"

namespace {

namespace fs = std::filesystem;

/// The test program as it was called.
fs::path called() { return testing::internal::GetArgvs().at(0); }

}  // namespace

TEST(Program, IsTheFileThatRuns) {
    const fs::path program = OSAPI::program_path().c_str();
    EXPECT_TRUE(program.is_absolute());
    EXPECT_TRUE(fs::equivalent(program, called()));
}

TEST(Program, IsFoundBehindLinksAndFromAnyFolder) {
    const ScratchFolder folder;
    const fs::path program = fs::canonical(called());
    fs::create_symlink(program, folder / "link");
    // Called by its link, from a folder where the program is not.
    const std::string command = "cd '" + folder.path() +
                                "' && SHOW_PROGRAM=shown ./link "
                                "--gtest_filter=Program.ShownWhenAsked >/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(read_file(folder / "shown"), program.string());
}

/// Called by the test above, in a process of its own; on its own it checks that there is a path.
TEST(Program, ShownWhenAsked) {
    const std::string path = OSAPI::program_path().c_str();
    if (const char* file = std::getenv("SHOW_PROGRAM")) {
        write_file(file, path);
    }
    EXPECT_FALSE(path.empty());
}
