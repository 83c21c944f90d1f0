#include <gtest/gtest.h>
#include <osapi/program.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/faults.h"
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

TEST(Console, IsAskedForByDescriptor) {
    int asked = -1;
    const Intercept<&OSAPI::Syscalls::isatty> asks([&](int fd) {
        asked = fd;
        return fd == 2 ? 0 : 1;
    });
    EXPECT_TRUE(OSAPI::stdin_is_console());
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(OSAPI::stdout_is_console());
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(OSAPI::stderr_is_console());
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(OSAPI::is_console(77));
    EXPECT_EQ(asked, 77);
}

TEST(Console, IsNeitherAFileNorWhatIsNotOpen) {
    const ScratchFolder folder;
    const OSAPI::DiskFile file((folder / "a").c_str(), OSAPI::kWrite);
    EXPECT_FALSE(OSAPI::is_console(file.fd()));
    EXPECT_FALSE(OSAPI::is_console(-1));
}

TEST(Root, IsTheEffectiveUserZero) {
    EXPECT_EQ(OSAPI::running_as_root(), geteuid() == 0);
    uid_t user = 0;
    const Intercept<&OSAPI::Syscalls::geteuid> asks([&] { return user; });
    EXPECT_TRUE(OSAPI::running_as_root());
    user = 1000;
    EXPECT_FALSE(OSAPI::running_as_root());
}

/// Called by a test above, in a process of its own; on its own it checks that there is a path.
TEST(Program, ShownWhenAsked) {
    const std::string path = OSAPI::program_path().c_str();
    if (const char* file = std::getenv("SHOW_PROGRAM")) {
        write_file(file, path);
    }
    EXPECT_FALSE(path.empty());
}
