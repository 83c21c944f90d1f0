// The records of a database in their order, and what is said of a file that is not whole.
#include "database/database_reader.h"

#include <gtest/gtest.h>
#include <libimgops/byte_order.h>

#include <filesystem>
#include <string>
#include <vector>

#include "failure_of.h"
#include "support/catalogue.h"
#include "support/scratch.h"

namespace {

using lumivar::DatabaseReader;

class DatabaseReading : public testing::Test {
protected:
    std::string file(const std::string& bytes) {
        write_file(path, bytes);
        return path;
    }
    ScratchFolder folder;
    const std::string path = folder / "t.stars";
};

std::vector<support::CatalogueStar> numbered(std::size_t count) {
    std::vector<support::CatalogueStar> stars(count);
    for (std::size_t i = 0; i < count; ++i) {
        stars[i].lon = static_cast<double>(i);
    }
    return stars;
}

TEST_F(DatabaseReading, HandsOutEveryRecordOnceInItsOrder) {
    // More than one block, and the last one not full.
    constexpr std::size_t kStars = 20001;
    DatabaseReader reader(file(support::catalogue_bytes(support::kVersion2, numbered(kStars))));
    EXPECT_EQ(reader.version(), 2);
    EXPECT_EQ(reader.stars(), kStars);
    EXPECT_EQ(reader.bytes(), 32U + 32U * kStars);
    EXPECT_EQ(reader.trailing_bytes(), 0U);
    std::size_t expected = 0;
    std::size_t blocks = 0;
    for (auto block = reader.next_block(); !block.empty(); block = reader.next_block()) {
        ++blocks;
        for (const star& record : block) {
            ASSERT_EQ(ledouble_to_cpu(&record.lon), static_cast<double>(expected));
            ++expected;
        }
    }
    EXPECT_EQ(expected, kStars);
    EXPECT_GT(blocks, 1U);
    EXPECT_TRUE(reader.next_block().empty()) << "the end stays the end";
}

TEST_F(DatabaseReading, ReadsVersionOne) {
    DatabaseReader reader(file(support::catalogue_bytes(support::kVersion1, numbered(3))));
    EXPECT_EQ(reader.version(), 1);
    EXPECT_EQ(reader.next_block().size(), 3U);
}

TEST_F(DatabaseReading, TellsOfBytesThatAreNoWholeRecord) {
    const std::string whole = support::catalogue_bytes(support::kVersion2, numbered(1));
    DatabaseReader reader(file(whole + std::string(31, 'x')));
    EXPECT_EQ(reader.trailing_bytes(), 31U);
    EXPECT_EQ(reader.next_block().size(), 1U);
    EXPECT_TRUE(reader.next_block().empty());

    DatabaseReader cut(file(whole.substr(0, 31)));
    EXPECT_EQ(cut.stars(), 0U);
    EXPECT_EQ(cut.trailing_bytes(), 31U);
    EXPECT_TRUE(cut.next_block().empty());
}

TEST_F(DatabaseReading, NamesAFileThatItCannotRead) {
    EXPECT_EQ(failure_of([&] { DatabaseReader reader(path); }),
              "cannot read " + path + ": No such file or directory");
    file("hello there");
    EXPECT_EQ(failure_of([&] { DatabaseReader reader(path); }),
              path +
                  " is not a star database: it begins with \"hello th\" (68 65 6c 6c 6f 20 74 68) "
                  "instead of \"LUMIVAR1\" or \"LUMIVAR2\"");
}

TEST_F(DatabaseReading, NoticesAFileThatBecomesShorter) {
    DatabaseReader reader(file(support::catalogue_bytes(support::kVersion2, numbered(3))));
    std::filesystem::resize_file(path, 96);
    EXPECT_EQ(failure_of([&] { reader.next_block(); }),
              "cannot read " + path + ": it has become shorter meanwhile");
}

}  // namespace
