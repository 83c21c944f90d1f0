#include "samples_json.h"

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "json_place.h"

namespace lumivar {
namespace {

double number_above_0(const JsonPlace& place) {
    const double number = place.number();
    if (!(number > 0.0)) {
        place.fail("a number above 0");
    }
    return number;
}

FileCameraSample read_sample(const JsonPlace& place) {
    FileCameraSample sample;
    sample.time = place["time"].number();
    const JsonPlace matrix = place["matrix"];
    matrix.array(16);
    for (std::size_t i = 0; i < 16; ++i) {
        sample.camera_to_world[i] = matrix[i].number();
    }
    if (place.has("focal_length") || place.has("horizontal_aperture")) {
        sample.lens = FileLens::film(number_above_0(place["focal_length"]),
                                     number_above_0(place["horizontal_aperture"]));
    }
    return sample;
}

FileCamera read_camera(const JsonPlace& place) {
    FileCamera camera;
    camera.name = place["name"].text();
    if (const auto up = place.find("up_axis")) {
        const std::string axis = up->text();
        if (axis != "Y" && axis != "Z") {
            up->fail("\"Y\" or \"Z\"");
        }
        camera.up = axis == "Z" ? UpAxis::Z : UpAxis::Y;
    }
    const JsonPlace samples = place["samples"];
    if (samples.array().size() == 0) {
        samples.fail("one sample at least");
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const FileCameraSample sample = read_sample(samples[i]);
        if (i > 0 && !(sample.time > camera.samples.back().time)) {
            samples[i]["time"].fail("a time after the one before");
        }
        camera.samples.push_back(sample);
    }
    return camera;
}

}  // namespace

CameraFile read_camera_json(const std::string& text, const std::string& source) {
    const auto document = parse_document(text, source);
    const JsonPlace root(*document, source);
    CameraFile file;
    const JsonPlace cameras = root["cameras"];
    for (std::size_t i = 0; i < cameras.array().size(); ++i) {
        file.cameras.push_back(read_camera(cameras[i]));
    }
    if (const auto warnings = root.find("warnings")) {
        for (std::size_t i = 0; i < warnings->array().size(); ++i) {
            file.warnings.push_back((*warnings)[i].text());
        }
    }
    return file;
}

}  // namespace lumivar
