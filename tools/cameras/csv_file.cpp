#include "csv_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "failure.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

std::vector<std::string> split_fields(std::string_view line, char separator) {
    std::vector<std::string> fields;
    while (true) {
        const std::size_t end = line.find(separator);
        std::string_view field = trimmed(line.substr(0, end));
        if (field.size() > 1 && field.front() == '"' && field.back() == '"') {
            field = trimmed(field.substr(1, field.size() - 2));
        }
        fields.emplace_back(field);
        if (end == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(end + 1);
    }
}

std::string small_letters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

std::vector<std::string> matrix_columns() {
    std::vector<std::string> names;
    for (char row = '0'; row < '4'; ++row) {
        for (char column = '0'; column < '4'; ++column) {
            names.push_back(std::string("m") + row + column);
        }
    }
    return names;
}

/// Which column has which name.
class Header {
public:
    Header(const TextLine& line, char separator, const std::string& source)
        : place_(source + ": line " + std::to_string(line.number)) {
        for (const std::string& field : split_fields(line.text, separator)) {
            const std::string name = small_letters(field);
            if (!columns_.emplace(name, count_++).second) {
                throw Failure(place_ + ": the column \"" + field + "\" stands there twice");
            }
        }
    }

    std::size_t count() const { return count_; }
    /// The columns of these names; nothing if none of them is there. Throws `Failure` where only
    /// some are.
    std::vector<std::size_t> take(const std::vector<std::string>& names) {
        std::vector<std::size_t> found;
        std::string missing;
        for (const std::string& name : names) {
            if (const auto column = columns_.find(name); column != columns_.end()) {
                found.push_back(column->second);
            } else {
                missing.append(missing.empty() ? "" : ", ").append(name);
            }
        }
        if (!found.empty() && !missing.empty()) {
            throw Failure(place_ + ": there is no column " + missing);
        }
        if (missing.empty()) {
            taken_.insert(names.begin(), names.end());
        }
        return found;
    }
    /// The columns of one of two groups of names, or of neither.
    std::pair<std::vector<std::size_t>, std::vector<std::size_t>> take_one(
        const std::vector<std::string>& first, const std::vector<std::string>& second) {
        std::pair<std::vector<std::size_t>, std::vector<std::size_t>> found = {take(first),
                                                                               take(second)};
        if (!found.first.empty() && !found.second.empty()) {
            fail("give either " + first.front() + " or " + second.front() + ", not both");
        }
        return found;
    }
    [[noreturn]] void fail(const std::string& complaint) const {
        throw Failure(place_ + ": " + complaint);
    }
    /// Names that nobody took.
    std::string left_over() const {
        std::string names;
        for (const auto& [name, column] : columns_) {
            if (taken_.count(name) == 0) {
                names.append(names.empty() ? "\"" : ", \"").append(name).append("\"");
            }
        }
        return names;
    }

private:
    std::string place_;
    std::size_t count_ = 0;
    std::map<std::string, std::size_t> columns_;
    std::set<std::string> taken_;
};

struct Columns {
    std::vector<std::size_t> time, frame, position_and_angles, matrix, fov, film;
};

Columns columns_of(Header& header) {
    Columns columns;
    std::tie(columns.time, columns.frame) = header.take_one({"time"}, {"frame"});
    if (columns.time.empty() && columns.frame.empty()) {
        header.fail("there is no column time (in seconds) or frame");
    }
    std::tie(columns.position_and_angles, columns.matrix) =
        header.take_one({"tx", "ty", "tz", "rx", "ry", "rz"}, matrix_columns());
    if (columns.position_and_angles.empty() && columns.matrix.empty()) {
        header.fail("there are no columns tx, ty, tz, rx, ry, rz and none from m00 to m33");
    }
    std::tie(columns.fov, columns.film) =
        header.take_one({"vfov"}, {"focal_length", "horizontal_aperture"});
    return columns;
}

/// The fields of a line as numbers. Columns that nobody took are not looked at and may hold texts.
class Row {
public:
    Row(const TextLine& line, char separator, const Header& header, const std::string& source)
        : place_(source + ": line " + std::to_string(line.number)),
          fields_(split_fields(line.text, separator)) {
        if (fields_.size() != header.count()) {
            throw Failure(place_ + ": expected " + std::to_string(header.count()) +
                          " fields, found " + std::to_string(fields_.size()));
        }
    }
    double number(std::size_t column) const {
        const auto number = finite_number(fields_[column]);
        if (!number) {
            fail("expected a number in column " + std::to_string(column + 1) + ", found \"" +
                 fields_[column].substr(0, 40) + "\"");
        }
        return *number;
    }
    [[noreturn]] void fail(const std::string& complaint) const {
        throw Failure(place_ + ": " + complaint);
    }

private:
    std::string place_;
    std::vector<std::string> fields_;
};

host::Matrix placing_of(const Row& row, const Columns& columns, const RotationOrder& order) {
    host::Matrix matrix{};
    if (!columns.matrix.empty()) {
        std::transform(columns.matrix.begin(), columns.matrix.end(), matrix.begin(),
                       [&](std::size_t column) { return row.number(column); });
        return matrix;
    }
    std::array<double, 6> numbers{};
    std::transform(columns.position_and_angles.begin(), columns.position_and_angles.end(),
                   numbers.begin(), [&](std::size_t column) { return row.number(column); });
    return moved(order.matrix({numbers[3], numbers[4], numbers[5]}),
                 {numbers[0], numbers[1], numbers[2]});
}

std::optional<FileLens> lens_of(const Row& row, const Columns& columns) {
    if (!columns.fov.empty()) {
        const double fov = row.number(columns.fov.front());
        if (!(fov > 0.0 && fov < 180.0)) {
            row.fail("expected a vfov above 0 and below 180 degrees, found " + number_text(fov));
        }
        return FileLens::vertical_fov(fov);
    }
    if (!columns.film.empty()) {
        const double focal_length = row.number(columns.film[0]);
        const double aperture = row.number(columns.film[1]);
        if (!(focal_length > 0.0 && aperture > 0.0)) {
            row.fail("expected a focal_length and a horizontal_aperture above 0, found " +
                     number_text(focal_length) + " and " + number_text(aperture));
        }
        return FileLens::film(focal_length, aperture);
    }
    return std::nullopt;
}

}  // namespace

CameraFile read_camera_csv(std::string_view text, const std::string& source,
                           const CameraReading& reading) {
    const std::vector<TextLine> lines = content_lines(text);
    if (lines.size() < 2) {
        throw Failure(source + ": expected a line of column names and lines of numbers");
    }
    const std::string_view names = lines.front().text;
    const std::size_t first_separator = names.find_first_of(",;\t");
    const char separator = first_separator == std::string_view::npos ? ',' : names[first_separator];
    Header header(lines.front(), separator, source);
    const Columns columns = columns_of(header);
    FileCamera camera;
    camera.name = std::filesystem::path(source).stem().string();
    camera.up = reading.up.value_or(UpAxis::Y);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const Row row(lines[i], separator, header, source);
        FileCameraSample sample;
        sample.time = columns.time.empty()
                          ? (row.number(columns.frame.front()) - reading.first_frame) /
                                reading.frames_per_second
                          : row.number(columns.time.front());
        if (!camera.samples.empty() && !(sample.time > camera.samples.back().time)) {
            row.fail("its time is not after that of the line before");
        }
        sample.camera_to_world = placing_of(row, columns, reading.rotation_order);
        sample.lens = lens_of(row, columns);
        camera.samples.push_back(sample);
    }
    CameraFile file;
    file.cameras.push_back(camera);
    if (const std::string names_left = header.left_over(); !names_left.empty()) {
        file.warnings.push_back("no use is made of the columns " + names_left);
    }
    return file;
}

}  // namespace lumivar
