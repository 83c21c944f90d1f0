// Bytes of files and pipes, and what compression hides.
#include "tables/byte_stream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "catalogue/compressed.h"
#include "failure_of.h"
#include "support/random_numbers.h"
#include "support/scratch.h"

namespace {

using lumivar::ByteStream;
using lumivar::DamagedData;

class Bytes : public testing::Test {
protected:
    /// All bytes of a file that holds `bytes`, read `piece` at a time.
    std::string through(const std::string& bytes, std::size_t piece = 1000) {
        write_file(path, bytes);
        ByteStream stream(path);
        compression = stream.compression();
        std::string read;
        std::string block(piece, '\0');
        while (const std::size_t count = stream.read(block.data(), block.size())) {
            EXPECT_LE(count, piece);
            read += block.substr(0, count);
        }
        EXPECT_EQ(stream.bytes_read(), bytes.size());
        EXPECT_EQ(stream.bytes_in_all(), bytes.size());
        return read;
    }
    std::string damage(const std::string& bytes) {
        try {
            through(bytes);
        } catch (const DamagedData& damaged) {
            return damaged.what();
        }
        return "none";
    }

    ScratchFolder folder;
    const std::string path = folder / "bytes";
    std::string compression;
};

/// Text that takes several blocks in every form: it hardly shrinks.
std::string long_text() {
    std::mt19937_64 random(7);
    std::string text;
    while (text.size() < 700000) {
        text += std::to_string(random());
        text += '\n';
    }
    return text;
}

TEST_F(Bytes, ComeAsTheyAreOrUnpacked) {
    const std::string text = long_text();
    for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{777}}) {
        EXPECT_TRUE(through(text, piece) == text);
        EXPECT_EQ(compression, "");
        EXPECT_TRUE(through(gzipped(text), piece) == text);
        EXPECT_EQ(compression, "gzip");
        EXPECT_TRUE(through(zstandard(text), piece) == text);
        EXPECT_EQ(compression, "zstd");
    }
    EXPECT_EQ(through(""), "");
    EXPECT_EQ(through("\x1F"), "\x1F") << "half a magic number is text";
    EXPECT_EQ(through(gzipped("")), "");
    EXPECT_EQ(through(zstandard("")), "");
}

TEST_F(Bytes, OfSeveralMembersFollowEachOther) {
    EXPECT_EQ(through(gzipped("one\n") + gzipped("two\n") + gzipped("") + gzipped("three")),
              "one\ntwo\nthree");
    EXPECT_EQ(through(gzipped("one") + std::string(1000, '\0')), "one") << "padded with zeros";
    EXPECT_EQ(through(gzipped("one") + std::string(3, '\0') + gzipped("two")), "onetwo");
    EXPECT_EQ(through(zstandard("one\n") + zstandard("two")), "one\ntwo");
}

TEST_F(Bytes, ThatAreCutShortAreDamage) {
    const std::string text = long_text();
    for (const auto& [packed, reason] :
         {std::pair(gzipped(text), "the gzip data end too soon: the file is not whole"),
          std::pair(zstandard(text), "the zstd data end too soon: the file is not whole")}) {
        for (const std::size_t size : {packed.size() - 1, packed.size() / 2, std::size_t{30}}) {
            EXPECT_EQ(damage(packed.substr(0, size)), reason) << size;
        }
    }
    EXPECT_EQ(damage(gzipped("one") + "rest"), "something else follows the gzip data");
}

TEST_F(Bytes, ThatWereChangedAreDamage) {
    const std::string text = long_text();
    std::string packed = gzipped(text);
    packed[packed.size() - 6] ^= 1;  // in the checksum
    EXPECT_EQ(damage(packed), "the gzip data are damaged: incorrect data check");
    packed = zstandard(text);
    std::fill_n(packed.begin() + 20, 100, '\xFF');
    EXPECT_EQ(damage(packed).rfind("the zstd data are damaged: ", 0), 0U) << damage(packed);
}

TEST_F(Bytes, SayWhyTheyCannotBeRead) {
    EXPECT_EQ(failure_of([&] { const ByteStream none(folder / "none"); }),
              "cannot read " + (folder / "none") + ": No such file or directory");
    EXPECT_EQ(failure_of([&] { const ByteStream a_folder(folder.path()); }),
              "cannot read " + folder.path() + ": Is a directory");
}

}  // namespace
