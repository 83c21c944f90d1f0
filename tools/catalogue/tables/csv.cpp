#include "tables/csv.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace lumivar {
namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// A field as it may stand in a message: short and printable.
std::string shown(std::string_view text) {
    constexpr std::size_t kLongest = 40;
    std::string result;
    for (const char character : text.substr(0, kLongest)) {
        result += character >= ' ' && character <= '~' ? character : '?';
    }
    return text.size() > kLongest ? result + "..." : result;
}

}  // namespace

bool split_csv_line(std::string_view line, std::vector<std::string>& fields) {
    std::size_t count = 0;
    for (;;) {
        if (count == fields.size()) {
            fields.emplace_back();
        }
        std::string& field = fields[count++];
        const std::size_t start = std::min(line.find_first_not_of(kBlanks), line.size());
        if (start < line.size() && line[start] == '"') {
            field.clear();
            std::size_t at = start + 1;
            for (; at < line.size(); ++at) {
                if (line[at] != '"') {
                    field += line[at];
                } else if (at + 1 < line.size() && line[at + 1] == '"') {
                    field += '"';
                    ++at;
                } else {
                    break;
                }
            }
            if (at == line.size()) {
                return false;
            }
            line.remove_prefix(at + 1);
            line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
            if (!line.empty() && line.front() != ',') {
                return false;
            }
        } else {
            const std::size_t comma = std::min(line.find(','), line.size());
            field = trimmed(line.substr(0, comma));
            line.remove_prefix(comma);
        }
        if (line.empty()) {
            fields.resize(count);
            return true;
        }
        line.remove_prefix(1);
    }
}

CsvReader::CsvReader(LineReader& lines, const std::string& example) : lines_(lines) {
    std::string_view line;
    if (!lines_.next(line)) {
        throw Failure(lines_.name() +
                      ": is empty; it must begin with a line that names the columns: " + example);
    }
    if (!split_csv_line(line, header_)) {
        throw failure("a double quote is not closed");
    }
}

std::optional<std::size_t> CsvReader::column(std::string_view name) const {
    const auto found = std::find(header_.begin(), header_.end(), name);
    if (found == header_.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - header_.begin());
}

std::size_t CsvReader::required_column(std::string_view name) const {
    const std::optional<std::size_t> index = column(name);
    if (index) {
        return *index;
    }
    std::string names;
    for (const std::string& present : header_) {
        names += (names.empty() ? "" : ", ") + shown(present);
    }
    throw Failure(lines_.name() + ":1: there is no column \"" + std::string(name) +
                  "\"; the header line names: " + names);
}

bool CsvReader::next() {
    std::string_view line;
    do {
        if (!lines_.next(line)) {
            return false;
        }
    } while (trimmed(line).empty());
    if (!split_csv_line(line, fields_)) {
        throw failure("a double quote is not closed, or text follows it");
    }
    if (fields_.size() != header_.size()) {
        throw failure("has " + std::to_string(fields_.size()) + " fields where the header names " +
                      std::to_string(header_.size()) +
                      "; leave an unknown field empty, but keep its comma");
    }
    return true;
}

Failure CsvReader::failure(const std::string& text) const {
    return Failure(lines_.name() + ":" + std::to_string(lines_.number()) + ": " + text);
}

double CsvReader::number(std::size_t column, double low, double high, const char* remedy) const {
    const std::string& text = fields_[column];
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (begin != end && *begin == '+') {
        ++begin;  // the standard's parser knows no plus sign
    }
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(begin, end, value);
    std::string fault;
    if (text.empty()) {
        fault = "is empty";
    } else if (result.ec == std::errc::invalid_argument || result.ptr != end ||
               !std::isfinite(value)) {
        fault = "\"" + shown(text) + "\" is not a number";
    } else if (result.ec == std::errc::result_out_of_range || value < low || value > high) {
        fault = shown(text) + " is out of range";
    } else {
        return value;
    }
    throw failure("column " + std::to_string(column + 1) + " (" + header_[column] + "): " + fault +
                  "; " + remedy);
}

}  // namespace lumivar
