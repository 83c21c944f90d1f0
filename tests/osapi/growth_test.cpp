// What is lost when something is done again and again.
#include <gtest/gtest.h>
#include <osapi/growth.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace {

using OSAPI::Growth;
using OSAPI::growth_of;

TEST(Growth, SeesTheSmallestLossThoughTheAllocatorHasBlocksAtHand) {
    const std::vector<std::size_t> sizes = {1, 100, 1000};
    for (const std::size_t size : sizes) {
        {
            std::vector<std::unique_ptr<char[]>> used;
            for (int i = 0; i < 20; ++i) {
                used.push_back(std::make_unique<char[]>(size));
            }
        }
        std::vector<std::unique_ptr<char[]>> lost;
        lost.reserve(1000);
        const Growth growth = growth_of([&] { lost.push_back(std::make_unique<char[]>(size)); });
        EXPECT_GE(growth.heap, size);
        EXPECT_LE(growth.heap, size + 63) << "and what the allocator adds to a block";
    }
}

TEST(Growth, IsNotTakenInByACacheThatFillsForAWhile) {
    std::vector<std::unique_ptr<char[]>> cache;
    cache.reserve(1000);
    const Growth growth = growth_of([&] {
        if (cache.size() < 20) {
            cache.push_back(std::make_unique<char[]>(100));
        }
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
}

TEST(Growth, SeesWhatIsLostInSomeRounds) {
    for (const int nth : {2, 3, 4}) {
        std::vector<std::unique_ptr<char[]>> lost;
        lost.reserve(1000);
        int rounds = 0;
        const Growth growth = growth_of([&] {
            if (++rounds % nth == 0) {
                lost.push_back(std::make_unique<char[]>(1000));
            }
        });
        EXPECT_EQ(growth.rounds, 8) << nth;
        EXPECT_GE(growth.heap, 8U / static_cast<unsigned>(nth) * 1000U) << nth;
    }
}

TEST(Growth, CountsWhatIsGivenBackInTheEnd) {
    std::vector<std::unique_ptr<char[]>> stock;
    stock.reserve(1000);
    const Growth growth = growth_of([&] {
        if (stock.size() < 2) {
            stock.push_back(std::make_unique<char[]>(1000));
        } else {
            stock.clear();
        }
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
}

TEST(Growth, IsNoneForWhatIsGivenBack) {
    int rounds = 0;
    const Growth growth = growth_of([&] {
        ++rounds;
        const std::vector<std::string> texts(100, std::string(200, 'x'));
    });
    EXPECT_TRUE(growth.none()) << text_of(growth);
    EXPECT_LT(rounds, 32) << "it stops when all is well";
}

TEST(Growth, SeesDescriptorsAndMappings) {
    std::vector<int> descriptors;
    descriptors.reserve(1000);
    Growth growth = growth_of([&] { descriptors.push_back(dup(STDERR_FILENO)); });
    EXPECT_EQ(growth.descriptors, 1);
    for (const int descriptor : descriptors) {
        close(descriptor);
    }
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<void*> places;
    places.reserve(1000);
    growth = growth_of([&] {
        places.push_back(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    });
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(growth.mapped, 0U) << "the sanitizer's own mappings come and go";
#else
    EXPECT_EQ(growth.mapped, size);
#endif
    for (void* const place : places) {
        munmap(place, size);
    }
}

TEST(Growth, IsToldInWords) {
    EXPECT_EQ(text_of(Growth{}), "nothing lost");
    EXPECT_EQ(text_of(Growth{32, 0, 0}), "32 bytes of heap lost each time");
    EXPECT_EQ(text_of(Growth{96, 0, 0, 16}), "96 bytes of heap lost in 16 rounds");
    EXPECT_EQ(text_of(Growth{1, 4096, 2}),
              "1 bytes of heap and 4096 bytes of address space and 2 file descriptors lost each "
              "time");
}

}  // namespace
