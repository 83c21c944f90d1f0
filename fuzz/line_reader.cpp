// Lines of a file that comes in pieces of any size, against the same text split as a whole.
//
// Bytes 0 and 1 are the largest piece, bytes 2 and 3 how much text stands before the rest, so that
// any byte can come to lie on the border of two blocks or at the end of the longest line.
#include "tables/line_reader.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "harness.h"
#include "input_file.h"

namespace {

using lumivar::LineReader;

std::vector<std::string> lines_of(std::string text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    }
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        lines.push_back(line);
        at = end + 1;
    }
    return lines;
}

/// Bytes of text before the rest: a number of blocks, or about as long as the longest line.
std::size_t filling(std::size_t setting) {
    constexpr std::size_t kNearTheLongest = 0xF000;
    constexpr std::size_t kBefore = 0x800;
    return setting < kNearTheLongest
               ? 3 * setting
               : LineReader::kLongestLine - kBefore + setting - kNearTheLongest;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kSettings = 4;
    if (size < kSettings) {
        return 0;
    }
    const std::string before(filling(data[2] + data[3] * std::size_t{256}), 'x');
    const std::string text = before + text_of(data + kSettings, size - kSettings);
    const std::vector<std::string> expected = lines_of(text);
    // A few hundred pieces at most: each is a call of the system.
    read_in_pieces_of(std::max(data[0] + data[1] * std::size_t{256} + 1, text.size() / 300));

    lumivar::ByteStream bytes(input_file("lines", text));
    if (bytes.compression()[0] != '\0') {
        return 0;
    }
    LineReader reader(bytes);
    std::size_t number = 0;
    for (;;) {
        std::string ahead;
        if (number % 3 == 1) {
            ahead = reader.look_ahead(2);
        }
        std::string_view line;
        const LineReader::Step step = reader.next(line);
        if (step == LineReader::Step::End) {
            break;
        }
        require(number < expected.size(), "there is a line too many");
        const bool is_too_long = expected[number].size() > LineReader::kLongestLine;
        require((step == LineReader::Step::TooLong) == is_too_long, "a line is of another length");
        require(is_too_long || line == expected[number], "a line is another one");
        require(is_too_long || ahead.empty() || ahead.starts_with(line),
                "another line was seen ahead");
        require(reader.number() == ++number, "a line's number is another one");
    }
    require(number == expected.size(), "there is a line too few");
    require(bytes.bytes_read() == text.size(), "not all bytes were read");
    return 0;
}
