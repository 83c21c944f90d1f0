#include <base/scoped_ptr.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

std::vector<int> destroyed;

struct Traced {
    explicit Traced(int i = 0) : id(i) {}
    ~Traced() { destroyed.push_back(id); }
    int id;
};

struct Failing {
    ~Failing() noexcept(false) { throw std::runtime_error("close"); }
};

class Holders : public ::testing::Test {
protected:
    void SetUp() override { destroyed.clear(); }
};

using Ids = std::vector<int>;

}  // namespace

static_assert(!std::is_copy_constructible_v<scoped_ptr<int>>);
static_assert(!std::is_copy_assignable_v<scoped_ptr<int>>);
static_assert(!std::is_copy_constructible_v<scoped_array<int>>);
static_assert(!std::is_convertible_v<scoped_ptr<int>, bool>, "the truth test is explicit");

TEST_F(Holders, StartWithNothing) {
    const scoped_ptr<Traced> object;
    const scoped_array<Traced> array;
    EXPECT_FALSE(object);
    EXPECT_FALSE(array);
    EXPECT_EQ(object.get(), nullptr);
    EXPECT_EQ(array.get(), nullptr);
}

TEST_F(Holders, LendTheirObject) {
    auto* traced = new Traced(1);
    const scoped_ptr<Traced> object(traced);
    EXPECT_TRUE(object);
    EXPECT_EQ(object.get(), traced);
    EXPECT_EQ(object->id, 1);
    EXPECT_EQ(&*object, traced);
    auto* several = new Traced[3];
    const scoped_array<Traced> array(several);
    EXPECT_TRUE(array);
    EXPECT_EQ(array.get(), several);
    EXPECT_EQ(&array[2], several + 2);
    EXPECT_EQ(&*array, several);
    EXPECT_EQ(array->id, 0);
}

TEST_F(Holders, DeleteTheirObject) {
    { const scoped_ptr<Traced> object(new Traced(1)); }
    EXPECT_EQ(destroyed, (Ids{1}));
    {
        const scoped_array<Traced> array(new Traced[2]);
        array[0].id = 5;
        array[1].id = 6;
    }
    EXPECT_EQ(destroyed, (Ids{1, 6, 5}));
}

TEST_F(Holders, ResetDeletesTheOldObject) {
    scoped_ptr<Traced> object(new Traced(1));
    object.reset(new Traced(2));
    EXPECT_EQ(destroyed, (Ids{1}));
    EXPECT_EQ(object->id, 2);
    object.reset();
    EXPECT_EQ(destroyed, (Ids{1, 2}));
    EXPECT_FALSE(object);
    scoped_array<Traced> array(new Traced[1]);
    array.reset(new Traced[2]);
    EXPECT_EQ(destroyed.size(), 3U);
    array.reset();
    EXPECT_EQ(destroyed.size(), 5U);
    EXPECT_FALSE(array);
}

TEST_F(Holders, ResetToTheSameObjectKeepsIt) {
    scoped_ptr<Traced> object(new Traced(1));
    object.reset(object.get());
    EXPECT_TRUE(destroyed.empty());
    EXPECT_EQ(object->id, 1);
    scoped_array<Traced> array(new Traced[1]);
    array.reset(array.get());
    EXPECT_TRUE(destroyed.empty());
}

TEST_F(Holders, LetADestructorThrow) {
    EXPECT_THROW({ const scoped_ptr<Failing> object(new Failing); }, std::runtime_error);
}

TEST_F(Holders, StaySoundWhenTheOldObjectThrows) {
    scoped_ptr<Failing> object(new Failing);
    EXPECT_THROW(object.reset(), std::runtime_error);
    EXPECT_FALSE(object);
}
