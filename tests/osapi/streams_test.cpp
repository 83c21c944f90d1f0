// Streams over files and descriptors; at the end every allocation and every system call of a
// stream's life fails in its turn, with every error that could be told from another.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <osapi/pipes.h>
#include <osapi/streams.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "failures.h"
#include "support/captured_output.h"
#include "support/failing_allocator.h"
#include "support/scratch.h"
#include "support/stream_text.h"

namespace {

using OSAPI::BufferedFileInput;
using OSAPI::BufferedFileOutput;
using OSAPI::DescriptorInput;
using OSAPI::DiskFile;
using OSAPI::FileCalls;
using OSAPI::FileInput;
using OSAPI::FileOutput;
using OSAPI::RWFileDescriptor;

class Streams : public testing::Test {
protected:
    ~Streams() override { EXPECT_EQ(open_descriptors(), before_); }

    const char* path() const { return path_.c_str(); }
    const char* file_of(const std::string& bytes) {
        write_file(path_, bytes);
        return path();
    }

    ScratchFolder folder_;
    const std::string path_ = folder_ / "a";
    const int before_ = open_descriptors();
};

TEST_F(Streams, FileInputIsOneShortReadACall) {
    DiskFile file(file_of("abcdefgh"), OSAPI::kRead);
    FileInput input(file);
    EXPECT_EQ(input.curpos(), 0);
    const Intercept<&FileCalls::read> reads([&](int fd, void* buffer, size_t count) {
        return reads.real(fd, buffer, std::min<size_t>(count, 3));
    });
    EXPECT_EQ(read_text(input, 5), "abc");
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(reads.calls(), 1);
    EXPECT_EQ(read_text(input, 2), "de");
    EXPECT_EQ(read_text(input, 9), "fgh");
    EXPECT_EQ(read_text(input, 9), "");
    EXPECT_EQ(input.curpos(), 8);
}

TEST_F(Streams, FileInputMovesTheFileOnlyWhereItIsNot) {
    DiskFile file(file_of("abcdefgh"), OSAPI::kRead);
    FileInput input(file);
    const Intercept<&FileCalls::lseek> seeks(
        [&](int fd, off_t offset, int whence) { return seeks.real(fd, offset, whence); });
    read_text(input, 2);
    EXPECT_EQ(input.seek_from_start(2), 2);
    EXPECT_EQ(input.seek_from_curpos(0), 2);
    EXPECT_EQ(seeks.calls(), 0);
    EXPECT_EQ(input.seek_from_start(5), 5);
    EXPECT_EQ(read_text(input, 1), "f");
    EXPECT_EQ(input.seek_from_curpos(-4), 2);
    EXPECT_EQ(read_text(input, 1), "c");
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(seeks.calls(), 2);
    kFiles.expect("lseek", EINVAL, "lseek", [&] { input.seek_from_start(-1); });
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(read_text(input, 1), "d");
}

TEST_F(Streams, FileOutputWritesAllOfIt) {
    DiskFile file(path(), OSAPI::kWrite);
    FileOutput output(file);
    const Intercept<&FileCalls::write> writes([&](int fd, const void* bytes, size_t count) {
        return writes.real(fd, bytes, std::min<size_t>(count, 3));
    });
    EXPECT_EQ(write_text(output, "abcdefgh"), 8);
    EXPECT_EQ(writes.calls(), 3);
    EXPECT_EQ(output.curpos(), 8);
    EXPECT_EQ(read_file(path_), "abcdefgh");
}

TEST_F(Streams, FileOutputMovesTheFileOnlyWhereItIsNot) {
    DiskFile file(path(), OSAPI::kWrite);
    FileOutput output(file);
    const Intercept<&FileCalls::lseek> seeks(
        [&](int fd, off_t offset, int whence) { return seeks.real(fd, offset, whence); });
    write_text(output, "abc");
    EXPECT_EQ(output.seek_from_start(3), 3);
    EXPECT_EQ(output.seek_from_curpos(0), 3);
    EXPECT_EQ(seeks.calls(), 0);
    EXPECT_EQ(output.seek_from_start(1), 1);
    write_text(output, "X");
    EXPECT_EQ(output.seek_from_curpos(2), 4);
    write_text(output, "Y");
    EXPECT_EQ(output.curpos(), 5);
    EXPECT_EQ(seeks.calls(), 2);
    EXPECT_EQ(read_file(path_), std::string("aXc\0Y", 5));
}

TEST_F(Streams, CountsBelowZeroAreAsserted) {
    DiskFile file(path(), OSAPI::kReadWrite);
    char byte = 0;
    EXPECT_EQ(failed_assertion([&] { FileInput(file).read(&byte, -1); }), "count >= 0");
    EXPECT_EQ(failed_assertion([&] { FileOutput(file).write(&byte, -1); }), "count >= 0");
    EXPECT_EQ(failed_assertion([&] { DescriptorInput(file).read(&byte, -1); }), "count >= 0");
}

TEST_F(Streams, PositionsBeyondFourGigabytes) {
    const s64 far = (s64{5} << 30) + 3;
    {
        BufferedFileOutput output(path(), OSAPI::kWrite);
        EXPECT_EQ(output.seek_from_start(far), far);
        write_text(output, "end\n");
        EXPECT_EQ(output.curpos(), far + 4);
    }
    BufferedFileInput input(path(), OSAPI::kRead);
    EXPECT_EQ(input.seek_from_curpos(far), far);
    EXPECT_STREQ(input.readline().c_str(), "end\n");
    EXPECT_EQ(input.curpos(), far + 4);
}

TEST_F(Streams, BufferedFileInputReads4096BytesAtATime) {
    BufferedFileInput input(file_of(std::string(10000, 'x')), OSAPI::kRead);
    std::vector<size_t> asked;
    const Intercept<&FileCalls::read> reads([&](int fd, void* buffer, size_t count) {
        asked.push_back(count);
        return reads.real(fd, buffer, count);
    });
    read_text(input, 1);
    read_text(input, 4096);
    EXPECT_EQ(asked, (std::vector<size_t>{4096, 4096}));
}

TEST_F(Streams, BufferedFileOutputGathers4096Bytes) {
    BufferedFileOutput output(path(), OSAPI::kWrite);
    write_text(output, std::string(4095, 'x'));
    write_text(output, "y");
    EXPECT_EQ(read_file(path_).size(), 0U);
    write_text(output, "z");
    EXPECT_EQ(read_file(path_), std::string(4095, 'x') + "y");
    output.flush();
    EXPECT_EQ(read_file(path_), std::string(4095, 'x') + "yz");
    EXPECT_EQ(output.curpos(), 4097);
}

TEST_F(Streams, BufferedFilesOpenAsTheLayerDoes) {
    const std::string missing = folder_ / "none/a";
    const std::string text = with_error("opening file \"" + missing + "\"", ENOENT);
    kFiles.expect_text(text, "open", [&] { BufferedFileInput(missing.c_str(), OSAPI::kRead); });
    kFiles.expect_text(text, "open", [&] { BufferedFileOutput(missing.c_str(), OSAPI::kWrite); });
    // The mode is handed on.
    file_of("old");
    EXPECT_EQ(thrown_message([&] {
                  BufferedFileOutput(path(), OSAPI::kWrite | OSAPI::kExclusive);
              }).find(with_error("opening file \"" + path_ + "\"", EEXIST)),
              0U);
    { const BufferedFileOutput output(path(), OSAPI::kWrite); }
    EXPECT_EQ(read_file(path_), "");
}

TEST_F(Streams, BufferedFileOutputLeavesTheDescriptorOpenOnRequestThoughItsLastFlushFails) {
    RWFileDescriptor kept;
    RWFileDescriptor kept_too;
    const auto write_into = [this](RWFileDescriptor& descriptor) {
        BufferedFileOutput output(path(), OSAPI::kWrite, BufferedFileOutput::AtEnd::LeaveOpen);
        write_text(output, "abc");
        descriptor.init(output.fd());
    };
    write_into(kept);
    EXPECT_EQ(read_file(path_), "abc");
    EXPECT_EQ(kept.write("de", 2), 2);
    EXPECT_EQ(read_file(path_), "abcde");
    const Fault<&FileCalls::write> fault(ENOSPC);
    kFiles.expect("write", ENOSPC, "write", [&] { write_into(kept_too); });
    EXPECT_NE(fcntl(kept_too.fd(), F_GETFD), -1);
    EXPECT_EQ(fault.calls(), 1);
}

TEST_F(Streams, DestructorThrowsTheFailedFlushAndClosesAllTheSame) {
    const Fault<&FileCalls::write> fault(ENOSPC, kAlways);
    kFiles.expect("write", ENOSPC, "write", [&] {
        BufferedFileOutput output(path(), OSAPI::kWrite);
        write_text(output, "abc");
    });
    EXPECT_EQ(fault.calls(), 1);
}

TEST_F(Streams, FailedFlushAndCloseWhileUnwindingArePrinted) {
    const Fault<&FileCalls::write> fault(ENOSPC, kAlways);
    const CloseFault closes(EIO);
    const std::string printed = output_of(stderr, [&] {
        EXPECT_THROW(
            {
                BufferedFileOutput output(path(), OSAPI::kWrite);
                write_text(output, "abc");
                throw 5;
            },
            int);
    });
    EXPECT_EQ(printed.find("Error: " + with_error("write", ENOSPC)), 0U) << printed;
    EXPECT_NE(printed.find("\nError: " + with_error("close", EIO)), std::string::npos) << printed;
    EXPECT_EQ(closes.calls(), 1);
}

// Both ends of a pipe; the writing one is closed by `end`.
struct OpenPipe {
    OpenPipe() {
        OSAPI::Pipe pipe;
        pipe.open();
        reading.init(pipe.read_end().release());
        writing.init(pipe.write_end().release());
    }
    void end() { writing.close(); }

    RWFileDescriptor reading;
    RWFileDescriptor writing;
};

TEST_F(Streams, DescriptorInputFillsItsRequestsFromAPipe) {
    OpenPipe pipe;
    pipe.writing.write("abcdefgh", 8);
    pipe.end();
    DescriptorInput source(pipe.reading);
    const Intercept<&FileCalls::read> reads([&](int fd, void* buffer, size_t count) {
        return reads.real(fd, buffer, std::min<size_t>(count, 2));
    });
    EXPECT_EQ(read_text(source, 5), "abcde");
    EXPECT_EQ(source.curpos(), 5);
    // Over it a buffered stream sees no end but the true one.
    BufferedInput input(source, 2);
    EXPECT_EQ(read_text(input, 1), "f");
    EXPECT_EQ(read_text(input, 9), "gh");
    EXPECT_EQ(read_text(source, 3), "");
}

TEST_F(Streams, DescriptorInputWaitsForANonBlockingPipe) {
    OpenPipe pipe;
    fcntl(pipe.reading.fd(), F_SETFL, O_NONBLOCK);
    const Intercept<&FileCalls::read> reads([&](int fd, void* buffer, size_t count) {
        if (reads.calls() == 3) {
            pipe.writing.write("abc", 3);
            pipe.end();
        }
        return reads.real(fd, buffer, count);
    });
    DescriptorInput source(pipe.reading);
    EXPECT_EQ(read_text(source, 9), "abc");
    EXPECT_EQ(reads.calls(), 4);
}

TEST_F(Streams, DescriptorInputSeeksInAFileAndNotInAPipe) {
    DiskFile file(file_of("abcdefgh"), OSAPI::kRead);
    DescriptorInput source(file);
    EXPECT_EQ(source.seek_from_start(3), 3);
    EXPECT_EQ(read_text(source, 2), "de");
    EXPECT_EQ(source.seek_from_curpos(-4), 1);
    EXPECT_EQ(read_text(source, 1), "b");
    EXPECT_EQ(source.curpos(), 2);
    OpenPipe pipe;
    DescriptorInput of_pipe(pipe.reading);
    kFiles.expect("lseek", ESPIPE, "lseek", [&] { of_pipe.seek_from_start(0); });
    kFiles.expect("lseek", ESPIPE, "lseek", [&] { of_pipe.seek_from_curpos(1); });
    EXPECT_EQ(of_pipe.curpos(), 0);
    DiskFile folder(folder_.path().c_str(), OSAPI::kRead);
    DescriptorInput of_folder(folder);
    kFiles.expect("read", EISDIR, "read_up_to", [&] { read_text(of_folder, 1); });
    EXPECT_EQ(of_folder.curpos(), 0);
}

/// Runs `attempt` with only the first 0, 1, 2 ... requests to the C allocator granted, until none
/// is refused, and returns how many were granted then.
template <class Attempt>
unsigned int fail_every_allocation(Attempt attempt) {
    for (unsigned int granted = 0; granted < 100; ++granted) {
        FailingAllocator allocator;
        allocator.refuse_after(granted);
        attempt();
        allocator.grant_all();
        if (allocator.requests().size() <= granted) {
            return granted;
        }
    }
    ADD_FAILURE() << "there is no end to it";
    return 0;
}

TEST_F(Streams, WithoutMemoryForTheBufferThereIsNoStreamAndWithItNoMoreIsNeeded) {
    const auto write = [this] {
        BufferedFileOutput stream(path(), OSAPI::kWrite);
        stream.write("abc", 3);
        stream.seek_from_start(2);
        stream.write("xyz", 3);
    };
    char bytes[3] = {};
    const auto read = [this, &bytes] {
        BufferedFileInput stream(path(), OSAPI::kRead);
        stream.read(bytes, 1);
        stream.unread('x');
        stream.seek_from_start(2);
        stream.seek_from_curpos(-1);
        stream.read(bytes, 3);
    };
    FailingAllocator allocator;
    const auto expect_one_allocation = [&](auto live) {
        allocator.refuse_after(0);
        allocator.refuse_new_after(0);
        EXPECT_THROW(live(), std::bad_alloc);
        allocator.refuse_new_after(1);
        live();
        allocator.grant_all();
        EXPECT_TRUE(allocator.requests().empty());
    };
    expect_one_allocation(write);
    EXPECT_EQ(read_file(path_), "abxyz");
    expect_one_allocation(read);
    EXPECT_EQ(std::string(bytes, 3), "bxy");
}

TEST_F(Streams, LineWithoutMemoryIsReported) {
    const std::string line = std::string(5000, 'x') + "\n";
    BufferedFileInput stream(file_of(line), OSAPI::kRead);
    String got;
    unsigned int refused = 0;
    const unsigned int needed = fail_every_allocation([&] {
        try {
            stream.seek_from_start(0);
            got = stream.readline();
        } catch (const StrXception&) {
            ++refused;
        }
    });
    EXPECT_EQ(got.c_str(), line);
    EXPECT_EQ(refused, needed);
    EXPECT_GE(needed, 2U);
}

TEST_F(Streams, FailureWithoutMemoryForItsTextIsStillAnExceptionOfItsKind) {
    DiskFile file(file_of(""), OSAPI::kRead);  // not to be written to
    FileOutput sink(file);
    int whole = 0;
    unsigned int without_text = 0;
    const unsigned int ways = fail_every_allocation([&] {
        try {
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
    EXPECT_EQ(without_text, ways);
    EXPECT_GE(ways, 2U);  // the message, and the message with its place
}

TEST_F(Streams, DestructorWithoutMemoryForItsFailureStillClosesTheFile) {
    const Fault<&FileCalls::write> fault(ENOSPC, kAlways);
    for (unsigned int granted = 0; granted < 3; ++granted) {
        FailingAllocator allocator;
        allocator.refuse_after(granted);
        EXPECT_THROW(
            {
                BufferedFileOutput stream(path(), OSAPI::kWrite);
                stream.write("x", 1);
            },
            StrXception);
        allocator.grant_all();
        EXPECT_EQ(open_descriptors(), before_);
    }
}

using AnyCallFault = NthCallFault<&FileCalls::open, &FileCalls::read, &FileCalls::write,
                                  &FileCalls::lseek, &FileCalls::close>;

// Whatever loops for ever must not loop here.
constexpr int kMostCalls = 10000;

class StreamFaults : public Streams, public testing::WithParamInterface<int> {
protected:
    /// What the file should hold, and did hold when only the destructors were still to come.
    struct Result {
        std::ostringstream plain;
        std::string before_end;
        bool to_end = false;
        std::string message;
    };

    int error() const { return GetParam(); }
    bool is_retried() const { return error() == EINTR || error() == EAGAIN; }

    /// Expects that the message begins with the failed call's.
    void expect_failure(const AnyCallFault& fault, const std::string& message) const {
        const std::string call = fault.was<&FileCalls::open>()    ? "opening file \"" + path_ + "\""
                                 : fault.was<&FileCalls::read>()  ? "read"
                                 : fault.was<&FileCalls::write>() ? "write"
                                 : fault.was<&FileCalls::lseek>() ? "lseek"
                                                                  : "close";
        EXPECT_EQ(message.find(with_error(call, error()) + " in <"), 0U) << message;
    }
    Result write_once();
};

/// The text of the `StrXception` that `run` throws; empty when it throws none.
template <class Run>
std::string failure_of(Run run) {
    try {
        run();
    } catch (const StrXception& failure) {
        return failure.message().c_str();
    }
    return "";
}

TEST_P(StreamFaults, EveryCallOfAReadingStream) {
    std::string bytes = "one\r\ntwo\nthree\n\rfour\n";
    bytes += std::string(6000, 'x') + "\nend";
    write_file(path_, bytes);
    const std::vector<std::string> expected = {
        "one\r\n", "two", "Xne\r\ntwo\nt", bytes.substr(11, 5000), "\n", bytes.substr(5)};

    int n = 1;
    for (; n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        std::vector<std::string> log;
        const AnyCallFault fault(error(), n);
        const std::string message = failure_of([&] {
            BufferedFileInput stream(path(), OSAPI::kRead);
            log.emplace_back(stream.readline().c_str());
            log.push_back(read_text(stream, 3));
            stream.seek_from_start(1);
            stream.unread('X');
            log.push_back(read_text(stream, 10));
            stream.seek_from_start(20);
            stream.seek_from_curpos(-9);
            log.push_back(read_text(stream, 5000));
            stream.seek_from_start(4);
            log.emplace_back(stream.readline().c_str());
            log.push_back(read_text(stream, 9000));
        });
        EXPECT_EQ(open_descriptors(), before_);
        if (!fault.failed()) {
            EXPECT_EQ(log, expected);
            break;
        }
        if (fault.was<&FileCalls::read>() && is_retried()) {
            EXPECT_EQ(message, "");
            ASSERT_EQ(log.size(), expected.size());
            if (error() == EINTR) {
                EXPECT_EQ(log, expected);
            }
        } else {
            expect_failure(fault, message);
        }
        // Never a wrong byte, and where a descriptor has nothing yet, that counts as the end.
        for (std::size_t i = 0; i < log.size(); ++i) {
            EXPECT_EQ(log[i], expected[i].substr(0, log[i].size()));
        }
    }
    // One each to open and close, four seeks, and reads between them.
    EXPECT_GE(n, 10);
    EXPECT_LT(n, kMostCalls);
}

/// All that a writer can do; what has succeeded is done to the plain file too.
StreamFaults::Result StreamFaults::write_once() {
    Result result;
    result.message = failure_of([&] {
        BufferedFileOutput stream(path(), OSAPI::kWrite);
        const auto write = [&](const std::string& bytes) {
            ASSERT_EQ(write_text(stream, bytes), static_cast<int>(bytes.size()));
            result.plain << bytes;
        };
        write("0123456789");
        write("abc");
        stream.flush();
        stream.seek_from_start(4);
        result.plain.seekp(4);
        write("XY");
        stream.seek_from_curpos(6);
        result.plain.seekp(12);
        write(std::string(4090, 'l'));
        write(std::string(5000, 'm'));
        write("end");
        result.before_end = read_file(path_);
        result.to_end = true;
    });
    return result;
}

TEST_P(StreamFaults, EveryCallOfAWritingStream) {
    int n = 1;
    bool failed_at_the_end = false;
    for (; n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        OSAPI::rm_ifexist(path_.c_str());
        const AnyCallFault fault(error(), n);
        const Result result = write_once();
        EXPECT_EQ(open_descriptors(), before_);
        const bool write_failed = fault.was<&FileCalls::write>();
        if (!fault.failed() || (write_failed && is_retried())) {
            EXPECT_EQ(result.message, "");
            EXPECT_EQ(read_file(path_), result.plain.str());
        } else {
            expect_failure(fault, result.message);
            if (fault.was<&FileCalls::open>()) {
                EXPECT_FALSE(OSAPI::file_exists(path_.c_str(), 0));
            } else if (write_failed && result.to_end) {
                // The destructor's flush: not tried a second time.
                EXPECT_EQ(read_file(path_), result.before_end);
                failed_at_the_end = true;
            } else {
                // What was accepted before the failure is written by the destructor.
                EXPECT_EQ(read_file(path_), result.plain.str());
            }
        }
        if (!fault.failed()) {
            break;
        }
    }
    // One each to open and close, two seeks, five writes.
    EXPECT_GE(n, 10);
    EXPECT_LT(n, kMostCalls);
    EXPECT_EQ(failed_at_the_end, !is_retried());
}

TEST_P(StreamFaults, LastingOnesEndWithOneExceptionAndNoDescriptor) {
    // Not those that a write tries again, for ever if need be.
    for (int n = 1; !is_retried() && n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        const AnyCallFault fault(error(), n, true);
        Result result;
        output_of(stderr, [&] { result = write_once(); });
        EXPECT_EQ(open_descriptors(), before_);
        if (!fault.failed()) {
            break;
        }
        expect_failure(fault, result.message);
    }
}

INSTANTIATE_TEST_SUITE_P(Errors, StreamFaults, testing::ValuesIn(kErrors));

}  // namespace
