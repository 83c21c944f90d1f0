#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/memory.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

TEST(Memory, OfTheHeapIsToldToTheBlock) {
    const u64 before = OSAPI::memory_in_use().heap;
    void* const block = std::malloc(1000);
    const u64 with = OSAPI::memory_in_use().heap;
    std::free(block);
    const u64 after = OSAPI::memory_in_use().heap;
    ASSERT_NE(block, nullptr);
    EXPECT_GE(with, before + 1000);
    EXPECT_LE(with, before + 1000 + 64) << "and what the allocator adds to a block";
    EXPECT_LE(after, with);
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
    EXPECT_EQ(OSAPI::memory_in_use().heap, before);
}

TEST(Memory, DoesNotGrowByAskingForIt) {
    OSAPI::memory_in_use();
    const u64 before = OSAPI::memory_in_use().heap;
    for (int i = 0; i < 100; ++i) {
        OSAPI::memory_in_use();
    }
    EXPECT_EQ(OSAPI::memory_in_use().heap, before);
}

TEST(Memory, LargeBlocksCountLikeSmallOnes) {
    const u64 before = OSAPI::memory_in_use().heap;
    void* const block = std::malloc(std::size_t{8} << 20U);  // mapped by itself
    const u64 with = OSAPI::memory_in_use().heap;
    std::free(block);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(with, before + (u64{8} << 20U));
    EXPECT_LT(OSAPI::memory_in_use().heap, with);
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

TEST(Descriptors, AreCounted) {
    const int before = OSAPI::open_descriptors();
    const int one = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(OSAPI::open_descriptors(), before + 1);
    close(one);
    EXPECT_EQ(OSAPI::open_descriptors(), before);
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
