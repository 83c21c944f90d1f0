// Every system call of a stream's life fails in its turn, with every error that could be told from
// another.
#include <gtest/gtest.h>
#include <osapi/streams.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "support/captured_output.h"
#include "support/expect_throw.h"
#include "support/faults.h"
#include "support/scratch.h"
#include "support/stream_text.h"

namespace {

using OSAPI::BufferedFileInput;
using OSAPI::BufferedFileOutput;
using OSAPI::Syscalls;

using AnyCallFault = NthCallFault<&Syscalls::open, &Syscalls::read, &Syscalls::write,
                                  &Syscalls::lseek, &Syscalls::close>;

constexpr int kBufferSizes[] = {0, 1, 2, 7, 4096};

// Whatever loops for ever must not loop here.
constexpr int kMostCalls = 10000;

class StreamFaults : public testing::TestWithParam<int> {
protected:
    int error() const { return GetParam(); }
    bool is_retried() const { return error() == EINTR || error() == EAGAIN; }

    /// What the failed call's exception begins with.
    std::string text_of(const AnyCallFault& fault) const {
        if (fault.was<&Syscalls::open>()) {
            return with_error("opening file \"" + path_ + "\"", error()) + " in <";
        }
        const char* call = fault.was<&Syscalls::read>()    ? "read"
                           : fault.was<&Syscalls::write>() ? "write"
                           : fault.was<&Syscalls::lseek>() ? "lseek"
                                                           : "close";
        return with_error(call, error()) + " in <";
    }

    ScratchFolder folder_;
    const std::string path_ = folder_ / "a";
    const int before_ = open_descriptors();
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

/// All that a reader can do, each piece of text that it gets in `log`.
template <class Stream>
void read_all_over(Stream& stream, std::vector<std::string>& log) {
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
}

TEST_P(StreamFaults, EveryCallOfAReadingStream) {
    std::string bytes = "one\r\ntwo\nthree\n\rfour\n";
    bytes += std::string(6000, 'x') + "\nend";
    write_file(path_, bytes);
    std::vector<std::string> expected;
    {
        BufferedFileInput stream(path_.c_str(), OSAPI::kRead);
        read_all_over(stream, expected);
    }
    ASSERT_EQ(expected[0], "one\r\n");
    ASSERT_EQ(expected[3], bytes.substr(11, 5000));

    int n = 1;
    for (; n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        std::vector<std::string> log;
        AnyCallFault fault(error(), n);
        const std::string message = failure_of([&] {
            BufferedFileInput stream(path_.c_str(), OSAPI::kRead);
            read_all_over(stream, log);
        });
        EXPECT_EQ(open_descriptors(), before_);
        if (!fault.failed()) {
            EXPECT_EQ(log, expected);
            break;
        }
        if (fault.was<&Syscalls::read>() && is_retried()) {
            EXPECT_EQ(message, "");
            ASSERT_EQ(log.size(), expected.size());
            if (error() == EINTR) {
                EXPECT_EQ(log, expected);
            }
        } else {
            EXPECT_EQ(message.substr(0, text_of(fault).size()), text_of(fault));
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

class Repeat : public StreamFaults {};

TEST_P(Repeat, FailedReadOrSeekGivesWhatItWouldHaveGiven) {
    const std::string bytes = "0123456789abcdefghijklmnopqrstuvwxyz";
    write_file(path_, bytes);
    for (const int size : kBufferSizes) {
        int n = 1;
        for (; n < kMostCalls; ++n) {
            SCOPED_TRACE(n);
            OSAPI::DiskFile file(path_.c_str(), OSAPI::kRead);
            OSAPI::FileInput source(file);
            BufferedInput stream(source, size);
            NthCallFault<&Syscalls::read, &Syscalls::lseek> fault(error(), n);
            std::vector<std::string> log;
            const auto insist = [&](auto step) {
                if (!failure_of(step).empty()) {
                    step();
                }
            };
            insist([&] { log.push_back(read_text(stream, 1)); });
            insist([&] { log.push_back(read_text(stream, 5)); });
            insist([&] { stream.seek_from_start(3); });
            insist([&] { log.push_back(read_text(stream, 20)); });
            insist([&] { stream.seek_from_curpos(-13); });
            insist([&] { log.push_back(read_text(stream, 2)); });
            insist([&] { log.push_back(read_text(stream, 50)); });
            EXPECT_EQ(log, (std::vector<std::string>{"0", "12345", bytes.substr(3, 20), "ab",
                                                     bytes.substr(12)}));
            if (!fault.failed()) {
                break;
            }
        }
        EXPECT_GE(n, 5) << size;
        EXPECT_LT(n, kMostCalls) << size;
    }
}

/// A file as it should be, written beside the stream.
class PlainFile {
public:
    void write(const std::string& bytes) {
        content_.resize(std::max(content_.size(), position_ + bytes.size()));
        content_.replace(position_, bytes.size(), bytes);
        position_ += bytes.size();
    }
    void seek(std::size_t position) { position_ = position; }
    const std::string& content() const { return content_; }

private:
    std::string content_;
    std::size_t position_ = 0;
};

/// All that a writer can do; what has succeeded is done to `plain` too.
template <class Stream>
void write_all_over(Stream& stream, PlainFile& plain) {
    const auto write = [&](const std::string& bytes) {
        ASSERT_EQ(write_text(stream, bytes), static_cast<int>(bytes.size()));
        plain.write(bytes);
    };
    write("0123456789");
    write("abc");
    stream.flush();
    stream.seek_from_start(4);
    plain.seek(4);
    write("XY");
    stream.seek_from_curpos(6);
    plain.seek(12);
    write(std::string(4090, 'l'));
    write(std::string(5000, 'm'));
    write("end");
}

class WriteFaults : public StreamFaults {
protected:
    /// What the file should hold, and did hold when only the destructors were still to come.
    struct Result {
        PlainFile plain;
        std::string before_end;
        bool to_end = false;
        std::string message;
    };

    Result write_once() {
        Result result;
        result.message = failure_of([&] {
            BufferedFileOutput stream(path_.c_str(), OSAPI::kWrite);
            write_all_over(stream, result.plain);
            result.before_end = read_file(path_);
            result.to_end = true;
        });
        return result;
    }
};

TEST_P(WriteFaults, EveryCallOfAWritingStream) {
    int n = 1;
    bool failed_at_the_end = false;
    for (; n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        OSAPI::rm_ifexist(path_.c_str());
        AnyCallFault fault(error(), n);
        const Result result = write_once();
        EXPECT_EQ(open_descriptors(), before_);
        const bool write_failed = fault.was<&Syscalls::write>();
        if (!fault.failed() || (write_failed && is_retried())) {
            EXPECT_EQ(result.message, "");
            EXPECT_EQ(read_file(path_), result.plain.content());
        } else {
            EXPECT_EQ(result.message.substr(0, text_of(fault).size()), text_of(fault));
            if (fault.was<&Syscalls::open>()) {
                EXPECT_FALSE(OSAPI::file_exists(path_.c_str(), 0));
            } else if (write_failed && result.to_end) {
                // The destructor's flush: not tried a second time.
                EXPECT_EQ(read_file(path_), result.before_end);
                failed_at_the_end = true;
            } else {
                // What was accepted before the failure is written by the destructor.
                EXPECT_EQ(read_file(path_), result.plain.content());
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

class LastingFaults : public WriteFaults {};

TEST_P(LastingFaults, EndWithOneExceptionAndNoDescriptor) {
    for (int n = 1; n < kMostCalls; ++n) {
        SCOPED_TRACE(n);
        AnyCallFault fault(error(), n, true);
        Result result;
        output_of(stderr, [&] { result = write_once(); });
        EXPECT_EQ(open_descriptors(), before_);
        if (!fault.failed()) {
            break;
        }
        EXPECT_EQ(result.message.substr(0, text_of(fault).size()), text_of(fault));
    }
}

INSTANTIATE_TEST_SUITE_P(Errors, StreamFaults, testing::ValuesIn(kErrors));
INSTANTIATE_TEST_SUITE_P(Errors, WriteFaults, testing::ValuesIn(kErrors));
// Not EAGAIN, which a read takes for the end.
INSTANTIATE_TEST_SUITE_P(Errors, Repeat, testing::Values(EINTR, ENOSPC, EIO, EMFILE));
// Not those that a write tries again, for ever if need be.
INSTANTIATE_TEST_SUITE_P(Errors, LastingFaults, testing::Values(ENOSPC, EIO, EMFILE));

}  // namespace
