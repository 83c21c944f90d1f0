#include <base/list.h>
#include <base/string.h>
#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace {

struct Node : VoidList::Element {
    explicit Node(int i) : id(i) {}
    int id;
};

std::vector<int> forwards(const VoidList& list) {
    std::vector<int> ids;
    for (const VoidList::Element* e = list.begin(); e != list.end(); e = e->next) {
        ids.push_back(static_cast<const Node*>(e)->id);
    }
    return ids;
}

std::vector<int> backwards(const VoidList& list) {
    std::vector<int> ids;
    for (const VoidList::Element* e = list.end()->prev; e != list.end(); e = e->prev) {
        ids.push_back(static_cast<const Node*>(e)->id);
    }
    return ids;
}

std::vector<int> values(const List<int>& list) {
    std::vector<int> result;
    for (const List<int>::Element* element : list) {
        result.push_back(element->value);
    }
    return result;
}

using Ids = std::vector<int>;

}  // namespace

static_assert(sizeof(VoidList) == 2 * sizeof(void*), "the list is a node itself");
static_assert(sizeof(VoidList::Element) == 2 * sizeof(void*));
static_assert(!std::is_copy_constructible_v<VoidList> && !std::is_copy_constructible_v<List<int>>);

TEST(VoidList, AnEmptyListPointsAtItselfBothWays) {
    const VoidList list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_EQ(list.end()->next, list.end());
    EXPECT_EQ(list.end()->prev, list.end());
    EXPECT_EQ(static_cast<const void*>(list.end()), static_cast<const void*>(&list));
}

TEST(VoidList, AppendsAtTheTail) {
    Node a(1);
    Node b(2);
    Node c(3);
    VoidList list;
    list.append(&a);
    list.append(&b);
    list.append(&c);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(list.begin(), &a);
    EXPECT_EQ(forwards(list), (Ids{1, 2, 3}));
    EXPECT_EQ(backwards(list), (Ids{3, 2, 1}));
}

TEST(VoidList, RemoveUnlinksAndReturnsTheElement) {
    Node a(1);
    Node b(2);
    Node c(3);
    VoidList list;
    list.append(&a);
    list.append(&b);
    list.append(&c);
    EXPECT_EQ(list.remove(&b), &b);
    EXPECT_EQ(forwards(list), (Ids{1, 3}));
    EXPECT_EQ(backwards(list), (Ids{3, 1}));
    list.remove(&a);
    list.remove(&c);
    EXPECT_TRUE(list.empty());
}

TEST(VoidList, AnElementUnlinksItselfAndMayBeLinkedAgain) {
    Node a(1);
    Node b(2);
    VoidList list;
    list.append(&a);
    list.append(&b);
    a.remove();
    EXPECT_EQ(forwards(list), (Ids{2}));
    list.append(&a);
    EXPECT_EQ(forwards(list), (Ids{2, 1}));
    VoidList other;
    b.remove();
    other.append(&b);
    EXPECT_EQ(forwards(list), (Ids{1}));
    EXPECT_EQ(forwards(other), (Ids{2}));
}

TEST(List, AppendsCopiesOfValues) {
    List<int> list;
    EXPECT_TRUE(list.empty());
    list.append(1);
    const List<int>::Element* last = list.append(2);
    EXPECT_EQ(last->value, 2);
    EXPECT_EQ(values(list), (Ids{1, 2}));
    EXPECT_EQ((*list.begin())->value, 1);
    list.clear();
    EXPECT_TRUE(list.empty());
}

TEST(List, LinksElementsOfOthersWithAValue) {
    List<int>::Element mine;
    List<int> list;
    list.append(1);
    list.append(&mine, 7);
    EXPECT_EQ(mine.value, 7);
    EXPECT_EQ(values(list), (Ids{1, 7}));
    EXPECT_EQ(list.remove_nodelete(&mine), &mine);
    EXPECT_EQ(mine.value, 7);
    EXPECT_EQ(values(list), (Ids{1}));
    list.clear();
}

TEST(List, RemoveDeletesTheElement) {
    // A leak would be the sanitizer's to find: the text is long enough for a block of its own.
    List<String> list;
    list.append("vega");
    List<String>::Element* second = list.append("deneb");
    list.append("altair");
    list.remove(second);
    auto element = list.begin();
    EXPECT_STREQ((*element)->value.c_str(), "vega");
    ++element;
    EXPECT_STREQ((*element)->value.c_str(), "altair");
    ++element;
    EXPECT_TRUE(element == list.end());
    list.clear();
    EXPECT_TRUE(list.empty());
    list.clear();
    EXPECT_TRUE(list.empty());
}

TEST(List, ObjectsAreLinkedWhereTheyLie) {
    struct Star : List<Star*>::Element {
        int magnitude = 0;
    };
    Star sirius;
    sirius.magnitude = -1;
    List<Star*> list;
    list.append(&sirius, &sirius);
    EXPECT_EQ((*list.begin())->value, &sirius);
    EXPECT_EQ((*list.begin())->value->magnitude, -1);
    sirius.remove();
    EXPECT_TRUE(list.empty());
}
