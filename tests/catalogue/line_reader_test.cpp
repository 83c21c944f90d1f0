// Lines of a text: their ends, their lengths, and what comes next.
#include "tables/line_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/compressed.h"
#include "failure_of.h"
#include "support/scratch.h"

namespace {

using lumivar::ByteStream;
using lumivar::LineReader;
using TextLines = std::vector<std::string>;

class LinesOfText : public testing::Test {
protected:
    TextLines all(const std::string& bytes) {
        write_file(path, bytes);
        return all_of_file();
    }
    TextLines all_of_file() {
        ByteStream stream(path);
        LineReader lines(stream);
        TextLines read;
        for (std::string_view line;;) {
            switch (lines.next(line)) {
                case LineReader::Step::End:
                    EXPECT_EQ(lines.number(), read.size());
                    return read;
                case LineReader::Step::TooLong:
                    read.emplace_back("TOO LONG");
                    break;
                case LineReader::Step::Line:
                    read.emplace_back(line);
                    break;
            }
        }
    }

    ScratchFolder folder;
    const std::string path = folder / "t.txt";
};

TEST_F(LinesOfText, EndWithALineFeedACarriageReturnBeforeItOrTheText) {
    EXPECT_EQ(all(""), TextLines{});
    EXPECT_EQ(all("\n"), TextLines{""});
    EXPECT_EQ(all("a\r\nb\n\r\nc"), (TextLines{"a", "b", "", "c"}));
    EXPECT_EQ(all("a\rb\n"), (TextLines{"a\rb"})) << "a carriage return within is text";
    EXPECT_EQ(all("\xEF\xBB\xBFx\n\xEF\xBB\xBFy"), (TextLines{"x", "\xEF\xBB\xBFy"}));
}

TEST_F(LinesOfText, OfUpToAMegabyteAreReadAndLongerOnesPassedOver) {
    const std::string longest(LineReader::kLongestLine, '7');
    const std::string ten_megabytes(10U << 20, '8');
    const TextLines read =
        all(longest + "\n" + longest + "9\nshort\n" + ten_megabytes + "\nnext\n" + ten_megabytes);
    ASSERT_EQ(read.size(), 6U);
    EXPECT_TRUE(read[0] == longest);
    EXPECT_EQ(TextLines(read.begin() + 1, read.end()),
              (TextLines{"TOO LONG", "short", "TOO LONG", "next", "TOO LONG"}));
}

TEST_F(LinesOfText, OfAMegabyteAreReadWhereverABlockOfTheFileEnds) {
    constexpr std::size_t kBlock = std::size_t{1} << 17;
    static_assert(LineReader::kLongestLine % kBlock == 0);
    // The carriage return is the last byte of a block.
    const std::string before(kBlock - 2, '1');
    const std::string longest(LineReader::kLongestLine, '7');
    const TextLines read = all(before + "\n" + longest + "\r\nnext");
    EXPECT_TRUE(read == (TextLines{before, longest, "next"}));
}

TEST_F(LinesOfText, CanBeSeenAhead) {
    write_file(path, "# one\n# two\na\nb\nc\nd\n");
    ByteStream stream(path);
    LineReader lines(stream);
    EXPECT_EQ(lines.look_ahead(2), "# one\n# two\na\nb\n");
    std::string_view line;
    lines.next(line);
    EXPECT_EQ(line, "# one");
    EXPECT_EQ(lines.look_ahead(1), "# two\na\n");
    EXPECT_EQ(lines.look_ahead(1000), "# two\na\nb\nc\nd\n");
    EXPECT_EQ(lines.number(), 1U);
    // The rest as bytes.
    std::string rest(100, '\0');
    rest.resize(lines.read(rest.data(), rest.size()));
    EXPECT_EQ(rest, "# two\na\nb\nc\nd\n");
}

TEST_F(LinesOfText, OfAPipeComeHoweverSmallThePieces) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([this] {
        const int end = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        for (const std::string piece : {"x\n0.", "5", "\r\n", "1\n\n2"}) {
            EXPECT_EQ(write(end, piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        close(end);
    });
    const TextLines read = all_of_file();
    writer.join();
    EXPECT_EQ(read, (TextLines{"x", "0.5", "1", "", "2"}));
}

TEST_F(LinesOfText, OfDamagedDataAreNamed) {
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += std::to_string(i * 7919) + "\n";
    }
    const std::string packed = gzipped(text);
    write_file(path, packed.substr(0, packed.size() / 2));
    ByteStream stream(path);
    LineReader lines(stream);
    std::string_view line;
    unsigned long whole = 0;
    const std::string failure = failure_of([&] {
        while (lines.next(line) != LineReader::Step::End) {
            EXPECT_EQ(line, std::to_string(whole * 7919));
            ++whole;
        }
    });
    EXPECT_GT(whole, 1000U);
    EXPECT_EQ(failure, path + ":" + std::to_string(whole + 1) +
                           ": the gzip data end too soon: the file is not whole");
}

}  // namespace
