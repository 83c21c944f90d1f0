#include <base/ptrmap.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

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

using Ids = std::vector<int>;

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

TEST(VoidPtrMap, HasTheSmallestPowerOfTwoOfBuckets) {
    EXPECT_EQ(VoidPtrMap(-5).buckets(), 1U);
    EXPECT_EQ(VoidPtrMap(0).buckets(), 1U);
    EXPECT_EQ(VoidPtrMap(1).buckets(), 1U);
    EXPECT_EQ(VoidPtrMap(2).buckets(), 2U);
    EXPECT_EQ(VoidPtrMap(3).buckets(), 4U);
    EXPECT_EQ(VoidPtrMap(4).buckets(), 4U);
    EXPECT_EQ(VoidPtrMap(5).buckets(), 8U);
    EXPECT_EQ(VoidPtrMap(100).buckets(), 128U);
    EXPECT_EQ(VoidPtrMap(128).buckets(), 128U);
    EXPECT_EQ(VoidPtrMap(129).buckets(), 256U);
}

TEST(VoidPtrMap, NeverGrows) {
    VoidPtrMap map(2);
    std::vector<std::unique_ptr<Entry>> entries;
    for (int i = 0; i < 50; ++i) {
        entries.push_back(std::make_unique<Entry>(&map, i));
        map.insert(static_cast<unsigned int>(i), entries.back().get());
    }
    EXPECT_EQ(map.buckets(), 2U);
}

TEST(VoidPtrMap, FindsByHashAndAddress) {
    int keys[2] = {};
    VoidPtrMap map(4);
    EXPECT_TRUE(map.empty());
    Entry a(&keys[0], 1);
    EXPECT_EQ(map.insert(6, &a), &a);
    EXPECT_FALSE(map.empty());
    EXPECT_EQ(map.lookup(6, &keys[0]), &a);
    // Only the low bits choose the bucket.
    EXPECT_EQ(map.lookup(2, &keys[0]), &a);
    EXPECT_EQ(map.lookup(7, &keys[0]), nullptr);
    // Equal objects at another address are another key.
    EXPECT_EQ(map.lookup(6, &keys[1]), nullptr);
}

TEST(VoidPtrMap, OfEqualKeysFindsTheOlderFirst) {
    int key = 0;
    VoidPtrMap map(4);
    Entry older(&key, 1);
    Entry newer(&key, 2);
    map.insert(1, &older);
    map.insert(1, &newer);
    EXPECT_EQ(map.lookup(1, &key), &older);
    EXPECT_EQ(map.remove(1, &key), &older);
    EXPECT_EQ(map.lookup(1, &key), &newer);
    EXPECT_EQ(map.remove(1, &key), &newer);
    EXPECT_EQ(map.remove(1, &key), nullptr);
    EXPECT_TRUE(map.empty());
}

TEST(VoidPtrMap, WalksBucketsByIndexAndEachFromItsHead) {
    int key = 0;
    VoidPtrMap map(4);
    Entry a(&key, 1);
    Entry b(&key, 2);
    Entry c(&key, 3);
    Entry d(&key, 4);
    map.insert(3, &a);
    map.insert(0, &b);
    map.insert(7, &c);
    map.insert(1, &d);
    Recorder recorder;
    EXPECT_EQ(map.for_each(recorder), 0);
    EXPECT_EQ(recorder.ids, (Ids{2, 4, 1, 3}));
    EXPECT_EQ(walked(map), (Ids{2, 4, 1, 3}));
}

TEST(VoidPtrMap, ANonZeroReturnStopsTheWalk) {
    int key = 0;
    VoidPtrMap map(4);
    Entry a(&key, 1);
    Entry b(&key, 2);
    Entry c(&key, 3);
    map.insert(0, &a);
    map.insert(0, &b);
    map.insert(1, &c);
    Recorder recorder;
    recorder.last = 1;
    recorder.stop = -7;
    EXPECT_EQ(map.for_each(recorder), -7);
    EXPECT_EQ(recorder.ids, (Ids{1}));
    recorder.ids.clear();
    EXPECT_EQ(map.for_each_value(0, &key, recorder), -7);
    EXPECT_EQ(recorder.ids, (Ids{1}));
}

TEST(VoidPtrMap, WalksTheEntriesOfOneKey) {
    int keys[2] = {};
    VoidPtrMap map(4);
    Entry a(&keys[0], 1);
    Entry b(&keys[1], 2);
    Entry c(&keys[0], 3);
    Entry elsewhere(&keys[0], 4);
    map.insert(2, &a);
    map.insert(2, &b);
    map.insert(6, &c);
    map.insert(1, &elsewhere);
    Recorder recorder;
    EXPECT_EQ(map.for_each_value(2, &keys[0], recorder), 0);
    EXPECT_EQ(recorder.ids, (Ids{1, 3}));
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

TEST(PtrMap, KeepsACopyOfTheValueUnderTheKey) {
    int keys[2] = {};
    PtrMap<int, double> map(10);
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.buckets(), 16U);
    EXPECT_EQ(map.lookup_entry(&keys[0]), nullptr);
    double value = 2.5;
    PtrMap<int, double>::Entry* entry = map.insert(&keys[0], value);
    value = 0;
    EXPECT_EQ(entry->key(), &keys[0]);
    EXPECT_EQ(map.lookup_entry(&keys[0]), entry);
    EXPECT_EQ(entry->value, 2.5);
    EXPECT_EQ(map.lookup_entry(&keys[1]), nullptr);
    EXPECT_FALSE(map.empty());
}

TEST(PtrMap, RemovingOneOfTwoEqualKeysLeavesTheOther) {
    int key = 0;
    PtrMap<int, int> map(4);
    PtrMap<int, int>::Entry* older = map.insert(&key, 1);
    PtrMap<int, int>::Entry* newer = map.insert(&key, 2);
    EXPECT_EQ(map.lookup_entry(&key), older);
    EXPECT_EQ(map.remove(&key), older);
    delete older;
    EXPECT_EQ(map.lookup_entry(&key), newer);
    EXPECT_EQ(map.lookup_entry(&key)->value, 2);
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
}

TEST(PtrMap, TheDeleterTakesNothingToo) {
    PtrMap<int, int>::Deleter deleter;
    EXPECT_EQ(deleter.void_call(nullptr), 0);
}

TEST(PtrMap, AgreesWithAnotherMapUnderRandomUse) {
    std::mt19937 random(11);
    std::vector<int> keys(300);
    PtrMap<int, int> map(32);
    std::unordered_map<int*, std::vector<int>> model;
    for (int step = 0; step < 5000; ++step) {
        int* key = &keys[random() % keys.size()];
        std::vector<int>& expected = model[key];
        if (random() % 2 == 0) {
            map.insert(key, step);
            expected.push_back(step);
        } else {
            std::unique_ptr<PtrMap<int, int>::Entry> removed(map.remove(key));
            ASSERT_EQ(removed != nullptr, !expected.empty());
            if (removed) {
                ASSERT_EQ(removed->value, expected.front());
                expected.erase(expected.begin());
            }
        }
        const PtrMap<int, int>::Entry* found = map.lookup_entry(key);
        ASSERT_EQ(found != nullptr, !expected.empty());
        if (found != nullptr) {
            ASSERT_EQ(found->value, expected.front());
        }
    }
}
