#include <base/array.h>
#include <base/string.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

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

TEST(Array, StartsEmpty) {
    const Array<Sample> array;
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.len(), 0U);
    EXPECT_EQ(array.capacity(), 0U);
}

TEST(Array, AppendReturnsTheLastElement) {
    Array<Sample> array;
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

TEST(Array, LiesBackToBack) {
    Array<Sample> array;
    for (int i = 0; i < 10; ++i) {
        array.append(Sample{i, 0});
    }
    for (unsigned long i = 0; i < 10; ++i) {
        EXPECT_EQ(&array[i], &array[0] + i);
    }
}

TEST(Array, GrowsAsItsBytesDo) {
    Array<std::int64_t> array;
    array.append(1);
    EXPECT_EQ(array.capacity(), 32U);
    for (int i = 0; i < 4; ++i) {
        array.append(1);
    }
    EXPECT_EQ(array.capacity(), 64U);
}

TEST(Array, ReserveMakesRoomForSeveralAndReturnsTheLast) {
    Array<Sample> array;
    array.append(Sample{1, 0});
    Sample* last = array.reserve(3);
    ASSERT_EQ(array.len(), 4U);
    EXPECT_EQ(last, &array[3]);
    last = array._append();
    EXPECT_EQ(last, &array[4]);
}

TEST(Array, ReserveOfNone) {
    Array<Sample> array;
    EXPECT_EQ(array.reserve(0), nullptr);
    array.append(Sample{1, 0});
    EXPECT_EQ(array.reserve(0), &array[0]);
    EXPECT_EQ(array.len(), 1U);
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

TEST(Array, AppendsAnElementOfItsOwn) {
    Array<String> strings;
    strings.append("vega");
    while (strings.len() < 100) {
        // Grows now and then, when the element's place is gone.
        strings.append(strings[0]);
    }
    EXPECT_STREQ(strings.last()->c_str(), "vega");
}

TEST(Array, ShrinkDestroysTheLast) {
    Array<Traced> array;
    fill(array, 3);
    Traced::forget();
    array.shrink();
    EXPECT_EQ(Traced::destroyed, (std::vector<int>{2}));
    EXPECT_EQ(array.len(), 2U);
}

TEST(Array, ClearDestroysFromTheLastToTheFirstAndKeepsTheCapacity) {
    Array<Traced> array;
    fill(array, 20);
    Traced::forget();
    const uword capacity = array.capacity();
    array.clear();
    std::vector<int> expected;
    for (int i = 19; i >= 0; --i) {
        expected.push_back(i);
    }
    EXPECT_EQ(Traced::destroyed, expected);
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.capacity(), capacity);
    array.clear();
    EXPECT_EQ(Traced::destroyed.size(), 20U);
}

TEST(Array, TheDestructorDestroysFromTheLastToTheFirst) {
    {
        Array<Traced> array;
        fill(array, 3);
        Traced::forget();
    }
    EXPECT_EQ(Traced::destroyed, (std::vector<int>{2, 1, 0}));
}

TEST(Array, AFailedConstructionLeavesTheArrayAsItWas) {
    Array<Refusing> array;
    new (array._append()) Refusing(1);
    EXPECT_THROW(array.append(), std::runtime_error);
    EXPECT_THROW(array.append(array[0]), std::runtime_error);
    EXPECT_EQ(array.len(), 1U);
}
