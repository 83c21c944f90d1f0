// Databases that are written star by star.
#include "database/database_writer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/scratch.h"

namespace {

using lumivar::DatabaseWriter;

TEST(DatabaseWriting, WritesEveryStarOnceInItsOrder) {
    const ScratchFolder folder;
    // More than fits into the writer's memory at a time.
    std::vector<support::CatalogueStar> expected(20001);
    DatabaseWriter writer(folder / "t.stars");
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i].lon = static_cast<double>(i);
        expected[i].distance = 1.5;
        lumivar::CatalogueStar star;
        star.lon = expected[i].lon;
        star.luminance = 1.0F;
        star.distance = 1.5;
        writer.add(star, 0);
    }
    EXPECT_EQ(writer.stars(), expected.size());
    EXPECT_FALSE(std::filesystem::exists(folder / "t.stars")) << "not before it is whole";
    writer.publish();
    EXPECT_EQ(read_file(folder / "t.stars"),
              support::catalogue_bytes(support::kVersion2, expected));
}

TEST(DatabaseWriting, KeepsTheVersionAndTheBytesOfARecordButNotItsReservedByte) {
    const ScratchFolder folder;
    star record = {};
    record.r = 7;
    record.reserved = 9;
    DatabaseWriter writer(folder / "t.stars", 1);
    writer.add_record(record);
    writer.publish();
    std::string expected = support::catalogue_header(support::kVersion1) + std::string(32, '\0');
    expected[32 + 20] = 7;
    EXPECT_EQ(read_file(folder / "t.stars"), expected);
}

TEST(DatabaseWriting, LeavesNothingWithoutPublish) {
    const ScratchFolder folder;
    { DatabaseWriter writer(folder / "t.stars"); }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
