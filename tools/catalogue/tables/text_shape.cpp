#include "tables/text_shape.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace lumivar {
namespace {

/// The lines of a text one by one, without their ends.
class HeadLines {
public:
    explicit HeadLines(std::string_view text) : rest_(text) {}

    bool next(std::string_view& line) {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        ++number_;
        return true;
    }
    std::uint64_t number() const { return number_; }

private:
    std::string_view rest_;
    std::uint64_t number_ = 0;
};

std::string_view without_quotes(std::string_view text) {
    text = trimmed(text);
    if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
        text.back() == text.front()) {
        text = text.substr(1, text.size() - 2);
    }
    return text;
}

/// The comments of an ECSV header: a list of columns in YAML, each in braces on one line or as
/// lines of "key: value" below a dash.
class EcsvHeader {
public:
    void read(std::string_view comment) {
        std::string_view text = trimmed(comment);
        if (text.substr(0, 2) == "- ") {
            text = trimmed(text.substr(2));
        }
        if (!text.empty() && text.front() == '{') {
            const std::size_t end = text.rfind('}');
            text = text.substr(1, end == std::string_view::npos ? text.size() - 1 : end - 1);
            while (!text.empty()) {
                const std::size_t comma = std::min(end_of_value(text), text.size());
                read_pair(text.substr(0, comma));
                text.remove_prefix(std::min(comma + 1, text.size()));
            }
        } else {
            read_pair(text);
        }
    }

    std::optional<char> delimiter() const { return delimiter_; }
    std::string unit_of(const std::string& name) const {
        const auto found = units_.find(name);
        return found == units_.end() ? std::string() : found->second;
    }

private:
    /// The comma that ends a value: not one in quotes, brackets or braces.
    static std::size_t end_of_value(std::string_view text) {
        int depth = 0;
        char quote = '\0';
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (quote != '\0') {
                quote = c == quote ? '\0' : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '[' || c == '{') {
                ++depth;
            } else if (c == ']' || c == '}') {
                --depth;
            } else if (c == ',' && depth == 0) {
                return i;
            }
        }
        return std::string_view::npos;
    }
    void read_pair(std::string_view text) {
        const std::size_t colon = text.find(':');
        if (colon == std::string_view::npos) {
            return;
        }
        const std::string_view key = trimmed(text.substr(0, colon));
        const std::string_view value = without_quotes(text.substr(colon + 1));
        if (key == "name") {
            column_ = value;
        } else if (key == "unit" && !column_.empty()) {
            units_[column_] = value;
        } else if (key == "delimiter" && (value.size() == 1 || value.empty())) {
            delimiter_ = value.empty() ? ' ' : value.front();
        }
    }

    std::string column_;
    std::map<std::string, std::string> units_;
    std::optional<char> delimiter_;
};

bool is_separator(char c) { return c == ',' || c == '\t' || c == ';' || c == '|'; }

/// The separator that stands in the line most often, outside quotes.
char likely_separator(std::string_view line) {
    std::array<std::pair<char, std::size_t>, 4> counts = {
        {{',', 0}, {'\t', 0}, {';', 0}, {'|', 0}}};
    bool quoted = false;
    for (const char c : line) {
        quoted = c == '"' ? !quoted : quoted;
        for (auto& [separator, count] : counts) {
            count += c == separator && !quoted ? 1U : 0U;
        }
    }
    const auto most =
        std::max_element(counts.begin(), counts.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return most->second > 0 ? most->first : kAnyBlanks;
}

/// Dashes and separators only, as VizieR draws below units.
bool is_ruler(std::string_view line) {
    return line.find("--") != std::string_view::npos &&
           std::all_of(line.begin(), line.end(),
                       [](char c) { return c == '-' || c == ' ' || is_separator(c); });
}

bool is_line_of_names(const std::vector<std::string_view>& fields) {
    return std::none_of(fields.begin(), fields.end(), [](std::string_view field) {
        return parse_number(field).state == FieldState::Given;
    });
}

}  // namespace

std::optional<double> epoch_of_comment(std::string_view line) {
    constexpr std::string_view kWord = "#Coosys";
    if (line.substr(0, kWord.size()) != kWord) {
        return std::nullopt;
    }
    line = trimmed(line.substr(kWord.size()));
    line = line.substr(0, line.find(':'));
    const std::size_t bar = line.find('_');
    if (bar == std::string_view::npos) {
        return std::nullopt;
    }
    const FieldNumber year = parse_number(line.substr(bar + 1));
    return year.state == FieldState::Given ? std::optional(year.value) : std::nullopt;
}

TextShape find_text_shape(std::string_view head, std::optional<char> separator) {
    TextShape shape;
    EcsvHeader ecsv;
    bool is_ecsv = false;
    HeadLines lines(head);
    std::string_view line;
    bool found = false;
    while (!found && lines.next(line)) {
        if (!line.empty() && line.front() == '#') {
            const std::string_view comment = line.substr(1);
            shape.has_comments = true;
            is_ecsv = is_ecsv || trimmed(comment).substr(0, 5) == "%ECSV";
            if (is_ecsv) {
                ecsv.read(comment);
            } else if (const std::optional<double> epoch = epoch_of_comment(line)) {
                shape.epoch = epoch;
            }
        } else {
            found = !trimmed(line).empty();
        }
        shape.lines_before_rows = lines.number() - 1;
    }
    if (!found) {
        return shape;
    }
    shape.separator = separator          ? *separator
                      : ecsv.delimiter() ? *ecsv.delimiter()
                                         : likely_separator(line);
    FieldSplitter names(shape.separator);
    if (!names.split(line)) {
        shape.quote_open = true;
        return shape;
    }
    shape.has_names = is_line_of_names(names.fields());
    for (const std::string_view name : names.fields()) {
        TableColumn column;
        if (shape.has_names) {
            column.name = name;
            column.unit = ecsv.unit_of(column.name);
        } else {
            column.sample = name;
        }
        shape.columns.push_back(std::move(column));
    }
    if (!shape.has_names) {
        return shape;
    }
    shape.lines_before_rows = lines.number();
    std::string_view units_line;
    std::string_view ruler;
    if (!lines.next(units_line) || !lines.next(ruler)) {
        ruler = {};
    }
    FieldSplitter units(shape.separator);
    if (is_ruler(units_line)) {
        shape.lines_before_rows += 1;
    } else if (is_ruler(ruler) && units.split(units_line)) {
        shape.lines_before_rows += 2;
        for (std::size_t i = 0; i < std::min(shape.columns.size(), units.fields().size()); ++i) {
            shape.columns[i].unit = units.fields()[i];
        }
    }
    return shape;
}

}  // namespace lumivar
