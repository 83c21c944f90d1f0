// Lists, the maps that are made of them, interned texts, and the holders of single objects.
#include <base/instring.h>
#include <base/list.h>
#include <base/ptrmap.h>
#include <base/scoped_ptr.h>
#include <base/string.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

struct Node : VoidList::Element {
    explicit Node(int i) : id(i) {}
    int id;
};

// The ids from the first node on; expects the same ones backwards.
std::vector<int> ids_of(const VoidList& list) {
    std::vector<int> ids;
    for (const VoidList::Element* e = list.begin(); e != list.end(); e = e->next) {
        ids.push_back(static_cast<const Node*>(e)->id);
    }
    auto expected = ids.rbegin();
    for (const VoidList::Element* e = list.end()->prev; e != list.end(); e = e->prev) {
        EXPECT_EQ(static_cast<const Node*>(e)->id, *expected++);
    }
    EXPECT_EQ(expected, ids.rend());
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

TEST(VoidList, AppendsAtTheTailAndUnlinksWithoutFreeing) {
    Node a(1);
    Node b(2);
    Node c(3);
    VoidList list;
    list.append(&a);
    list.append(&b);
    list.append(&c);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(list.begin(), &a);
    EXPECT_EQ(ids_of(list), (Ids{1, 2, 3}));
    EXPECT_EQ(list.remove(&b), &b);
    EXPECT_EQ(ids_of(list), (Ids{1, 3}));
    a.remove();
    EXPECT_EQ(ids_of(list), (Ids{3}));
    list.append(&a);
    EXPECT_EQ(ids_of(list), (Ids{3, 1}));
    VoidList other;
    other.append(&b);
    EXPECT_EQ(ids_of(other), (Ids{2}));
    list.remove(&a);
    list.remove(&c);
    EXPECT_TRUE(list.empty());
}

TEST(List, AppendsCopiesOfValuesAndLinksElementsOfOthersWithOne) {
    List<int>::Element mine;
    List<int> list;
    EXPECT_TRUE(list.empty());
    list.append(1);
    const List<int>::Element* last = list.append(2);
    EXPECT_EQ(last->value, 2);
    list.append(&mine, 7);
    EXPECT_EQ(mine.value, 7);
    EXPECT_EQ(values(list), (Ids{1, 2, 7}));
    EXPECT_EQ(list.remove_nodelete(&mine), &mine);
    EXPECT_EQ(mine.value, 7);
    EXPECT_EQ(values(list), (Ids{1, 2}));
    list.clear();
    EXPECT_TRUE(list.empty());
    // An object may be an element itself.
    struct Star : List<Star*>::Element {};
    Star sirius;
    List<Star*> stars;
    stars.append(&sirius, &sirius);
    EXPECT_EQ((*stars.begin())->value, &sirius);
    sirius.remove();
    EXPECT_TRUE(stars.empty());
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

namespace {

struct Entry : VoidPtrMap::Entry {
    Entry(void* key, int i) : VoidPtrMap::Entry(key), id(i) {}
    int id;
};

// Notes the entries of a walk; stops it with `stop` at the entry `last`.
struct Recorder : VoidPtrMap::ForEachFunc {
    int void_call(VoidPtrMap::Entry* entry) override {
        ids.push_back(static_cast<Entry*>(entry)->id);
        return ids.back() == last ? stop : 0;
    }
    std::vector<int> ids;
    int last = -1;
    int stop = 0;
};

std::vector<int> walked(const VoidPtrMap& map) {
    Recorder recorder;
    map.for_each_const(recorder);
    return recorder.ids;
}

// Counts how many live.
struct Counted {
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    ~Counted() { --alive; }
    static int alive;
};
int Counted::alive = 0;

}  // namespace

TEST(VoidPtrMap, HasTheSmallestPowerOfTwoOfBucketsAndNeverGrows) {
    const struct {
        int hint;
        unsigned int buckets;
    } table[] = {{-5, 1}, {0, 1}, {1, 1},     {2, 2},     {3, 4},
                 {4, 4},  {5, 8}, {100, 128}, {128, 128}, {129, 256}};
    for (const auto& row : table) {
        EXPECT_EQ(VoidPtrMap(row.hint).buckets(), row.buckets) << row.hint;
    }
    PtrMap<int, int> map(2);
    int key = 0;
    for (int i = 0; i < 50; ++i) {
        map.insert(&key, i);
    }
    EXPECT_EQ(map.buckets(), 2U);
}

TEST(VoidPtrMap, FindsByHashAndAddressOfEqualKeysTheOlderFirst) {
    int keys[2] = {};
    VoidPtrMap map(4);
    EXPECT_TRUE(map.empty());
    Entry older(&keys[0], 1);
    Entry newer(&keys[0], 2);
    EXPECT_EQ(map.insert(6, &older), &older);
    EXPECT_FALSE(map.empty());
    map.insert(6, &newer);
    EXPECT_EQ(map.lookup(6, &keys[0]), &older);
    // Only the low bits choose the bucket.
    EXPECT_EQ(map.lookup(2, &keys[0]), &older);
    EXPECT_EQ(map.lookup(7, &keys[0]), nullptr);
    // Equal objects at another address are another key.
    EXPECT_EQ(map.lookup(6, &keys[1]), nullptr);
    EXPECT_EQ(map.remove(6, &keys[0]), &older);
    EXPECT_EQ(map.lookup(6, &keys[0]), &newer);
    EXPECT_EQ(map.remove(6, &keys[0]), &newer);
    EXPECT_EQ(map.remove(6, &keys[0]), nullptr);
    EXPECT_TRUE(map.empty());
}

TEST(VoidPtrMap, WalksBucketsByIndexAndEachFromItsHead) {
    int keys[2] = {};
    VoidPtrMap map(4);
    Entry a(&keys[0], 1);
    Entry b(&keys[0], 2);
    Entry c(&keys[0], 3);
    Entry d(&keys[0], 4);
    Entry other(&keys[1], 5);
    map.insert(3, &a);
    map.insert(0, &b);
    map.insert(3, &other);
    map.insert(7, &c);
    map.insert(1, &d);
    const auto expect_walk = [](const Ids& ids, int result, auto walk) {
        Recorder recorder;
        if (result != 0) {
            recorder.last = ids.back();
            recorder.stop = result;
        }
        EXPECT_EQ(walk(recorder), result);
        EXPECT_EQ(recorder.ids, ids);
    };
    const auto whole = [&](Recorder& recorder) { return map.for_each(recorder); };
    const auto of_key = [&](Recorder& recorder) {
        return map.for_each_value(3, &keys[0], recorder);
    };
    expect_walk({2, 4, 1, 5, 3}, 0, whole);
    expect_walk({2, 4, 1}, -7, whole);
    expect_walk({1, 3}, 0, of_key);
    expect_walk({1}, -7, of_key);
    EXPECT_EQ(walked(map), (Ids{2, 4, 1, 5, 3}));
}

TEST(VoidPtrMap, AVisitorMayFreeTheEntryItIsGiven) {
    struct Freeing : VoidPtrMap::ForEachFunc {
        int void_call(VoidPtrMap::Entry* entry) override {
            entry->remove();
            delete static_cast<Entry*>(entry);
            ++count;
            return 0;
        }
        int count = 0;
    };
    int key = 0;
    VoidPtrMap map(2);
    for (int i = 0; i < 6; ++i) {
        map.insert(static_cast<unsigned int>(i), new Entry(&key, i));
    }
    Freeing freeing;
    map.for_each_value(1, &key, freeing);
    EXPECT_EQ(freeing.count, 3);
    map.for_each(freeing);
    EXPECT_EQ(freeing.count, 6);
    EXPECT_TRUE(map.empty());
}

TEST(VoidPtrMap, ClearUnlinksWithoutFreeing) {
    int key = 0;
    VoidPtrMap map(2);
    Entry a(&key, 1);
    Entry b(&key, 2);
    map.insert(0, &a);
    map.insert(1, &b);
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.lookup(0, &key), nullptr);
    EXPECT_EQ(a.id + b.id, 3);
    map.insert(0, &b);
    EXPECT_EQ(walked(map), (Ids{2}));
}

TEST(PtrMap, HashIsTheAddressWithoutItsFourLowestBits) {
    using Map = PtrMap<int, int>;
    const auto at = [](std::uintptr_t address) { return reinterpret_cast<int*>(address); };
    EXPECT_EQ(Map::hash(nullptr), 0U);
    EXPECT_EQ(Map::hash(at(0x1230)), 0x123U);
    EXPECT_EQ(Map::hash(at(0x123F)), 0x123U);
    if constexpr (sizeof(void*) == 8) {
        // Bits 36 and up are cut off.
        const auto high = static_cast<std::uintptr_t>(0xABCDE98765432100ULL);
        EXPECT_EQ(Map::hash(at(high)), 0x76543210U);
    }
}

TEST(PtrMap, KeepsACopyOfTheValueUnderTheKeyOfEqualOnesEach) {
    int keys[3] = {};
    PtrMap<int, double> map(10);
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.buckets(), 16U);
    EXPECT_EQ(map.lookup_entry(&keys[0]), nullptr);
    map.insert(&keys[1], 7);
    double value = 2.5;
    PtrMap<int, double>::Entry* older = map.insert(&keys[0], value);
    value = 0;
    PtrMap<int, double>::Entry* newer = map.insert(&keys[0], 2);
    EXPECT_FALSE(map.empty());
    EXPECT_EQ(older->key(), &keys[0]);
    EXPECT_EQ(older->value, 2.5);
    EXPECT_EQ(map.lookup_entry(&keys[0]), older);
    EXPECT_EQ(map.remove(&keys[0]), older);
    delete older;
    EXPECT_EQ(map.lookup_entry(&keys[0]), newer);
    EXPECT_EQ(newer->value, 2);
    delete map.remove(&keys[0]);
    EXPECT_EQ(map.remove(&keys[0]), nullptr);
    EXPECT_EQ(map.lookup_entry(&keys[1])->value, 7);
    EXPECT_EQ(map.lookup_entry(&keys[2]), nullptr);
}

TEST(PtrMap, DestroysItsValues) {
    int keys[20] = {};
    {
        PtrMap<int, Counted> map(4);
        for (int& key : keys) {
            map.insert(&key, Counted());
        }
        EXPECT_EQ(Counted::alive, 20);
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ((PtrMap<int, int>::Deleter().void_call(nullptr)), 0) << "nothing to destroy";
}

namespace {

// Taken before main: the table works from static initialisers.
const String first_symbol = InString::gensym()->text;
const InString* const early = InString::intern("early");
const bool early_is_kept = InString::intern("early") == early;

std::string dumped() { return output_of(stdout, InString::dump); }

std::string chains(unsigned int marked, const std::string& texts) {
    std::string lines;
    for (unsigned int b = 0; b < 256; ++b) {
        lines += "chain " + std::to_string(b) + ": " + (b == marked ? texts : "") + "\n";
    }
    return lines;
}

// The table is the process's: each test starts from an empty one.
class Interning : public ::testing::Test {
protected:
    void SetUp() override { InString::cleanup(); }
    void TearDown() override { InString::cleanup(); }
};

}  // namespace

TEST_F(Interning, EqualTextsHaveOneAddressEvenBeforeMain) {
    EXPECT_TRUE(early_is_kept);
    EXPECT_STREQ(first_symbol.c_str(), "G0");
    InString* vega = InString::intern("vega");
    EXPECT_EQ(InString::intern("vega"), vega);
    EXPECT_EQ(InString::intern(String("ve") + "ga"), vega);
    EXPECT_NE(InString::intern("Vega"), vega);
    EXPECT_STREQ(vega->text.c_str(), "vega");
    EXPECT_EQ(vega->hash, String("vega").hash());
    EXPECT_EQ(vega->value, vega);
    EXPECT_EQ(InString::intern(""), InString::intern(String()));
    EXPECT_EQ(InString::intern("")->hash, 0U);
}

TEST_F(Interning, GeneratedSymbolsCountOnAndAreNeverInterned) {
    InString* symbol = InString::gensym();
    InString* next = InString::gensym();
    EXPECT_EQ(symbol->text.c_str()[0], 'G');
    const int number = String(symbol->text.c_str() + 1).atoi();
    EXPECT_TRUE(next->text == String::fmt("G%d", number + 1));
    EXPECT_EQ(symbol->hash, symbol->text.hash());
    EXPECT_EQ(symbol->value, symbol);
    InString* interned = InString::intern(symbol->text);
    EXPECT_NE(interned, symbol);
    EXPECT_TRUE(interned->text == symbol->text);
    // Not even while the symbol's own text is the only one of its kind.
    EXPECT_EQ(InString::intern(symbol->text), interned);
}

TEST_F(Interning, CleanupEmptiesTheTableAndGoesOnNumberingSymbols) {
    InString::intern("vega");
    const int number = String(InString::gensym()->text.c_str() + 1).atoi();
    InString::cleanup();
    EXPECT_EQ(dumped(), chains(256, ""));
    InString::cleanup();
    EXPECT_STREQ(InString::intern("vega")->text.c_str(), "vega");
    EXPECT_TRUE(InString::gensym()->text == String::fmt("G%d", number + 1));
}

TEST_F(Interning, DumpShowsEachTextInItsChainInOrder) {
    // The hash of "Q" is (81 x 16 + 5) x 11 = 14311, of chain 231; "a" has (97 x 16 + 6) x 11 =
    // 17138, of chain 242.
    InString::intern("Q");
    EXPECT_EQ(dumped(), chains(231, " Q"));
    InString::cleanup();
    // The null text and the generated symbol, which is in no chain.
    InString::gensym();
    InString::intern("");
    EXPECT_EQ(dumped(), chains(0, " "));
    InString::cleanup();
    // The hash of "A" is 11484 = 44 x 256 + 220. Another text of its chain is searched for.
    String other;
    for (int n = 0; n < 26 * 26 && (other.hash() & 255U) != 220; ++n) {
        other = String::fmt("%c%c", 'a' + n / 26, 'a' + n % 26);
    }
    const InString* first = InString::intern("A");
    EXPECT_EQ(dumped(), chains(220, " A"));
    const InString* second = InString::intern(other);
    EXPECT_EQ(dumped(), chains(220, std::string(" A ") + other.c_str()));
    EXPECT_EQ(InString::intern("A"), first);
    EXPECT_EQ(InString::intern(other), second);
}

TEST_F(Interning, ATemporaryStaysOutOfTheTableUntilItIsMadePermanent) {
    {
        TempInString temporary("vega");
        EXPECT_TRUE(temporary.temporary());
        EXPECT_STREQ(temporary.get()->text.c_str(), "vega");
        EXPECT_EQ(temporary.get()->hash, String("vega").hash());
        EXPECT_NE(InString::intern("vega"), temporary.get());
        InString::cleanup();
    }
    EXPECT_EQ(dumped(), chains(256, ""));
    InString* kept = nullptr;
    {
        TempInString temporary("A");
        kept = temporary.make_permanent();
        EXPECT_FALSE(temporary.temporary());
        EXPECT_EQ(kept, temporary.get());
        EXPECT_EQ(temporary.make_permanent(), kept);
    }
    EXPECT_EQ(InString::intern("A"), kept);
    EXPECT_EQ(dumped(), chains(220, " A"));
    TempInString found("A");
    EXPECT_FALSE(found.temporary());
    EXPECT_EQ(found.get(), kept);
    EXPECT_EQ(found.make_permanent(), kept);
}

TEST_F(Interning, MapsGoByTheAddress) {
    StringMap<int> map(8);
    map.insert(InString::intern("vega"), 5);
    ASSERT_NE(map.lookup_entry(InString::intern("vega")), nullptr);
    EXPECT_EQ(map.lookup_entry(InString::intern("vega"))->value, 5);
    EXPECT_STREQ(map.lookup_entry(InString::intern("vega"))->key()->text.c_str(), "vega");
    EXPECT_EQ(map.lookup_entry(InString::intern("deneb")), nullptr);
}

namespace {

std::vector<int> destroyed;

struct Held {
    explicit Held(int i = 0) : id(i) {}
    ~Held() { destroyed.push_back(id); }
    int id;
};

struct Failing {
    ~Failing() noexcept(false) { throw std::runtime_error("close"); }
};

class Holders : public ::testing::Test {
protected:
    void SetUp() override { destroyed.clear(); }
};

}  // namespace

static_assert(!std::is_copy_constructible_v<scoped_ptr<int>>);
static_assert(!std::is_copy_assignable_v<scoped_ptr<int>>);
static_assert(!std::is_copy_constructible_v<scoped_array<int>>);
static_assert(!std::is_convertible_v<scoped_ptr<int>, bool>, "the truth test is explicit");

TEST_F(Holders, StartWithNothingAndLendTheirObject) {
    const scoped_ptr<Held> no_object;
    const scoped_array<Held> no_array;
    EXPECT_FALSE(no_object);
    EXPECT_FALSE(no_array);
    EXPECT_EQ(no_object.get(), nullptr);
    EXPECT_EQ(no_array.get(), nullptr);
    auto* traced = new Held(1);
    const scoped_ptr<Held> object(traced);
    EXPECT_TRUE(object);
    EXPECT_EQ(object.get(), traced);
    EXPECT_EQ(object->id, 1);
    EXPECT_EQ(&*object, traced);
    auto* several = new Held[3];
    const scoped_array<Held> array(several);
    EXPECT_TRUE(array);
    EXPECT_EQ(array.get(), several);
    EXPECT_EQ(&array[2], several + 2);
    EXPECT_EQ(&*array, several);
    EXPECT_EQ(array->id, 0);
}

TEST_F(Holders, DeleteTheirObject) {
    { const scoped_ptr<Held> object(new Held(1)); }
    EXPECT_EQ(destroyed, (Ids{1}));
    {
        const scoped_array<Held> array(new Held[2]);
        array[0].id = 5;
        array[1].id = 6;
    }
    EXPECT_EQ(destroyed, (Ids{1, 6, 5}));
}

TEST_F(Holders, ResetDeletesTheOldObjectUnlessItIsTheSame) {
    scoped_ptr<Held> object(new Held(1));
    object.reset(object.get());
    EXPECT_TRUE(destroyed.empty());
    object.reset(new Held(2));
    EXPECT_EQ(destroyed, (Ids{1}));
    EXPECT_EQ(object->id, 2);
    object.reset();
    EXPECT_EQ(destroyed, (Ids{1, 2}));
    EXPECT_FALSE(object);
    scoped_array<Held> array(new Held[1]);
    array.reset(array.get());
    EXPECT_EQ(destroyed.size(), 2U);
    array.reset(new Held[2]);
    EXPECT_EQ(destroyed.size(), 3U);
    array.reset();
    EXPECT_EQ(destroyed.size(), 5U);
    EXPECT_FALSE(array);
}

TEST_F(Holders, LetADestructorThrowAndStaySound) {
    EXPECT_THROW({ const scoped_ptr<Failing> holder(new Failing); }, std::runtime_error);
    scoped_ptr<Failing> object(new Failing);
    EXPECT_THROW(object.reset(), std::runtime_error);
    EXPECT_FALSE(object);
}
