#include <base/io.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "memory_streams.h"
#include "support/captured_output.h"
#include "support/expect_throw.h"

namespace {

const char* const kSource = "base/io.cpp";

using Counts = std::vector<int>;

int write_text(Output& output, const std::string& text) {
    return output.write(text.data(), static_cast<int>(text.size()));
}

TEST(BufferedOutput, GathersSmallWrites) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    EXPECT_EQ(output.curpos(), 0);
    EXPECT_EQ(write_text(output, "ab"), 2);
    EXPECT_EQ(write_text(output, "cd"), 2);  // a full buffer waits
    EXPECT_EQ(output.curpos(), 4);
    EXPECT_EQ(sink.asked, Counts{});
    EXPECT_EQ(write_text(output, "e"), 1);
    EXPECT_EQ(sink.written, "abcd");
    output.flush();
    EXPECT_EQ(sink.written, "abcde");
    EXPECT_EQ(sink.asked, (Counts{4, 1}));
    output.flush();
    EXPECT_EQ(sink.asked, (Counts{4, 1}));
    EXPECT_EQ(output.curpos(), 5);
}

TEST(BufferedOutput, FlushesFirstWhenTheNextWriteDoesNotFitBehind) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "abc");
    EXPECT_EQ(write_text(output, "de"), 2);
    EXPECT_EQ(sink.asked, Counts{3});
    output.flush();
    EXPECT_EQ(sink.written, "abcde");
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
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    sink.answers = {3};
    EXPECT_EQ(write_text(output, "abcde"), 3);
    EXPECT_EQ(output.curpos(), 3);
    EXPECT_EQ(sink.written, "abc");
}

TEST(BufferedOutput, WithoutABufferPassesWritesOn) {
    MemoryOutput sink;
    BufferedOutput output(sink, 0);
    EXPECT_EQ(write_text(output, "a"), 1);
    sink.answers = {2};
    EXPECT_EQ(write_text(output, "bcd"), 2);
    EXPECT_EQ(output.curpos(), 3);
    output.flush();
    EXPECT_EQ(sink.asked, (Counts{1, 3}));
    EXPECT_EQ(sink.written, "abc");
}

TEST(BufferedOutput, WriteOfNothingOrLessIsNothing) {
    for (const int size : {0, 4}) {
        MemoryOutput sink;
        BufferedOutput output(sink, size);
        EXPECT_EQ(output.write("x", 0), 0);
        EXPECT_EQ(output.write("x", -5), 0);
        EXPECT_EQ(output.curpos(), 0);
        output.flush();
        EXPECT_EQ(sink.asked, Counts{});
    }
}

TEST(BufferedOutput, AssertsThatTheBufferSizeIsNotNegative) {
    MemoryOutput sink;
    EXPECT_EQ(failed_assertion([&] { const BufferedOutput output(sink, -1); }), "size >= 0");
}

TEST(Flush, TriesAgainUntilAllIsTaken) {
    MemoryOutput sink;
    BufferedOutput output(sink, 8);
    write_text(output, "abcdef");
    sink.answers = {2, 0, 0, 1};
    output.flush();
    EXPECT_EQ(sink.asked, (Counts{6, 4, 4, 4, 3}));
    EXPECT_EQ(sink.written, "abcdef");
}

TEST(Flush, NegativeCountIsAWriteErrorAndTheRestGoesOnWaiting) {
    MemoryOutput sink;
    BufferedOutput output(sink, 8);
    write_text(output, "abcdef");
    sink.answers = {2, -1};
    expect_message(thrown_message([&] { output.flush(); }), "write error", "BufferedOutput::flush",
                   kSource);
    EXPECT_EQ(output.curpos(), 6);
    output.flush();
    EXPECT_EQ(sink.written, "abcdef");
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

TEST(OutputSeek, ToThePresentPositionDoesNothing) {
    MemoryOutput sink;
    BufferedOutput output(sink, 4);
    write_text(output, "ab");
    EXPECT_EQ(output.seek_from_start(2), 2);
    EXPECT_EQ(output.seek_from_curpos(0), 2);
    EXPECT_TRUE(sink.seeks.empty());
    EXPECT_EQ(sink.written, "");
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

TEST(OutputDestructor, Flushes) {
    MemoryOutput sink;
    {
        BufferedOutput output(sink, 4);
        write_text(output, "ab");
    }
    EXPECT_EQ(sink.written, "ab");
}

TEST(OutputDestructor, LetsAFailureEscape) {
    MemoryOutput sink;
    sink.answers = {1, -1};
    expect_message(thrown_message([&] {
                       BufferedOutput output(sink, 4);
                       write_text(output, "ab");
                   }),
                   "write error", "BufferedOutput::flush", kSource);
    EXPECT_EQ(sink.written, "a");
    EXPECT_EQ(sink.asked, (Counts{2, 1}));
}

TEST(OutputDestructor, PrintsAFailureWhileAnotherExceptionGoesOn) {
    MemoryOutput sink;
    sink.answers = {-1};
    const std::string printed = output_of(stderr, [&] {
        EXPECT_THROW(
            {
                BufferedOutput output(sink, 4);
                write_text(output, "ab");
                throw 5;
            },
            int);
    });
    EXPECT_EQ(printed.find("Error: write error in <"), 0U) << printed;
}

}  // namespace
