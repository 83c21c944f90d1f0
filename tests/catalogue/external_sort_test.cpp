// Sorting with little memory gives what sorting in memory gives.
#include "database/external_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "failure_of.h"
#include "support/random_numbers.h"
#include "support/scratch.h"

namespace {

using lumivar::ExternalSort;
using lumivar::SortLimits;

struct Numbered {
    std::uint64_t key;
    std::uint32_t number;
    std::uint32_t filler;
};

/// Keys of all sizes, many of them equal.
std::vector<Numbered> numbered_records(std::uint32_t count) {
    RandomNumbers random(7);
    std::vector<Numbered> records;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t wide = std::uint64_t{random.bits()} << 32U | random.bits();
        records.push_back({random.chance(0.5) ? wide : random.bits() % 50U, i, ~i});
    }
    return records;
}

std::vector<std::uint32_t> sorted_numbers(const std::vector<Numbered>& records,
                                          const std::string& output, const SortLimits& limits) {
    ExternalSort<Numbered> sort(output, limits);
    for (const Numbered& record : records) {
        sort.add(record.key, record);
    }
    std::vector<std::uint32_t> numbers;
    Numbered record;
    while (sort.next(record)) {
        EXPECT_EQ(record.filler, ~record.number);
        numbers.push_back(record.number);
    }
    EXPECT_FALSE(sort.next(record)) << "the end stays the end";
    return numbers;
}

TEST(ExternalSorting, IsTheStableSortWhateverTheMemory) {
    const ScratchFolder folder;
    const std::vector<Numbered> records = numbered_records(5000);
    std::vector<Numbered> sorted = records;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Numbered& a, const Numbered& b) { return a.key < b.key; });
    std::vector<std::uint32_t> expected;
    for (const Numbered& record : sorted) {
        expected.push_back(record.number);
    }
    // In memory; a few runs; many runs and passes, the last run of each pass alone; a run a record.
    const SortLimits limits[] = {{}, {100000, 128}, {3000, 3}, {2000, 2}, {1, 60}};
    for (const SortLimits& limit : limits) {
        SCOPED_TRACE(limit.bytes_in_memory);
        EXPECT_EQ(sorted_numbers(records, folder / "out", limit), expected);
        EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "its files are gone";
    }
    EXPECT_EQ(sorted_numbers({}, folder / "out", {}), std::vector<std::uint32_t>{});
    EXPECT_EQ(sorted_numbers({records[0]}, folder / "out", {1, 2}), std::vector<std::uint32_t>{0});
}

TEST(ExternalSorting, WorksBesideTheFileThatALinkPointsAt) {
    const ScratchFolder folder;
    std::filesystem::create_directory(folder / "far");
    std::filesystem::create_directory(folder / "near");
    write_file(folder / "far/real", "");
    std::filesystem::create_symlink("../far/real", folder / "near/link");
    ExternalSort<Numbered> sort(folder / "near/link", {1, 2});
    sort.add(1, {});
    sort.add(0, {});
    const auto entries = [&](const char* name) {
        return std::distance(std::filesystem::directory_iterator(folder / name), {});
    };
    EXPECT_EQ(entries("near"), 1);
    EXPECT_EQ(entries("far"), 2);
}

TEST(ExternalSorting, NamesTheOutputThatItCannotWorkFor) {
    const ScratchFolder folder;
    const std::string output = folder / "none/out";
    EXPECT_EQ(failure_of([&] {
                  sorted_numbers(numbered_records(2), output, {1, 2});
              }),
              "cannot write " + output + ": No such file or directory");
}

TEST(ExternalSorting, KeysRiseAsNumbersDo) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double rising[] = {-kInfinity, -1e300,
                             -1.0,       -std::numeric_limits<double>::denorm_min(),
                             0.0,        std::numeric_limits<double>::denorm_min(),
                             1.0,        1.5,
                             1e300,      kInfinity};
    for (std::size_t i = 1; i < std::size(rising); ++i) {
        EXPECT_LT(lumivar::rising_key(rising[i - 1]), lumivar::rising_key(rising[i])) << rising[i];
    }
    EXPECT_EQ(lumivar::rising_key(-0.0), lumivar::rising_key(0.0));
    EXPECT_GT(lumivar::rising_key(std::abs(std::nan(""))), lumivar::rising_key(kInfinity));
}

}  // namespace
