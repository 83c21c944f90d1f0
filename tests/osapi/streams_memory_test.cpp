// Every allocation of a stream's life fails in its turn.
#include <gtest/gtest.h>
#include <osapi/streams.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "support/failing_allocator.h"
#include "support/faults.h"
#include "support/scratch.h"

namespace {

using OSAPI::Syscalls;

constexpr unsigned int kMostAllocations = 100;

/// Runs `attempt` with only the first 0, 1, 2 ... allocations granted, until none is refused.
/// Returns how many were granted then.
template <class Attempt>
unsigned int fail_every_allocation(Attempt attempt) {
    for (unsigned int granted = 0; granted < kMostAllocations; ++granted) {
        const int before = open_descriptors();
        bool refused = false;
        {
            FailingAllocator allocator;
            allocator.refuse_after(granted);
            attempt();
            allocator.grant_all();
            refused = allocator.requests().size() > granted;
        }
        EXPECT_EQ(open_descriptors(), before) << granted;
        if (!refused) {
            return granted;
        }
    }
    ADD_FAILURE() << "there is no end to it";
    return 0;
}

/// The stream's buffer is its one allocation: without it there is no stream.
template <class Life>
void expect_one_allocation(Life life) {
    int made = 0;
    int refused = 0;
    EXPECT_EQ(fail_every_allocation([&] {
                  try {
                      life();
                      ++made;
                  } catch (const std::bad_alloc&) {
                      ++refused;
                  }
              }),
              1U);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(refused, 1);
}

class StreamMemory : public testing::Test {
protected:
    ScratchFolder folder_;
    const std::string path_ = folder_ / "a";
};

TEST_F(StreamMemory, ReadingStreamWithoutMemoryIsNotMade) {
    write_file(path_, "abcdef");
    char read[3] = {};
    expect_one_allocation([&] {
        OSAPI::BufferedFileInput stream(path_.c_str(), OSAPI::kRead);
        stream.read(read, 1);
        stream.unread('x');
        stream.seek_from_start(2);
        stream.seek_from_curpos(1);
        stream.read(read, 3);
    });
    EXPECT_EQ(std::string(read, 3), "def");
}

TEST_F(StreamMemory, LineWithoutMemoryIsReported) {
    const std::string line(5000, 'x');
    write_file(path_, line + "\n");
    OSAPI::BufferedFileInput stream(path_.c_str(), OSAPI::kRead);
    String got;
    int refused = 0;
    const unsigned int needed = fail_every_allocation([&] {
        try {
            stream.seek_from_start(0);
            got = stream.readline();
        } catch (const StrXception&) {
            ++refused;
        }
    });
    EXPECT_EQ(got.c_str(), line + "\n");
    EXPECT_EQ(refused, static_cast<int>(needed));
    EXPECT_GE(needed, 2U);
}

TEST_F(StreamMemory, WritingStreamWithoutMemoryIsNotMade) {
    expect_one_allocation([&] {
        OSAPI::BufferedFileOutput stream(path_.c_str(), OSAPI::kWrite);
        stream.write("abc", 3);
        stream.seek_from_start(2);
        stream.write("xyz", 3);
    });
    EXPECT_EQ(read_file(path_), "abxyz");
}

TEST_F(StreamMemory, FailureWithoutMemoryForItsTextIsStillAnExceptionOfItsKind) {
    write_file(path_, "");
    int whole = 0;
    int without_text = 0;
    const unsigned int ways = fail_every_allocation([&] {
        try {
            OSAPI::DiskFile file(path_.c_str(), OSAPI::kRead);  // not to be written to
            OSAPI::FileOutput sink(file);
            sink.write("abc", 3);
        } catch (const StrXception& failure) {
            const char* text = failure.message().c_str();
            if (std::strncmp(text, "write: ", 7) == 0) {
                ++whole;
            } else if (text[0] == '\0' || std::strncmp(text, "out of memory in <", 18) == 0) {
                ++without_text;
            }
        }
    });
    EXPECT_EQ(whole, 1);
    EXPECT_EQ(without_text, static_cast<int>(ways));
    EXPECT_GE(ways, 2U);  // the message, and the message with its place
}

TEST_F(StreamMemory, DestructorWithoutMemoryForItsFailureStillClosesTheFile) {
    const char byte = 0;
    for (unsigned int granted = 1; granted < 4; ++granted) {  // the stream's buffer is granted
        const int before = open_descriptors();
        bool thrown = false;
        const Fault<&Syscalls::write> fault(ENOSPC);
        {
            FailingAllocator allocator;
            allocator.refuse_after(granted);
            try {
                OSAPI::BufferedFileOutput stream(path_.c_str(), OSAPI::kWrite);
                stream.write(&byte, 1);
            } catch (const StrXception&) {
                thrown = true;
            }
            allocator.grant_all();
        }
        EXPECT_TRUE(thrown) << granted;
        EXPECT_EQ(open_descriptors(), before) << granted;
    }
}

}  // namespace
