// Reading streams against the simplest thing that could do the same: the whole file in one text and
// an index into it. Random operations, fixed seeds.
#include <gtest/gtest.h>
#include <osapi/streams.h>

#include <algorithm>
#include <optional>
#include <string>

#include "support/expect_throw.h"
#include "support/random_numbers.h"
#include "support/scratch.h"

namespace {

constexpr int kBufferSizes[] = {0, 1, 2, 7, 4096};
constexpr int kSequences = 1000;
constexpr int kOperations = 50;

/// Small mostly, now and then beyond any buffer.
int random_count(RandomNumbers& random) {
    return random.whole(0, 9) == 0 ? random.whole(0, 9000) : random.whole(-1, 12);
}
/// Line ends and the awkward bytes come often.
char random_byte(RandomNumbers& random) { return "ab\n\r\n\r\xFF\x80\0z"[random.whole(0, 9)]; }
std::string random_text(RandomNumbers& random, int longest) {
    std::string text(static_cast<std::size_t>(random.whole(0, longest)), '?');
    std::generate(text.begin(), text.end(), [&] { return random_byte(random); });
    return text;
}

bool ends_line(char byte) { return byte == '\n' || byte == '\r'; }

/// What a buffered stream over a file promises, without its buffer.
class PlainInput {
public:
    PlainInput(const std::string& file, bool buffered) : file_(file), buffered_(buffered) {}

    s64 position() const { return position_; }

    std::string read(int count) {
        if (count < 1) {
            return "";
        }
        std::string result;
        // A stream without a buffer never looks at what is pushed back.
        if (buffered_ && pushed_back_) {
            result = *pushed_back_;
            pushed_back_.reset();
        }
        const std::size_t from = std::min<std::size_t>(next_, file_.size());
        const std::string more =
            file_.substr(from, static_cast<std::size_t>(count) - result.size());
        next_ += more.size();
        result += more;
        position_ += static_cast<s64>(result.size());
        return result;
    }

    /// False when there is no room for the byte.
    bool unread(char byte) {
        if (pushed_back_) {
            return false;
        }
        if (byte != '\xFF') {
            pushed_back_ = byte;
        }
        --position_;
        return true;
    }

    /// Nothing when it fails for want of room to push back.
    std::optional<std::string> readline() {
        const std::string rest = (buffered_ && pushed_back_ ? std::string(1, *pushed_back_) : "") +
                                 file_.substr(std::min<std::size_t>(next_, file_.size()));
        const auto end = std::find_if(rest.begin(), rest.end(), ends_line);
        std::size_t length = static_cast<std::size_t>(end - rest.begin());
        bool ahead = false;
        if (end != rest.end()) {
            ++length;
            if (length < rest.size()) {
                const char next = rest[length];
                if (ends_line(next) && next != rest[length - 1]) {
                    ++length;
                } else {
                    ahead = true;
                }
            }
        }
        std::string line = read(static_cast<int>(length));
        if (ahead && !unread(read(1)[0])) {
            return std::nullopt;
        }
        line.erase(std::remove(line.begin(), line.end(), '\0'), line.end());
        return line;
    }

    /// False when there is no such place.
    bool seek(s64 position) {
        if (position == position_) {
            return true;
        }
        if (position < 0) {
            return false;
        }
        position_ = position;
        next_ = static_cast<std::size_t>(position);
        pushed_back_.reset();
        return true;
    }

private:
    const std::string& file_;
    bool buffered_;
    s64 position_ = 0;
    std::size_t next_ = 0;
    std::optional<char> pushed_back_;
};

constexpr const char* kNoPlace = "lseek: Invalid argument in <";
constexpr const char* kNoRoom = "can't unread more than 1 byte in <";

/// One random operation on both.
void step_both(BufferedInput& stream, PlainInput& plain, RandomNumbers& random, s64 file_size) {
    switch (random.whole(0, 5)) {
        case 0:
        case 1: {
            const int count = random_count(random);
            // Guarded at both ends: neither more nor less may be written.
            std::string block(static_cast<std::size_t>(std::max(count, 0)) + 2, '~');
            const std::string expected = plain.read(count);
            ASSERT_EQ(stream.read(block.data() + 1, count), static_cast<int>(expected.size()));
            const std::string tail(block.size() - 1 - expected.size(), '~');
            ASSERT_EQ(block, "~" + expected + tail);
            break;
        }
        case 2:
        case 3: {
            const std::optional<std::string> expected = plain.readline();
            if (expected) {
                ASSERT_EQ(std::string(stream.readline().c_str()), *expected);
            } else {
                ASSERT_EQ(thrown_message([&] { stream.readline(); }).find(kNoRoom), 0U);
            }
            break;
        }
        case 4: {
            const char byte = random_byte(random);
            if (plain.unread(byte)) {
                stream.unread(byte);
            } else {
                ASSERT_EQ(thrown_message([&] { stream.unread(byte); }).find(kNoRoom), 0U);
            }
            break;
        }
        case 5: {
            const bool from_start = random.whole(0, 1) == 0;
            const s64 position = random.whole(-2, static_cast<int>(file_size) + 3);
            const s64 target = random.whole(0, 4) == 0 ? plain.position() : position;
            const auto seek = [&] {
                return from_start ? stream.seek_from_start(target)
                                  : stream.seek_from_curpos(target - stream.curpos());
            };
            if (plain.seek(target)) {
                ASSERT_EQ(seek(), target);
            } else {
                ASSERT_EQ(thrown_message(seek).find(kNoPlace), 0U);
            }
            break;
        }
    }
    ASSERT_EQ(stream.curpos(), plain.position());
}

class Model : public testing::TestWithParam<int> {
protected:
    ScratchFolder folder_;
};

TEST_P(Model, BufferedInputIsAPlainReadOfTheFile) {
    for (int sequence = 0; sequence < kSequences; ++sequence) {
        SCOPED_TRACE(sequence);
        RandomNumbers random(static_cast<unsigned>(sequence));
        const std::string bytes = random_text(random, sequence % 10 == 0 ? 20000 : 120);
        // A file of its own for each sequence: some file systems write a truncated file to the disk
        // at once, which would take a minute for all of them.
        const std::string path = folder_ / std::to_string(sequence);
        write_file(path, bytes);
        OSAPI::DiskFile file(path.c_str(), OSAPI::kRead);
        OSAPI::FileInput source(file);
        BufferedInput stream(source, GetParam());
        PlainInput plain(bytes, GetParam() != 0);
        for (int i = 0; i < kOperations; ++i) {
            ASSERT_NO_FATAL_FAILURE(
                step_both(stream, plain, random, static_cast<s64>(bytes.size())));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(BufferSizes, Model, testing::ValuesIn(kBufferSizes),
                         [](const auto& size) { return std::to_string(size.param); });

}  // namespace
