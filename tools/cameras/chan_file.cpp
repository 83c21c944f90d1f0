#include "chan_file.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include "failure.h"
#include "file_axes.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

constexpr std::array<const char*, 8> kChanColumns = {"frame", "tx", "ty", "tz",
                                                     "rx",    "ry", "rz", "vertical_fov"};

std::vector<double> numbers_of_line(const TextLine& line, const std::string& place) {
    std::vector<double> numbers;
    std::string_view rest = line.text;
    while (!rest.empty()) {
        const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
        const auto number = finite_number(word);
        if (!number) {
            throw Failure(place + ": expected a number, found \"" +
                          std::string(word.substr(0, 40)) + "\"");
        }
        numbers.push_back(*number);
        rest = trimmed(rest.substr(word.size()));
    }
    return numbers;
}

}  // namespace

CameraFile read_chan(std::string_view text, const std::string& source,
                     const CameraReading& reading) {
    FileCamera camera;
    camera.name = std::filesystem::path(source).stem().string();
    camera.up = reading.up.value_or(UpAxis::Y);
    std::size_t columns = 0;
    double last_frame = 0.0;
    for (const TextLine& line : content_lines(text)) {
        const std::string place = source + ": line " + std::to_string(line.number);
        const std::vector<double> numbers = numbers_of_line(line, place);
        if (numbers.size() != kChanColumns.size() && numbers.size() + 1 != kChanColumns.size()) {
            throw Failure(place +
                          ": expected 8 numbers (frame tx ty tz rx ry rz vertical_fov) or 7 "
                          "without the last, found " +
                          std::to_string(numbers.size()));
        }
        if (columns != 0 && numbers.size() != columns) {
            throw Failure(place + ": expected " + std::to_string(columns) +
                          " numbers as in the lines before, found " +
                          std::to_string(numbers.size()));
        }
        if (columns != 0 && !(numbers[0] > last_frame)) {
            throw Failure(place + ": expected a frame after " + number_text(last_frame) +
                          ", found " + number_text(numbers[0]));
        }
        columns = numbers.size();
        last_frame = numbers[0];
        FileCameraSample sample;
        sample.time = (numbers[0] - reading.first_frame) / reading.frames_per_second;
        sample.camera_to_world =
            moved(reading.rotation_order.matrix({numbers[4], numbers[5], numbers[6]}),
                  {numbers[1], numbers[2], numbers[3]});
        if (columns == kChanColumns.size()) {
            if (!(numbers[7] > 0.0 && numbers[7] < 180.0)) {
                throw Failure(place +
                              ": expected a vertical field of view above 0 and below 180 degrees, "
                              "found " +
                              number_text(numbers[7]));
            }
            sample.lens = FileLens::vertical_fov(numbers[7]);
        }
        camera.samples.push_back(sample);
    }
    if (camera.samples.empty()) {
        throw Failure(source + ": there is no line of numbers in it");
    }
    CameraFile file;
    file.cameras.push_back(camera);
    return file;
}

std::string chan_text(const std::vector<host::CameraSample>& samples, int height,
                      const CameraReading& reading) {
    std::string text = "#";
    for (const char* column : kChanColumns) {
        text.append(" ").append(column);
    }
    std::array<double, 3> angles = {};
    for (const host::CameraSample& sample : samples) {
        const host::Matrix matrix =
            file_matrix(sample.layer_to_world, reading.up.value_or(UpAxis::Y));
        angles = reading.rotation_order.angles(matrix, angles);
        const double fov = 2.0 * std::atan(height / 2.0 / sample.zoom) * (180.0 / std::numbers::pi);
        // What is a whole frame but for rounding is written as one.
        const double frame = sample.time * reading.frames_per_second + reading.first_frame;
        const double whole = std::round(frame);
        text.append("\n").append(number_text(std::abs(frame - whole) < 1e-9 ? whole : frame));
        for (std::size_t i = 12; i < 15; ++i) {
            text.append(" ").append(number_text(matrix[i] / reading.parsecs_per_unit));
        }
        for (const double angle : angles) {
            text.append(" ").append(number_text(angle));
        }
        text.append(" ").append(number_text(fov));
    }
    return text + "\n";
}

}  // namespace lumivar
