// One line of a table, against a machine that takes it byte by byte. The last byte chooses what
// separates the fields.
#include "tables/fields.h"

#include <optional>
#include <string_view>
#include <vector>

#include "harness.h"

namespace {

using Fields = std::vector<std::string>;

/// The fields, or nothing where a quote is left open or text follows it.
std::optional<Fields> fields_of(const std::string& line, char separator) {
    enum class At { Start, Text, Quoted, QuoteInQuoted, Behind };
    At at = At::Start;
    Fields fields = {""};
    std::string blanks;  // they count where text follows
    for (const char byte : line + separator) {
        const bool is_blank = (byte == ' ' || byte == '\t') && byte != separator;
        std::string& field = fields.back();
        if (at == At::Quoted) {
            if (byte == '"') {
                at = At::QuoteInQuoted;
            } else {
                field += byte;
            }
        } else if (at == At::QuoteInQuoted && byte == '"') {
            field += '"';
            at = At::Quoted;
        } else if (byte == separator) {
            fields.emplace_back();
            blanks.clear();
            at = At::Start;
        } else if (at == At::QuoteInQuoted || at == At::Behind) {
            if (!is_blank) {
                return std::nullopt;
            }
            at = At::Behind;
        } else if (is_blank) {
            blanks += at == At::Text ? std::string(1, byte) : "";
        } else if (at == At::Start && byte == '"') {
            at = At::Quoted;
        } else {
            field += blanks + byte;
            blanks.clear();
            at = At::Text;
        }
    }
    if (at != At::Start) {
        return std::nullopt;  // the separator at the end was part of a quoted field
    }
    fields.pop_back();
    return fields;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    constexpr std::string_view kSeparators = ",;|\t";
    const std::string line = text_of(data, size - 1);
    const char separator = kSeparators[data[size - 1] % kSeparators.size()];
    const std::optional<Fields> expected = fields_of(line, separator);
    lumivar::FieldSplitter splitter(separator);
    // What an earlier line has left there must not show.
    splitter.split("left,\"from\"\"\";be|fore");
    require(splitter.split(line) == expected.has_value(), "a line is taken for another kind");
    if (expected) {
        const Fields fields(splitter.fields().begin(), splitter.fields().end());
        require(fields == *expected, "a field is another one");
    }
    return 0;
}
