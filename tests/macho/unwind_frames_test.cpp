// Compact descriptions of frames, turned into the unwinder's instructions.
#include "loader/unwind_frames.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Instructions = std::vector<std::uint8_t>;

// "The caller's stack pointer is this many bytes above that register", and "the caller's value of
// that register lies so many words below it"; registers by DWARF's numbers.
constexpr std::uint8_t kCaller = 0x0C;
constexpr std::uint8_t kSaved = 0x05;
constexpr std::uint8_t kRbx = 3, kRbp = 6, kRsp = 7, kR12 = 12, kR13 = 13, kR14 = 14, kR15 = 15;
constexpr std::uint8_t kReturn = 16;

}  // namespace

TEST(UnwindFrames, FramePointerAndFiveRegistersOnX86_64) {
    // push rbp; mov rsp, rbp; push r15, r14, r13, r12, rbx: five words below the frame pointer lies
    // rbx, the first of the encoding's five.
    EXPECT_EQ(loader::instructions_x86_64(0x010558D1, nullptr),
              (Instructions{kCaller, kRbp, 16, kSaved, kReturn, 1, kSaved, kRbp, 2,  //
                            kSaved,  kRbx, 7,  kSaved, kR12,    6, kSaved, kR13, 5,  //
                            kSaved,  kR14, 4,  kSaved, kR15,    3}));
}

TEST(UnwindFrames, GapsAmongTheRegistersOnX86_64) {
    // push rbp; mov rsp, rbp; push r14; push rbx: the third of the five places is empty.
    EXPECT_EQ(loader::instructions_x86_64(0x01020000 | 4 << 3 | 1, nullptr),
              (Instructions{kCaller, kRbp, 16, kSaved, kReturn, 1, kSaved, kRbp, 2,  //
                            kSaved, kRbx, 4, kSaved, kR14, 3}));
}

TEST(UnwindFrames, WithoutFramePointerOnX86_64) {
    // push rbx, and no more.
    EXPECT_EQ(loader::instructions_x86_64(0x02020400, nullptr),
              (Instructions{kCaller, kRsp, 16, kSaved, kReturn, 1, kSaved, kRbx, 2}));
    // push r14; push rbx; sub 8, rsp. Of six registers in the order rbx, r12, ..., rbp rbx is the
    // first, and r14 the third of the five others: 0 * 5 + 2.
    EXPECT_EQ(
        loader::instructions_x86_64(0x02040802, nullptr),
        (Instructions{kCaller, kRsp, 32, kSaved, kReturn, 1, kSaved, kRbx, 3, kSaved, kR14, 2}));
    // push rbp, r15, r14, r13, r12, rbx: in the order itself, the number is 0.
    EXPECT_EQ(
        loader::instructions_x86_64(0x02071800, nullptr),
        (Instructions{kCaller, kRsp, 56, kSaved, kReturn, 1, kSaved, kRbx, 7, kSaved, kR12, 6,
                      kSaved,  kR13, 5,  kSaved, kR14,    4, kSaved, kR15, 3, kSaved, kRbp, 2}));
}

TEST(UnwindFrames, LargeStackOnX86_64) {
    // push rbx; sub 0x1000, rsp: the number stands at byte 4 of the function, and two words more
    // lie above it.
    const std::uint8_t code[] = {0x53, 0x48, 0x81, 0xEC, 0x00, 0x10, 0x00, 0x00};
    EXPECT_EQ(loader::instructions_x86_64(0x03044400, code),
              (Instructions{kCaller, kRsp, 0x90, 0x20, kSaved, kReturn, 1, kSaved, kRbx, 2}));
}

TEST(UnwindFrames, PairsOfRegistersOnArm64) {
    constexpr std::uint8_t x29 = 29, x30 = 30;
    // stp x20, x19; stp x29, x30; and d9, d8 below those.
    EXPECT_EQ(loader::instructions_arm64(0x04000101),
              (Instructions{kCaller, x29, 16, kSaved, x30, 1, kSaved, x29, 2,  //
                            kSaved,  19,  3,  kSaved, 20,  4, kSaved, 72,  5, kSaved, 73, 6}));
    // A leaf with 32 bytes of stack.
    EXPECT_EQ(loader::instructions_arm64(0x02002000), (Instructions{kCaller, 31, 32}));
}

TEST(UnwindFrames, UnknownEncodingIsRefused) {
    EXPECT_THROW(loader::instructions_x86_64(0x05000000, nullptr), macho::FileError);
    EXPECT_THROW(loader::instructions_x86_64(0x01000007, nullptr), macho::FileError);
    EXPECT_THROW(loader::instructions_arm64(0x05000000), macho::FileError);
    EXPECT_THROW(loader::instructions_arm64(0x02001001), macho::FileError);
}
