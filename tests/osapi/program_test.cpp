// The running program: its file, its memory and descriptors, the name of its machine.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/host_name.h>
#include <osapi/memory.h>
#include <osapi/module_path.h>
#include <osapi/program.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::SocketCalls;

// The name is kept for the whole process: each test asks in one that has not asked yet.

bool holds_in_child(bool (*something)()) {
    return result_in_child([=] { return something() ? 0 : 1; }) == 0;
}

bool is_host_name(const std::string& name) { return OSAPI::gethostname().c_str() == name; }

TEST(HostName, IsTheSystemsOwn) {
    EXPECT_TRUE(holds_in_child([] {
        char name[256] = {};
        return gethostname(name, sizeof name - 1) == 0 && is_host_name(name);
    }));
}

TEST(HostName, IsAskedForOnceUnlessThatFails) {
    EXPECT_TRUE(holds_in_child([] {
        const Intercept<&SocketCalls::gethostname> asks([&](char* name, std::size_t size) {
            std::strcpy(name, asks.calls() == 1 ? "first" : "second");
            return size == 256 ? 0 : -1;
        });
        return is_host_name("first") && is_host_name("first") && asks.calls() == 1;
    }));
    EXPECT_TRUE(holds_in_child([] {
        int failures = 0;
        for (const int error : kErrors) {
            const Fault<&SocketCalls::gethostname> fault(error);
            const std::string message = thrown_message([] { OSAPI::gethostname(); });
            failures += message.find(with_error("gethostname", error) + " in <") == 0 ? 1 : 0;
        }
        return failures == static_cast<int>(std::size(kErrors)) && OSAPI::gethostname().len() > 0;
    }));
}

TEST(HostName, LongNameIsCutToTheBuffer) {
    EXPECT_TRUE(holds_in_child([] {
        const Intercept<&SocketCalls::gethostname> asks([](char* name, std::size_t size) {
            std::memset(name, 'n', size);
            return 0;
        });
        return is_host_name(std::string(255, 'n'));
    }));
}

namespace fs = std::filesystem;

/// The test program as it was called.
fs::path called() { return testing::internal::GetArgvs().at(0); }

}  // namespace

TEST(Program, IsTheFileThatRuns) {
    const fs::path program = OSAPI::program_path().c_str();
    EXPECT_TRUE(program.is_absolute());
    EXPECT_TRUE(fs::equivalent(program, called()));
}

TEST(ModulePath, IsTheFileThatHoldsTheAddress) {
    EXPECT_TRUE(fs::equivalent(OSAPI::module_path(reinterpret_cast<const void*>(&called)).c_str(),
                               called()));
    const auto of_library = reinterpret_cast<const void*>(&std::system);
    EXPECT_EQ(fs::path(OSAPI::module_path(of_library).c_str()).filename().string().rfind("libc", 0),
              0U);
}

TEST(ModulePath, IsEmptyWhereTheLoaderHasNothing) {
    const auto on_the_heap = std::make_unique<int>();
    EXPECT_EQ(OSAPI::module_path(on_the_heap.get()).len(), 0U);
    EXPECT_EQ(OSAPI::module_path(nullptr).len(), 0U);
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

TEST(Console, IsAskedForByDescriptorAndNeitherAFileNorWhatIsNotOpen) {
    const ScratchFolder folder;
    const OSAPI::DiskFile file((folder / "a").c_str(), OSAPI::kWrite);
    EXPECT_FALSE(OSAPI::is_console(file.fd()));
    EXPECT_FALSE(OSAPI::is_console(-1));
    std::vector<int> asked;
    const Intercept<&OSAPI::DescriptorCalls::isatty> asks([&](int fd) {
        asked.push_back(fd);
        return fd == 2 ? 0 : 1;
    });
    EXPECT_TRUE(OSAPI::stdin_is_console());
    EXPECT_TRUE(OSAPI::stdout_is_console());
    EXPECT_FALSE(OSAPI::stderr_is_console());
    EXPECT_TRUE(OSAPI::is_console(77));
    EXPECT_EQ(asked, (std::vector<int>{0, 1, 2, 77}));
}

TEST(Root, IsTheEffectiveUserZero) {
    EXPECT_EQ(OSAPI::running_as_root(), geteuid() == 0);
    uid_t user = 0;
    const Intercept<&OSAPI::ProcessCalls::geteuid> asks([&] { return user; });
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

namespace {

TEST(Memory, OfTheHeapIsToldToTheBlockAndDoesNotGrowByAskingForIt) {
    const auto heap = [] { return OSAPI::memory_in_use().heap; };
    heap();
    const u64 before = heap();
    void* const small = std::malloc(1000);
    const u64 with_small = heap();
    void* const large = std::malloc(std::size_t{8} << 20U);  // mapped by itself
    const u64 with_both = heap();
    std::free(large);
    const u64 without_large = heap();
    std::free(small);
    const u64 after = heap();
    ASSERT_NE(small, nullptr);
    ASSERT_NE(large, nullptr);
    EXPECT_GE(with_small, before + 1000);
    EXPECT_LE(with_small, before + 1000 + 64) << "and what the allocator adds to a block";
    EXPECT_GE(with_both, with_small + (u64{8} << 20U));
    EXPECT_LT(without_large, with_both);
    EXPECT_LE(after, without_large);
    for (int i = 0; i < 100; ++i) {
        heap();
    }
    EXPECT_EQ(heap(), after);
}

TEST(Memory, OfAThreadThatEndedIsNoneOfItsFreedBlocks) {
    const auto use_and_free = [] {
        std::array<void*, 500> blocks{};
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            blocks[i] = std::malloc(i + 1);
        }
        for (void* const block : blocks) {
            std::free(block);
        }
    };
    std::thread(use_and_free).join();
    const u64 before = OSAPI::memory_in_use().heap;
    std::thread(use_and_free).join();
    EXPECT_LE(OSAPI::memory_in_use().heap, before);
}

TEST(Memory, CountsWhatIsMapped) {
    constexpr std::size_t kSize = std::size_t{64} << 20U;
    const u64 before = OSAPI::memory_in_use().mapped;
    void* const place = mmap(nullptr, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(place, MAP_FAILED);
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(before, 0U) << "the sanitizer's own mappings come and go";
#else
    EXPECT_EQ(OSAPI::memory_in_use().mapped, before + kSize);
#endif
    munmap(place, kSize);
    EXPECT_EQ(OSAPI::memory_in_use().mapped, before);
}

TEST(Descriptors, AreThoseThatAnswer) {
    int answering = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        answering += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    EXPECT_EQ(OSAPI::open_descriptors(), answering);
}

TEST(Descriptors, AreCountedWhereNoneIsLeftForTheirList) {
    const int before = OSAPI::open_descriptors();
    std::vector<int> taken;
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit few = {64, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    for (int fd = 0; (fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) != -1;) {
        taken.push_back(fd);
    }
    const int all = OSAPI::open_descriptors();
    for (const int fd : taken) {
        close(fd);
    }
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_FALSE(taken.empty());
    EXPECT_EQ(all, before + static_cast<int>(taken.size()));
}

}  // namespace
