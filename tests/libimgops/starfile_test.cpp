#include <base/scoped_ptr.h>
#include <gtest/gtest.h>
#include <libimgops/byte_order.h>
#include <libimgops/star_database_name.h>
#include <libimgops/starfile.h>

#include <bit>
#include <cerrno>
#include <cstring>
#include <string>

#include "support/catalogue.h"
#include "support/expect_throw.h"
#include "support/memory_stars.h"
#include "support/scratch.h"

namespace {

using support::CatalogueStar;

/// The number of these bytes in memory order, whatever the machine.
template <class T>
T from_bytes(std::initializer_list<unsigned char> bytes) {
    T number;
    EXPECT_EQ(bytes.size(), sizeof number);
    std::memcpy(&number, bytes.begin(), sizeof number);
    return number;
}

scoped_ptr<StarInput> open_bytes(const ScratchFolder& folder, const std::string& bytes) {
    const std::string path = folder / "sky.stars";
    write_file(path, bytes);
    return scoped_ptr<StarInput>(op_stars_file_input(path.c_str()));
}

/// `bytes` cut or filled with 0xee to `size`.
std::string sized(std::string bytes, std::size_t size) {
    bytes.resize(size, '\xee');
    return bytes;
}

}  // namespace

// The same numbers as bytes of a file; each host order sees them as another integer first.
TEST(ByteOrder, KeepsOrSwapsIntegers) {
    EXPECT_EQ(le32_to_cpu<std::endian::little>(0x12345678U), 0x12345678U);
    EXPECT_EQ(le32_to_cpu<std::endian::big>(0x12345678U), 0x78563412U);
    EXPECT_EQ(le64_to_cpu<std::endian::little>(0x0123456789abcdefULL), 0x0123456789abcdefULL);
    EXPECT_EQ(le64_to_cpu<std::endian::big>(0x0123456789abcdefULL), 0xefcdab8967452301ULL);
}

TEST(ByteOrder, ReadsFileBytesOnThisMachine) {
    EXPECT_EQ(le32_to_cpu(from_bytes<u32>({0x78, 0x56, 0x34, 0x12})), 0x12345678U);
    EXPECT_EQ(le64_to_cpu(from_bytes<u64>({0xef, 0xcd, 0xab, 0x89, 0x67, 0x45, 0x23, 0x01})),
              0x0123456789abcdefULL);
    // IEEE-754: 1.5 is 3fc00000, -2.0 is c000000000000000.
    const float f = from_bytes<float>({0, 0, 0xc0, 0x3f});
    EXPECT_EQ(lefloat_to_cpu(&f), 1.5F);
    const double d = from_bytes<double>({0, 0, 0, 0, 0, 0, 0, 0xc0});
    EXPECT_EQ(ledouble_to_cpu(&d), -2.0);
    // Of what is no number the bits stay.
    const float none = from_bytes<float>({0x34, 0x12, 0xc0, 0x7f});
    EXPECT_EQ(std::bit_cast<u32>(lefloat_to_cpu(&none)), 0x7fc01234U);
}

TEST(ByteOrder, ReinterpretsFloatsOfTheOtherOrder) {
    // What the other kind of machine stores is this machine's number with its bytes turned round.
    const float f = std::bit_cast<float>(le32_to_cpu<std::endian::big>(0x3fc00000U));
    const double d = std::bit_cast<double>(le64_to_cpu<std::endian::big>(0xc000000000000001ULL));
    EXPECT_EQ(lefloat_to_cpu<std::endian::big>(&f), 1.5F);
    EXPECT_EQ(std::bit_cast<u64>(ledouble_to_cpu<std::endian::big>(&d)), 0xc000000000000001ULL);
}

TEST(ByteOrder, StoresWhatItReadsAsEitherHost) {
    // 1.5F is 3fc00000; -2.0 with its last bit set is c000000000000001.
    float f;
    double d;
    cpu_to_lefloat(1.5F, &f);
    EXPECT_EQ(std::memcmp(&f, "\0\0\xc0\x3f", 4), 0);
    cpu_to_ledouble(std::bit_cast<double>(0xc000000000000001ULL), &d);
    EXPECT_EQ(std::memcmp(&d, "\1\0\0\0\0\0\0\xc0", 8), 0);
    // The other kind of machine stores its number with the bytes turned round.
    cpu_to_lefloat<std::endian::big>(1.5F, &f);
    EXPECT_EQ(std::bit_cast<u32>(f), le32_to_cpu<std::endian::big>(0x3fc00000U));
    cpu_to_ledouble<std::endian::big>(-2.0, &d);
    EXPECT_EQ(std::bit_cast<u64>(d), le64_to_cpu<std::endian::big>(0xc000000000000000ULL));
}

TEST(StarDatabaseName, HoldsDotStarsAnywhere) {
    for (const char* name : {"a.stars", ".stars", "a.stars.bak", "a.starship"}) {
        EXPECT_TRUE(is_star_database_name(name)) << name;
    }
    for (const char* name : {"", "stars", "a.star", "a.STARS", "a.stats"}) {
        EXPECT_FALSE(is_star_database_name(name)) << name;
    }
}

TEST(StarFile, HandsOutTheRecordsInPlace) {
    const ScratchFolder folder;
    CatalogueStar orange;
    orange.lon = 88.79294;
    orange.lat = 7.40706;
    orange.luminance = 0.661F;
    orange.r = 255;
    orange.g = 207;
    orange.b = 155;
    orange.distance = 152.7;
    CatalogueStar second;
    second.lon = -1e-3;
    const auto input =
        open_bytes(folder, support::catalogue_bytes(support::kVersion2, {orange, second}));
    EXPECT_EQ(input->nstars(), 3U);
    ASSERT_TRUE(input->is_valid());
    const star* first = input->next();
    EXPECT_EQ(ledouble_to_cpu(&first->lon), 88.79294);
    EXPECT_EQ(ledouble_to_cpu(&first->lat), 7.40706);
    EXPECT_EQ(lefloat_to_cpu(&first->luminance), 0.661F);
    EXPECT_EQ(first->r, 255);
    EXPECT_EQ(first->g, 207);
    EXPECT_EQ(first->b, 155);
    EXPECT_EQ(ledouble_to_cpu(&first->distance), 152.7);
    const star* next = input->next();
    EXPECT_EQ(next, first + 1);
    EXPECT_EQ(ledouble_to_cpu(&next->lon), -1e-3);

    input->reset();
    EXPECT_EQ(input->next(), first - 1) << "the header again";
    EXPECT_EQ(input->next(), first);
}

TEST(StarFile, CountsWholeRecordsOnly) {
    const ScratchFolder folder;
    const std::string two = support::catalogue_bytes(support::kVersion1, {CatalogueStar()});
    const struct {
        std::size_t size;
        u32 records;
        bool valid;
    } rows[] = {{1, 0, false}, {7, 0, false}, {8, 0, true},  {31, 0, true}, {32, 1, true},
                {33, 1, true}, {63, 1, true}, {64, 2, true}, {65, 2, true}};
    for (const auto& row : rows) {
        const auto input = open_bytes(folder, sized(two, row.size));
        EXPECT_EQ(input->nstars(), row.records) << row.size;
        EXPECT_EQ(input->is_valid(), row.valid) << row.size;
        EXPECT_FALSE(input->depth_valid());
    }
}

TEST(StarFile, CannotMapAnEmptyFile) {
    const ScratchFolder folder;
    const std::string message = thrown_message([&] { open_bytes(folder, ""); });
    EXPECT_EQ(message.find(with_error("mmap(file)", EINVAL) + " in <"), 0U) << message;
}

TEST(StarFile, NamesTheFileItCannotOpen) {
    const ScratchFolder folder;
    const std::string path = folder / "missing.stars";
    const std::string message = thrown_message([&] { op_stars_file_input(path.c_str()); });
    EXPECT_EQ(message.find(with_error("opening file \"" + path + "\"", ENOENT) + " in <"), 0U)
        << message;
}

TEST(StarFile, KeepsItsMappingAndNothingElse) {
    const ScratchFolder folder;
    const int before = open_descriptors();
    const auto input =
        open_bytes(folder, support::catalogue_bytes(support::kVersion1, {CatalogueStar()}));
    EXPECT_EQ(open_descriptors(), before);
    std::filesystem::remove(folder / "sky.stars");
    EXPECT_TRUE(input->is_valid());
    EXPECT_EQ(input->next()->r, 255);
}

TEST(StarInput, KnowsTwoVersions) {
    support::MemoryStars one(support::kVersion1, {});
    EXPECT_TRUE(one.is_valid());
    EXPECT_FALSE(one.depth_valid());

    support::MemoryStars two(support::kVersion2, {});
    EXPECT_FALSE(two.depth_valid()) << "before the header is read";
    EXPECT_TRUE(two.is_valid());
    EXPECT_TRUE(two.depth_valid());
}

TEST(StarInput, RefusesAnyOtherHeader) {
    const std::string with_nul("LUMIVAR\0", 8);
    for (const std::string& magic :
         {std::string("LUMIVAR0"), std::string("LUMIVAR3"), std::string("lumivar1"),
          std::string("LUMIVAR "), std::string("KUMIVAR1"), std::string("LUMIWAR2"), with_nul}) {
        support::MemoryStars input(magic, {});
        EXPECT_FALSE(input.is_valid()) << magic;
        EXPECT_FALSE(input.depth_valid()) << magic;
        EXPECT_EQ(input.reads(), 1) << "the header is consumed in any case";
    }
}

TEST(StarInput, NeverReadsTheReservedHeaderBytes) {
    std::string bytes = support::catalogue_bytes(support::kVersion1, {});
    std::fill(bytes.begin() + 8, bytes.end(), '\xff');
    EXPECT_TRUE(support::MemoryStars(bytes).is_valid());
}

TEST(StarInput, TakesTheNextRecordForAHeaderUntilReset) {
    support::MemoryStars input(support::kVersion2, {CatalogueStar()});
    EXPECT_TRUE(input.is_valid());
    EXPECT_FALSE(input.is_valid());
    EXPECT_TRUE(input.depth_valid()) << "once seen, it stays";
    input.reset();
    EXPECT_TRUE(input.is_valid());
    EXPECT_TRUE(input.depth_valid());
}
