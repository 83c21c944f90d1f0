#include <gtest/gtest.h>
#include <osapi/discarding.h>

#include <algorithm>
#include <vector>

// Only what is discarded may change, whatever part of pages it is, and all of it is written anew.
TEST(Discarding, LeavesTheBytesBesideAlone) {
    constexpr uword kSize = 1U << 20U;
    for (const uword begin : {uword{0}, uword{1}, uword{5000}, uword{65536}}) {
        for (const uword count : {uword{0}, uword{1}, uword{4095}, uword{100000}, kSize - 70000}) {
            SCOPED_TRACE(testing::Message() << count << " bytes from " << begin << " on");
            std::vector<unsigned char> bytes(kSize, 0xA5);
            OSAPI::discard(bytes.data() + begin, count);
            const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(begin);
            const auto last = first + static_cast<std::ptrdiff_t>(count);
            EXPECT_EQ(std::count(bytes.begin(), first, 0xA5), first - bytes.begin());
            EXPECT_EQ(std::count(last, bytes.end(), 0xA5), bytes.end() - last);
            std::fill(first, last, static_cast<unsigned char>(0x5A));
            EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0x5A), last - first);
        }
    }
}
