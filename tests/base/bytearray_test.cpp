#include <base/array.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>
#include <support/expect_throw.h>
#include <support/failing_allocator.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr uword kLargest = static_cast<uword>(-1);

// Expects `act` to be refused a block of `wanted` bytes in the place of one of `current`.
template <class Act>
void expect_refusal(Act act, uword current, uword wanted) {
    expect_message(thrown_message(act),
                   "out of memory (current size " + std::to_string(current) +
                       " bytes, failed allocation of " + std::to_string(wanted) + " bytes)",
                   "ByteArray::realloc", "base/array.cpp");
}

}  // namespace

static_assert(sizeof(ByteArray) == 3 * sizeof(uword), "data, capacity, length");

TEST(ByteArray, StartsWithNothing) {
    const ByteArray bytes;
    EXPECT_EQ(bytes.len(), 0U);
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_EQ(bytes[0], nullptr);
}

TEST(ByteArray, DoublesFrom32Bytes) {
    ByteArray bytes;
    bytes.grow_to(5);
    EXPECT_EQ(bytes.len(), 5U);
    EXPECT_EQ(bytes.capacity(), 32U);
    bytes.grow_to(32);
    EXPECT_EQ(bytes.capacity(), 32U);
    bytes.grow_to(33);
    EXPECT_EQ(bytes.capacity(), 64U);
    bytes.grow_to(200);
    EXPECT_EQ(bytes.capacity(), 256U);
    EXPECT_EQ(bytes.len(), 200U);
}

TEST(ByteArray, TheFirstAllocationIsAsLargeAsAsked) {
    ByteArray bytes;
    bytes.grow_to(33);
    EXPECT_EQ(bytes.capacity(), 33U);
    bytes.grow_to(34);
    EXPECT_EQ(bytes.capacity(), 66U);
}

TEST(ByteArray, GrowToZeroAllocatesNothing) {
    ByteArray bytes;
    bytes.grow_to(0);
    EXPECT_EQ(bytes.capacity(), 0U);
}

TEST(ByteArray, GrowToAlsoShortens) {
    ByteArray bytes;
    bytes.grow_to(40);
    bytes.grow_to(3);
    EXPECT_EQ(bytes.len(), 3U);
    EXPECT_EQ(bytes.capacity(), 40U);
}

TEST(ByteArray, GrowByAddsToTheLength) {
    ByteArray bytes;
    bytes.grow_by(5);
    bytes.grow_by(28);
    EXPECT_EQ(bytes.len(), 33U);
    EXPECT_EQ(bytes.capacity(), 64U);
}

TEST(ByteArray, TheGrowthStepKeepsTheLength) {
    ByteArray bytes;
    bytes.grow_to_ool(7);
    EXPECT_EQ(bytes.len(), 0U);
    EXPECT_EQ(bytes.capacity(), 32U);
}

TEST(ByteArray, KeepsItsBytesWhenItGrows) {
    ByteArray bytes;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        bytes.grow_by(1);
        *bytes[i] = static_cast<char>(i * 7);
        expected += static_cast<char>(i * 7);
    }
    EXPECT_EQ(std::string(bytes[0], bytes.len()), expected);
}

TEST(ByteArray, ShrinkByKeepsTheCapacity) {
    ByteArray bytes;
    bytes.grow_to(10);
    bytes.shrink_by(4);
    EXPECT_EQ(bytes.len(), 6U);
    EXPECT_EQ(bytes.capacity(), 32U);
}

TEST(ByteArray, TrimGivesTheRestBack) {
    ByteArray bytes;
    bytes.grow_to(5);
    std::memcpy(bytes[0], "vega", 5);
    bytes.trim();
    EXPECT_EQ(bytes.capacity(), 5U);
    EXPECT_STREQ(bytes[0], "vega");
    bytes.shrink_by(5);
    bytes.trim();
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_EQ(bytes[0], nullptr);
}

TEST(ByteArray, TrimOfAFullArrayIsSilent) {
    ByteArray bytes;
    bytes.grow_to(64);
    CapturedOutput errors(stderr);
    bytes.trim();
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(bytes.capacity(), 64U);
}

TEST(ByteArray, ReallocToThePresentCapacityWarnsAndChangesNothing) {
    ByteArray bytes;
    bytes.grow_to(5);
    const char* data = bytes[0];
    CapturedOutput errors(stderr);
    bytes.realloc(32);
    EXPECT_EQ(errors.text(), "warning: spurious realloc in <void ByteArray::realloc(uword)>\n");
    EXPECT_EQ(bytes[0], data);
    EXPECT_EQ(bytes.capacity(), 32U);
    EXPECT_EQ(bytes.len(), 5U);
}

TEST(ByteArray, ReallocOfAnEmptyArrayToNothingWarnsToo) {
    ByteArray bytes;
    CapturedOutput errors(stderr);
    bytes.realloc(0);
    EXPECT_EQ(errors.text(), "warning: spurious realloc in <void ByteArray::realloc(uword)>\n");
}

TEST(ByteArray, ReallocToNothingFreesTheBlock) {
    ByteArray bytes;
    bytes.grow_to(5);
    bytes.realloc(0);
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_EQ(bytes[0], nullptr);
    // The length is the caller's business.
    EXPECT_EQ(bytes.len(), 5U);
}

TEST(ByteArray, ReallocSetsTheCapacityExactly) {
    ByteArray bytes;
    bytes.realloc(7);
    EXPECT_EQ(bytes.capacity(), 7U);
    EXPECT_EQ(bytes.len(), 0U);
}

TEST(ByteArray, InitForgetsTheBlock) {
    ByteArray bytes;
    bytes.grow_to(5);
    void* block = bytes[0];
    bytes.init();
    EXPECT_EQ(bytes[0], nullptr);
    EXPECT_EQ(bytes.len(), 0U);
    EXPECT_EQ(bytes.capacity(), 0U);
    std::free(block);
}

TEST(ByteArray, ACopyHoldsJustTheBytesInUse) {
    ByteArray bytes;
    bytes.grow_to(5);
    std::memcpy(bytes[0], "vega", 5);
    const ByteArray copy(bytes);
    EXPECT_EQ(copy.len(), 5U);
    EXPECT_EQ(copy.capacity(), 5U);
    EXPECT_STREQ(copy[0], "vega");
    EXPECT_NE(copy[0], bytes[0]);
}

TEST(ByteArray, ACopyOfNothingAllocatesNothing) {
    ByteArray bytes;
    bytes.grow_to(5);
    bytes.shrink_by(5);
    const ByteArray copy(bytes);
    EXPECT_EQ(copy.capacity(), 0U);
    EXPECT_EQ(copy[0], nullptr);
}

TEST(ByteArray, WithoutMemoryThrowsAndStaysAsItWas) {
    ByteArray bytes;
    bytes.grow_to(5);
    std::memcpy(bytes[0], "vega", 5);
    const char* data = bytes[0];
    FailingAllocator allocator;
    allocator.refuse_above(1000);
    // A third of the address space.
    constexpr uword kAbsurd = kLargest / 3;
    expect_refusal([&] { bytes.realloc(kAbsurd); }, 32, kAbsurd);
    expect_refusal([&] { bytes.grow_to(1000); }, 32, 1024);
    expect_refusal([&] { bytes.grow_by(1000); }, 32, 1024);
    EXPECT_EQ(bytes[0], data);
    EXPECT_EQ(bytes.capacity(), 32U);
    EXPECT_EQ(bytes.len(), 5U);
    EXPECT_STREQ(bytes[0], "vega");
}

TEST(ByteArray, AnEmptyArrayWithoutMemoryStaysEmpty) {
    ByteArray bytes;
    FailingAllocator allocator;
    allocator.refuse_above(1000);
    expect_refusal([&] { bytes.grow_to(kLargest / 3); }, 0, kLargest / 3);
    EXPECT_EQ(bytes.len(), 0U);
    EXPECT_EQ(bytes.capacity(), 0U);
}

TEST(ByteArray, AsksForTheSizeItselfWhereDoublingWouldWrap) {
    ByteArray bytes;
    bytes.grow_to(1);
    FailingAllocator allocator;
    allocator.refuse_above(1000);
    expect_refusal([&] { bytes.grow_to(kLargest); }, 32, kLargest);
    EXPECT_EQ(bytes.len(), 1U);
}
