// Growable bytes, and the typed array over them.
#include <base/array.h>
#include <base/string.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>
#include <support/expect_throw.h>
#include <support/failing_allocator.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

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

TEST(ByteArray, GrowsByDoublingFrom32BytesOn) {
    using Steps = std::vector<std::function<void(ByteArray&)>>;
    const auto to = [](uword n) { return [n](ByteArray& bytes) { bytes.grow_to(n); }; };
    const auto by = [](uword n) { return [n](ByteArray& bytes) { bytes.grow_by(n); }; };
    const struct {
        Steps steps;
        uword length;
        uword capacity;
    } table[] = {
        {{to(0)}, 0, 0},
        {{to(5)}, 5, 32},
        {{to(5), to(32)}, 32, 32},
        {{to(5), to(33)}, 33, 64},
        {{to(5), to(33), to(200)}, 200, 256},
        // The first allocation is as large as asked.
        {{to(33)}, 33, 33},
        {{to(33), to(34)}, 34, 66},
        {{to(40), to(3)}, 3, 40},
        {{by(5), by(28)}, 33, 64},
        {{[](ByteArray& bytes) { bytes.grow_to_ool(7); }}, 0, 32},
        {{to(10), [](ByteArray& bytes) { bytes.shrink_by(4); }}, 6, 32},
        {{[](ByteArray& bytes) { bytes.realloc(7); }}, 0, 7},
    };
    for (const auto& row : table) {
        ByteArray bytes;
        for (const auto& step : row.steps) {
            step(bytes);
        }
        EXPECT_EQ(bytes.len(), row.length) << &row - table;
        EXPECT_EQ(bytes.capacity(), row.capacity) << &row - table;
    }
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

TEST(ByteArray, TrimGivesTheRestBackAndIsSilentWhereThereIsNone) {
    ByteArray bytes;
    bytes.grow_to(5);
    std::memcpy(bytes[0], "vega", 5);
    bytes.trim();
    EXPECT_EQ(bytes.capacity(), 5U);
    EXPECT_EQ(output_of(stderr, [&] { bytes.trim(); }), "");
    EXPECT_EQ(bytes.capacity(), 5U);
    EXPECT_STREQ(bytes[0], "vega");
    bytes.shrink_by(5);
    bytes.trim();
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_EQ(bytes[0], nullptr);
}

TEST(ByteArray, ReallocToThePresentCapacityWarnsAndToNothingFreesTheBlock) {
    const std::string warning = "warning: spurious realloc in <void ByteArray::realloc(uword)>\n";
    ByteArray bytes;
    EXPECT_EQ(output_of(stderr, [&] { bytes.realloc(0); }), warning);
    bytes.grow_to(5);
    const char* data = bytes[0];
    EXPECT_EQ(output_of(stderr, [&] { bytes.realloc(32); }), warning);
    EXPECT_EQ(bytes[0], data);
    EXPECT_EQ(bytes.capacity(), 32U);
    EXPECT_EQ(bytes.len(), 5U);
    bytes.realloc(0);
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_EQ(bytes[0], nullptr);
    EXPECT_EQ(bytes.len(), 5U) << "the caller's business";
}

TEST(ByteArray, StartsWithNothingAndInitForgetsTheBlock) {
    ByteArray bytes;
    const auto expect_nothing = [&] {
        EXPECT_EQ(bytes[0], nullptr);
        EXPECT_EQ(bytes.len(), 0U);
        EXPECT_EQ(bytes.capacity(), 0U);
    };
    expect_nothing();
    bytes.grow_to(5);
    void* block = bytes[0];
    bytes.init();
    expect_nothing();
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
    bytes.shrink_by(5);
    const ByteArray of_nothing(bytes);
    EXPECT_EQ(of_nothing.capacity(), 0U);
    EXPECT_EQ(of_nothing[0], nullptr);
}

TEST(ByteArray, WithoutMemoryThrowsAndStaysAsItWas) {
    ByteArray empty;
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
    // The size itself, where doubling would wrap.
    expect_refusal([&] { bytes.grow_to(kLargest); }, 32, kLargest);
    EXPECT_EQ(bytes[0], data);
    EXPECT_EQ(bytes.capacity(), 32U);
    EXPECT_EQ(bytes.len(), 5U);
    EXPECT_STREQ(bytes[0], "vega");
    expect_refusal([&] { empty.grow_to(kAbsurd); }, 0, kAbsurd);
    EXPECT_EQ(empty.len(), 0U);
    EXPECT_EQ(empty.capacity(), 0U);
}

namespace {

struct Sample {
    int number;
    double weight;
};

// Notes every construction from another and every destruction.
struct Traced {
    explicit Traced(int i) : id(i) {}
    Traced(const Traced& other) : id(other.id) { ++copies; }
    ~Traced() { destroyed.push_back(id); }
    int id;
    static int copies;
    static std::vector<int> destroyed;
    static void forget() {
        copies = 0;
        destroyed.clear();
    }
};
int Traced::copies = 0;
std::vector<int> Traced::destroyed;

struct Refusing {
    Refusing() { throw std::runtime_error("no"); }
    Refusing(const Refusing&) { throw std::runtime_error("no"); }
    explicit Refusing(int) {}
};

struct Throwing {
    ~Throwing() noexcept(false) {}
};

void fill(Array<Traced>& array, int count) {
    for (int i = 0; i < count; ++i) {
        new (array._append()) Traced(i);
    }
}

}  // namespace

static_assert(sizeof(Array<Sample>) == sizeof(ByteArray), "one byte array");
static_assert(std::is_nothrow_destructible_v<Array<String>>);
static_assert(!std::is_nothrow_destructible_v<Array<Throwing>>);

TEST(Array, StartsEmptyAndAppendReturnsTheLastElement) {
    Array<Sample> array;
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.len(), 0U);
    EXPECT_EQ(array.capacity(), 0U);
    const Sample first{1, 0.5};
    const Sample* appended = array.append(first);
    EXPECT_EQ(appended, &array[0]);
    appended = array.append(Sample{2, 0.25});
    EXPECT_EQ(appended, &array[1]);
    EXPECT_EQ(array.last(), &array[1]);
    EXPECT_FALSE(array.empty());
    ASSERT_EQ(array.len(), 2U);
    EXPECT_EQ(array[0].number, 1);
    EXPECT_EQ(array[1].weight, 0.25);
}

TEST(Array, AppendsDefaultElements) {
    Array<Sample> samples;
    const Sample* sample = samples.append();
    EXPECT_EQ(sample->number, 0);
    EXPECT_EQ(sample->weight, 0.0);
    Array<String> strings;
    EXPECT_TRUE(*strings.append() == String());
}

TEST(Array, ReserveMakesRoomForSeveralAndReturnsTheLast) {
    Array<Sample> array;
    EXPECT_EQ(array.reserve(0), nullptr);
    array.append(Sample{1, 0});
    EXPECT_EQ(array.reserve(0), &array[0]);
    Sample* last = array.reserve(3);
    EXPECT_EQ(last, &array[3]);
    EXPECT_EQ(array.len(), 4U);
    last = array._append();
    EXPECT_EQ(last, &array[0] + 4) << "back to back";
    EXPECT_EQ(last, array.last());
}

TEST(Array, MovesItsElementsBitwise) {
    Array<String> strings;
    std::vector<const char*> texts;
    for (int i = 0; i < 100; ++i) {
        texts.push_back(strings.append(String::fmt("star %d", i))->c_str());
    }
    // The blocks of the texts have stayed where they were.
    for (unsigned long i = 0; i < 100; ++i) {
        EXPECT_EQ(strings[i].c_str(), texts[i]);
    }
    Traced::forget();
    Array<Traced> traced;
    fill(traced, 100);
    EXPECT_EQ(Traced::copies, 0);
    EXPECT_TRUE(Traced::destroyed.empty());
}

TEST(Array, AppendCopiesOnce) {
    Array<Traced> array;
    Traced::forget();
    array.append(Traced(5));
    EXPECT_EQ(Traced::copies, 1);
    EXPECT_EQ(Traced::destroyed, (std::vector<int>{5})) << "the argument alone";
    // 8 elements fit into 32 bytes, so that the last copy here moves the one it is made of.
    while (array.len() < 9) {
        array.append(array[0]);
    }
    EXPECT_EQ(Traced::copies, 9);
    EXPECT_EQ(Traced::destroyed.size(), 1U);
    EXPECT_EQ(array.last()->id, 5);
}

TEST(Array, ShrinkClearAndTheDestructorDestroyFromTheLastToTheFirst) {
    const std::vector<int> backwards = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    {
        Array<Traced> array;
        fill(array, 11);
        Traced::forget();
        array.shrink();
        EXPECT_EQ(Traced::destroyed, (std::vector<int>{10}));
        EXPECT_EQ(array.len(), 10U);
        Traced::forget();
        const uword capacity = array.capacity();
        array.clear();
        EXPECT_EQ(Traced::destroyed, backwards);
        EXPECT_TRUE(array.empty());
        EXPECT_EQ(array.capacity(), capacity);
        array.clear();
        EXPECT_EQ(Traced::destroyed.size(), 10U);
        fill(array, 10);
        Traced::forget();
    }
    EXPECT_EQ(Traced::destroyed, backwards);
}

TEST(Array, AFailedConstructionLeavesTheArrayAsItWas) {
    Array<Refusing> array;
    new (array._append()) Refusing(1);
    EXPECT_THROW(array.append(), std::runtime_error);
    EXPECT_THROW(array.append(array[0]), std::runtime_error);
    EXPECT_EQ(array.len(), 1U);
}
