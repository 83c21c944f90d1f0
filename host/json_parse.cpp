// Strict parsing. An error in the JSON is reported by line and column, a repeated member by its
// place.
#include <host/scene.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "json_node.h"

namespace host {

namespace {

/// What the parser would have accepted, by the part it was reading.
std::string expected_in(const std::string& context) {
    static const std::map<std::string, std::string> kExpected = {
        {"object key", "a member's name in double quotes"},
        {"object separator", "':'"},
        {"object", "',' or '}'"},
        {"array", "',' or ']'"},
    };
    const auto found = kExpected.find(context);
    return found == kExpected.end() ? "a value" : found->second;
}

/// The text between `before` and `after` (or the end), if `before` occurs.
std::optional<std::string> between(const std::string& text, const std::string& before,
                                   const std::string& after) {
    const std::size_t at = text.find(before);
    if (at == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t from = at + before.size();
    const std::size_t to = text.find(after, from);
    return text.substr(from, to == std::string::npos ? to : to - from);
}

/// Of visible ASCII characters, at least one.
bool is_printable(const std::string& word) {
    return !word.empty() &&
           std::all_of(word.begin(), word.end(), [](char c) { return c > ' ' && c <= '~'; });
}

/// Walks over a document, keeps nothing of it, and stops at the first error or repeated member.
class Checker : public nlohmann::json_sax<Json> {
public:
    Checker(const std::string& text, const std::string& source) : text_(text), source_(source) {}

    const std::string& error() const { return error_; }

    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t&) override { return value(); }
    bool string(string_t&) override { return value(); }
    bool binary(binary_t&) override { return value(); }

    bool start_object(std::size_t) override { return begin(); }
    bool key(string_t& name) override {
        Level& level = open_.back();
        level.step = name;
        if (level.names.insert(name).second) {
            return true;
        }
        nlohmann::json_pointer<std::string> place;
        for (const Level& each : open_) {
            place /= each.is_array ? std::to_string(each.index - 1) : each.step;
        }
        error_ = json_place(source_, place.to_string()) + ": expected each member once, found " +
                 Json(name).dump() + " twice";
        return false;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override {
        begin();
        open_.back().is_array = true;
        return true;
    }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& exception) override {
        const std::string what = exception.what();
        const std::string context = between(what, "while parsing ", " - ").value_or("value");
        std::string expected = expected_in(context);
        std::string found;
        std::size_t length = 0;  // bytes from the error's place to `position`, past the last read
        if (const auto kind = between(what, "unexpected ", "; expected ")) {
            // A valid token in the wrong place. The parser keeps the text of strings and numbers;
            // the others are their names: "'}'", "true literal".
            found = *kind;
            if (found == "string literal" || found == "number literal") {
                length = token.size();
                found = length > kLongestText ? "a long " + found : token;
            } else if (found.ends_with(" literal")) {
                found = found.substr(0, found.find(' '));
                length = found.size();
            } else if (found != "end of input") {
                length = 1;
            }
            if (whole_) {
                expected = "the end of the scene";
            }
        } else if (const auto broken = between(what, " - ", "; last read: ")) {
            found = *broken;
            length = 1;
            const bool in_comment = found.find("invalid comment") == 0;
            if (whole_ && !in_comment) {
                // What follows the scene is no value, however it is spelled: the word is shown.
                expected = "the end of the scene";
                const std::size_t start = rest_of(text_);
                const std::string word =
                    text_.substr(start, text_.find_first_of(" \t\r\n", start) - start);
                if (is_printable(word)) {
                    found = word.size() > kLongestText ? "a long word" : word;
                    length = position - start;
                }
            }
        } else {
            expected = "a finite number";
            found = token;
            length = token.size();
        }
        // At the end of the text the parser counts one byte more than there are.
        const std::size_t at = std::min(position - std::min(position, length), text_.size());
        error_ = source_ + ": " + line_and_column(text_, at) + ": expected " + expected +
                 ", found " + found;
        return false;
    }

private:
    /// An object or array that is being read.
    struct Level {
        bool is_array = false;
        std::size_t index = 0;  ///< elements begun
        std::string step;       ///< member being read
        std::set<std::string> names;
    };

    bool value() {
        if (!open_.empty()) {
            ++open_.back().index;
        } else {
            whole_ = true;
        }
        return true;
    }
    bool begin() {
        value();
        whole_ = false;
        open_.emplace_back();
        return true;
    }
    bool close() {
        open_.pop_back();
        whole_ = open_.empty();
        return true;
    }

    static std::size_t rest_of(const std::string& text);

    const std::string& text_;
    const std::string& source_;
    std::vector<Level> open_;
    bool whole_ = false;  ///< the document's one value has been read to its end
    std::string error_;
};

/// Where the text goes on behind its one value, white space and comments passed over. For texts
/// that begin with a whole object or array.
std::size_t Checker::rest_of(const std::string& text) {
    std::istringstream in(text);
    const std::string nowhere;
    Checker first_value(nowhere, nowhere);
    constexpr bool kStrict = false;
    constexpr bool kComments = true;
    Json::sax_parse(in, &first_value, Json::input_format_t::json, kStrict, kComments);
    // Nothing is read beyond the last bracket.
    const std::streamoff end = in.tellg();
    std::size_t at = end < 0 ? text.size() : static_cast<std::size_t>(end);
    while (true) {
        at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
        const bool is_line = text.compare(at, 2, "//") == 0;
        if (!is_line && text.compare(at, 2, "/*") != 0) {
            return at;
        }
        const std::size_t close = text.find(is_line ? "\n" : "*/", at + 2);
        if (close == std::string::npos) {
            return at;  // a comment without an end is what is wrong
        }
        at = close + (is_line ? 1 : 2);
    }
}

}  // namespace

std::string line_and_column(const std::string& text, std::size_t offset) {
    const std::string before = text.substr(0, offset);
    const std::size_t newline = before.rfind('\n');
    const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
    const auto lines = std::count(before.begin(), before.end(), '\n');
    // Bytes that continue a UTF-8 character are 10xxxxxx.
    const auto columns =
        std::count_if(before.begin() + static_cast<std::ptrdiff_t>(start), before.end(),
                      [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
    return "line " + std::to_string(lines + 1) + ", column " + std::to_string(columns + 1);
}

std::shared_ptr<const Json> parse_json(const std::string& text, const std::string& source) {
    constexpr bool kStrict = true;
    constexpr bool kComments = true;
    Checker checker(text, source);
    if (!Json::sax_parse(text, &checker, Json::input_format_t::json, kStrict, kComments)) {
        throw SceneError(checker.error());
    }
    return std::make_shared<const Json>(Json::parse(text, nullptr, kStrict, kComments));
}

}  // namespace host
