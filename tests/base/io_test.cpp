// Buffered streams over a source and a sink in memory.
#include <base/io.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/expect_throw.h"
#include "support/stream_text.h"
#include "support/unwinding.h"

namespace {

/// Gives the bytes of a text, at most `most` at a time.
class MemoryInput : public Input {
public:
    explicit MemoryInput(std::string bytes) : bytes_(std::move(bytes)) {}

    s64 curpos() const override { return position_; }
    int read(char* dest, int count) override {
        asked.push_back(count);
        if (fail_next) {
            fail_next = false;
            if (fail_by_throwing) {
                // What a failing source leaves in the block is nobody's business.
                std::fill_n(dest, count, '#');
                throw 5;
            }
            return -3;
        }
        const s64 rest = static_cast<s64>(bytes_.size()) - position_;
        const int got = static_cast<int>(std::clamp<s64>(rest, 0, std::min(count, most)));
        std::copy_n(bytes_.data() + position_, got, dest);
        position_ += got;
        return got;
    }
    s64 seek_from_start(s64 position) override {
        seeks.push_back(position);
        if (fail_next) {
            fail_next = false;
            throw 5;
        }
        return position_ = position;
    }
    s64 seek_from_curpos(s64 offset) override { return seek_from_start(position_ + offset); }

    int most = 1 << 30;
    bool fail_next = false;
    bool fail_by_throwing = false;
    std::vector<int> asked;
    std::vector<s64> seeks;

private:
    std::string bytes_;
    s64 position_ = 0;
};

/// Keeps what it is given. `answers` are returned in their turn in place of taking all: so many
/// bytes are taken, none when negative.
class MemoryOutput : public Output {
public:
    s64 curpos() const override { return position_; }
    int write(const char* bytes, int count) override {
        asked.push_back(count);
        if (fail_next) {
            fail_next = false;
            throw 5;
        }
        int taken = count;
        if (!answers.empty()) {
            taken = answers.front();
            answers.erase(answers.begin());
        }
        if (taken > 0) {
            written.append(bytes, static_cast<std::size_t>(taken));
            position_ += taken;
        }
        return taken;
    }
    s64 seek_from_start(s64 position) override {
        seeks.push_back(position);
        written_at_seek = written;
        if (fail_next_seek) {
            fail_next_seek = false;
            throw 5;
        }
        return position_ = position;
    }
    s64 seek_from_curpos(s64 offset) override { return seek_from_start(position_ + offset); }

    bool fail_next = false;
    bool fail_next_seek = false;
    std::vector<int> answers;
    std::vector<int> asked;
    std::vector<s64> seeks;
    std::string written;
    std::string written_at_seek;

private:
    s64 position_ = 0;
};

const char* const kSource = "base/io.cpp";

using Counts = std::vector<int>;
using Lines = std::vector<std::string>;

Lines lines_of(const std::string& bytes, int buffer_size) {
    MemoryInput source(bytes);
    BufferedInput input(source, buffer_size);
    Lines lines;
    for (;;) {
        lines.emplace_back(input.readline().c_str());
        if (lines.back().empty()) {
            return lines;
        }
    }
}

TEST(BufferedInput, ReadOfNothingOrLessIsNothing) {
    for (const int size : {0, 4}) {
        MemoryInput source("abc");
        BufferedInput input(source, size);
        char byte = 'x';
        EXPECT_EQ(input.read(&byte, 0), 0);
        EXPECT_EQ(input.read(&byte, -5), 0);
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(source.asked, Counts{});
        EXPECT_EQ(input.curpos(), 0);
        EXPECT_EQ(failed_assertion([&] { const BufferedInput none(source, -1); }), "size >= 0");
    }
}

TEST(BufferedInput, RefillsInWholeBuffersAndServesFromThem) {
    MemoryInput source("abcdefghij");
    BufferedInput input(source, 4);
    EXPECT_EQ(read_text(input, 1), "a");
    EXPECT_EQ(read_text(input, 2), "bc");
    EXPECT_EQ(source.asked, Counts{4});
    // One byte from the buffer, two of the next one.
    EXPECT_EQ(read_text(input, 3), "def");
    EXPECT_EQ(source.asked, (Counts{4, 4}));
    EXPECT_EQ(input.curpos(), 6);
    EXPECT_EQ(read_text(input, 2), "gh");
    EXPECT_EQ(source.asked, (Counts{4, 4}));
}

TEST(BufferedInput, ReadsLargerThanTheBufferBypassItOnceItIsUsedUp) {
    MemoryInput source("abcdefghijklmnop");
    BufferedInput input(source, 4);
    EXPECT_EQ(read_text(input, 1), "a");
    EXPECT_EQ(read_text(input, 9), "bcdefghij");
    // 3 of the 9 bytes were buffered, 6 came straight.
    EXPECT_EQ(source.asked, (Counts{4, 6}));
    // As large as the buffer is large enough.
    EXPECT_EQ(read_text(input, 4), "klmn");
    EXPECT_EQ(source.asked, (Counts{4, 6, 4}));
    EXPECT_EQ(read_text(input, 1), "o");
    EXPECT_EQ(input.curpos(), 15);
}

TEST(BufferedInput, WithoutABufferPassesRequestsOn) {
    MemoryInput source("abcdef");
    source.most = 2;
    BufferedInput input(source, 0);
    EXPECT_EQ(read_text(input, 5), "ab");
    EXPECT_EQ(read_text(input, 1), "c");
    EXPECT_EQ(source.asked, (Counts{5, 1}));
    EXPECT_EQ(input.curpos(), 3);
}

TEST(BufferedInput, TakesAShortCountForTheEndUntilTheNextSeek) {
    MemoryInput source("abcdefgh");
    source.most = 3;
    for (const int count : {2, 6}) {  // by a refill, and straight
        BufferedInput input(source, 4);
        source.seek_from_start(0);
        source.asked.clear();
        const std::string first = read_text(input, count);
        EXPECT_EQ(first + read_text(input, 8), "abc");
        EXPECT_EQ(read_text(input, 1), "");
        EXPECT_EQ(source.asked.size(), 1U);
        EXPECT_EQ(input.seek_from_start(4), 4);
        EXPECT_EQ(read_text(input, 2), "ef");
    }
}

TEST(Unread, OneByteComesBeforeTheBufferedOnes) {
    MemoryInput source("abcdef");
    BufferedInput input(source, 4);
    EXPECT_EQ(read_text(input, 2), "ab");
    input.unread('X');
    EXPECT_EQ(input.curpos(), 1);
    EXPECT_EQ(read_text(input, 1), "X");
    EXPECT_EQ(input.curpos(), 2);
    input.unread('Y');
    expect_message(thrown_message([&] { input.unread('Z'); }), "can't unread more than 1 byte",
                   "BufferedInput::unread", kSource);
    EXPECT_EQ(input.curpos(), 1);
    EXPECT_EQ(read_text(input, 9), "Ycdef");
    EXPECT_EQ(read_text(input, 9), "") << "the end";
    EXPECT_EQ(input.curpos(), 6);
    input.unread('f');
    EXPECT_EQ(read_text(input, 9), "f");
}

TEST(Unread, KeepsEveryByteButOne) {
    for (int code = 0; code < 256; ++code) {
        MemoryInput source("z");
        BufferedInput input(source, 4);
        const char byte = static_cast<char>(code);
        input.unread(byte);
        EXPECT_EQ(input.curpos(), -1);
        // 0xFF is the mark for nothing: lost, a known limitation that is kept.
        const std::string expected = code == 0xFF ? "z" : std::string(1, byte) + "z";
        EXPECT_EQ(read_text(input, 2), expected) << code;
    }
}

TEST(Unread, ByteFFLeavesRoomForAnotherAndThePositionOneBehind) {
    MemoryInput source("ab");
    BufferedInput input(source, 4);
    read_text(input, 1);
    input.unread('\xFF');
    input.unread('X');
    EXPECT_EQ(input.curpos(), -1);
    EXPECT_EQ(read_text(input, 2), "Xb");
    EXPECT_EQ(input.curpos(), 1);
}

TEST(Unread, WithoutABufferTheByteIsNeverReadAgain) {
    MemoryInput source("abc");
    BufferedInput input(source, 0);
    input.unread('X');
    EXPECT_EQ(read_text(input, 2), "ab");
    EXPECT_EQ(thrown_message([&] { input.unread('Y'); }).find("can't unread more than 1 byte"), 0U);
    // Until a seek forgets it.
    input.seek_from_start(0);
    input.unread('Y');
}

TEST(Readline, KnowsFourLineEndingsWithAnyBuffer) {
    const struct {
        std::string bytes;
        Lines lines;
    } table[] = {
        {"a\r\nb", {"a\r\n", "b", ""}},
        {"a\n\rb", {"a\n\r", "b", ""}},
        {"a\n\nb", {"a\n", "\n", "b", ""}},
        {"a\r\rb\r", {"a\r", "\r", "b\r", ""}},
        {"a\nb\rc\n", {"a\n", "b\r", "c\n", ""}},
        {"\r\n\r\n", {"\r\n", "\r\n", ""}},
        {"\n\r\r\n", {"\n\r", "\r\n", ""}},
        {"", {""}},
        {"one\r\ntwo two two\n\rfour", {"one\r\n", "two two two\n\r", "four", ""}},
        // Bytes of value 0 are lost.
        {std::string("a\0b\0\nc", 6), {"ab\n", "c", ""}},
    };
    for (const auto& row : table) {
        for (const int size : {1, 2, 3, 4, 5, 7, 100}) {
            EXPECT_EQ(lines_of(row.bytes, size), row.lines) << row.bytes;
        }
    }
}

TEST(Readline, LosesByteFFAfterALineEnding) {
    // It is pushed back, and pushing it back loses it: kept as it is.
    MemoryInput source("a\n\xFF\xFFz\nb");
    BufferedInput input(source, 4);
    EXPECT_STREQ(input.readline().c_str(), "a\n");
    EXPECT_EQ(input.curpos(), 2);
    EXPECT_STREQ(input.readline().c_str(), "\xFFz\n");
    EXPECT_EQ(input.curpos(), 5);  // one behind the source from now on
    EXPECT_STREQ(input.readline().c_str(), "b");
}

TEST(Readline, EndOfTheInputIsTheNullString) {
    // A line that was nothing but lost bytes is empty too, but not the same by `==`.
    MemoryInput source(std::string(1, '\0'));
    BufferedInput input(source, 4);
    EXPECT_TRUE(input.readline() != String());
    EXPECT_TRUE(input.readline() == String());
}

TEST(Readline, WithoutABufferLosesBytesAndThenThrows) {
    MemoryInput source("a\nbc\nde\n");
    BufferedInput input(source, 0);
    EXPECT_STREQ(input.readline().c_str(), "a\n");
    expect_message(thrown_message([&] { input.readline(); }), "can't unread more than 1 byte",
                   "BufferedInput::unread", kSource);
}

TEST(Readline, NegativeCountOfTheSourceIsAReadError) {
    // With 3 bytes of buffer, of which one is read, only the byte after the ending is wanted.
    for (const int size : {0, 4, 3}) {
        MemoryInput source("ab\nc");
        BufferedInput input(source, size);
        if (size == 3) {
            EXPECT_EQ(read_text(input, 1), "a");
        }
        source.fail_next = true;
        expect_message(thrown_message([&] { input.readline(); }), "read error",
                       "BufferedInput::readline", kSource);
    }
}

TEST(BufferedInput, FailedReadTakesNothing) {
    for (const bool throws : {false, true}) {
        for (const int wanted : {6, 9}) {  // by a refill, and straight
            MemoryInput source("abcdefghijklmnop");
            source.fail_by_throwing = throws;
            BufferedInput input(source, 4);
            read_text(input, 2);
            input.unread('B');
            source.fail_next = true;
            char block[9];
            if (throws) {
                EXPECT_THROW(input.read(block, wanted), int);
            } else {
                EXPECT_EQ(input.read(block, wanted), -3);
            }
            EXPECT_EQ(input.curpos(), 1);
            EXPECT_EQ(read_text(input, wanted), std::string("Bcdefghij").substr(0, wanted));
            EXPECT_EQ(input.curpos(), 1 + wanted);
        }
    }
}

TEST(InputSeek, ToThePresentPositionOrThatFailsKeepsWhatIsHeld) {
    MemoryInput source("abcdefgh");
    BufferedInput input(source, 4);
    read_text(input, 2);
    input.unread('X');
    EXPECT_EQ(input.seek_from_start(1), 1);
    EXPECT_EQ(input.seek_from_curpos(0), 1);
    EXPECT_TRUE(source.seeks.empty());
    source.fail_next = true;
    EXPECT_THROW(input.seek_from_start(7), int);
    EXPECT_EQ(input.curpos(), 1);
    EXPECT_EQ(read_text(input, 3), "Xcd");
    EXPECT_EQ(source.asked, Counts{4});
    EXPECT_EQ(read_text(input, 9), "efgh");
}

TEST(InputSeek, ElsewhereForgetsAllAndAsksTheSourceForThatPosition) {
    MemoryInput source("abcdefgh");
    BufferedInput input(source, 4);
    read_text(input, 2);  // the source is at 4
    input.unread('X');
    EXPECT_EQ(input.seek_from_start(3), 3);
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(read_text(input, 2), "de");
    EXPECT_EQ(read_text(input, 9), "fgh");
    // The end is forgotten too.
    EXPECT_EQ(input.seek_from_start(6), 6);
    EXPECT_EQ(read_text(input, 1), "g");
    // From the stream's own position, 7, not the source's.
    EXPECT_EQ(input.seek_from_curpos(-5), 2);
    EXPECT_EQ(source.seeks, (std::vector<s64>{3, 6, 2}));
    EXPECT_EQ(read_text(input, 1), "c");
}

TEST(BufferedOutput, GathersSmallWritesAndFlushesWhenTheNextDoesNotFit) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    EXPECT_EQ(output.curpos(), 0);
    EXPECT_EQ(write_text(output, "ab"), 2);
    EXPECT_EQ(write_text(output, "cd"), 2);  // a full buffer waits
    EXPECT_EQ(output.curpos(), 4);
    EXPECT_EQ(sink.asked, Counts{});
    EXPECT_EQ(write_text(output, "efg"), 3);
    EXPECT_EQ(sink.written, "abcd");
    EXPECT_EQ(write_text(output, "hi"), 2);
    EXPECT_EQ(sink.written, "abcdefg");
    output.flush();
    EXPECT_EQ(sink.written, "abcdefghi");
    output.flush();
    EXPECT_EQ(sink.asked, (Counts{4, 3, 2}));
    EXPECT_EQ(output.curpos(), 9);
}

TEST(BufferedOutput, WritesLargerThanTheBufferGoStraightAfterTheWaitingBytes) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "ab");
    EXPECT_EQ(write_text(output, "cdefg"), 5);
    EXPECT_EQ(sink.asked, (Counts{2, 5}));
    EXPECT_EQ(sink.written, "abcdefg");
    EXPECT_EQ(output.curpos(), 7);
    // As large as the buffer is buffered.
    EXPECT_EQ(write_text(output, "hijk"), 4);
    EXPECT_EQ(sink.written, "abcdefg");
}

TEST(BufferedOutput, StraightWritesReturnTheSinksCount) {
    for (const int size : {0, 4}) {
        MemoryOutput sink;
        BufferedOutput output(sink, size);
        EXPECT_EQ(write_text(output, "a"), 1);
        EXPECT_EQ(sink.written, size == 0 ? "a" : "");
        output.flush();
        sink.answers = {3};
        EXPECT_EQ(write_text(output, "bcdef"), 3);
        EXPECT_EQ(output.curpos(), 4);
        output.flush();
        EXPECT_EQ(sink.asked, (Counts{1, 5}));
        EXPECT_EQ(sink.written, "abcd");
    }
}

TEST(BufferedOutput, WriteOfNothingOrLessIsNothing) {
    MemoryOutput sink;
    for (const int size : {0, 4}) {
        BufferedOutput output(sink, size);
        EXPECT_EQ(output.write("x", 0), 0);
        EXPECT_EQ(output.write("x", -5), 0);
        EXPECT_EQ(output.curpos(), 0);
        output.flush();
        EXPECT_EQ(sink.asked, Counts{});
    }
    EXPECT_EQ(failed_assertion([&] { const BufferedOutput output(sink, -1); }), "size >= 0");
}

TEST(Flush, TriesAgainUntilAllIsTakenOrACountIsNegative) {
    MemoryOutput sink;
    BufferedOutput output(sink, 8);
    write_text(output, "abcdef");
    sink.answers = {2, 0, 0, 1, -1};
    expect_message(thrown_message([&] { output.flush(); }), "write error", "BufferedOutput::flush",
                   kSource);
    EXPECT_EQ(sink.asked, (Counts{6, 4, 4, 4, 3}));
    EXPECT_EQ(output.curpos(), 6);
    output.flush();
    EXPECT_EQ(sink.written, "abcdef") << "the rest has gone on waiting";
}

TEST(Flush, FailingForTheSakeOfAWriteTakesNoneOfItsBytes) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "abc");
    for (const std::string next : {"de", "defgh"}) {
        sink.fail_next = true;
        EXPECT_THROW(write_text(output, next), int);
        EXPECT_EQ(output.curpos(), 3);
    }
    write_text(output, "de");
    output.flush();
    EXPECT_EQ(sink.written, "abcde");
}

TEST(OutputSeek, ToThePresentPositionDoesNothingAndThatFailsLeavesIt) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "ab");
    EXPECT_EQ(output.seek_from_start(2), 2);
    EXPECT_EQ(output.seek_from_curpos(0), 2);
    EXPECT_TRUE(sink.seeks.empty());
    EXPECT_EQ(sink.written, "");
    sink.fail_next_seek = true;
    EXPECT_THROW(output.seek_from_start(7), int);
    EXPECT_EQ(output.curpos(), 2);
    write_text(output, "c");
    output.flush();
    EXPECT_EQ(sink.written, "abc");
    EXPECT_EQ(output.curpos(), 3);
}

TEST(OutputSeek, FlushesThenMovesTheSink) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "ab");
    EXPECT_EQ(output.seek_from_start(7), 7);
    EXPECT_EQ(sink.written_at_seek, "ab");
    write_text(output, "c");
    // From the stream's own position, 8, not the sink's.
    EXPECT_EQ(output.seek_from_curpos(-3), 5);
    EXPECT_EQ(sink.written_at_seek, "abc");
    EXPECT_EQ(sink.seeks, (std::vector<s64>{7, 5}));
    EXPECT_EQ(output.curpos(), 5);
}

TEST(OutputDestructor, FlushesAndReportsAFailure) {
    MemoryOutput sink;
    {
        BufferedOutput output(sink, 4);
        write_text(output, "ab");
    }
    EXPECT_EQ(sink.written, "ab");
    expect_failing_destructor("write error", "BufferedOutput::flush", kSource, [&](auto end) {
        sink.written.clear();
        sink.asked.clear();
        sink.answers = {1, -1};
        BufferedOutput output(sink, 4);
        write_text(output, "ab");
        end();
    });
    EXPECT_EQ(sink.written, "a");
    EXPECT_EQ(sink.asked, (Counts{2, 1}));
}

}  // namespace
