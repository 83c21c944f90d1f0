// Any bytes as a camera file of each kind: refused in one line, or cameras that turn and do nothing
// else at all times; and what is written of them as a .chan file is the same camera again. The last
// byte chooses the kind.
#include <host/camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "camera_opening.h"
#include "camera_path.h"
#include "chan_file.h"
#include "csv_file.h"
#include "failure.h"
#include "gltf_file.h"
#include "harness.h"
#include "input_file.h"
#include "samples_json.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

lumivar::CameraFile read(const std::string& text, int kind) {
    const lumivar::CameraReading reading;
    switch (kind) {
        case 0:
            return lumivar::read_chan(text, "a.chan", reading);
        case 1:
            return lumivar::read_camera_csv(text, "a.csv", reading);
        case 2:
            return lumivar::read_camera_json(text, "a.json");
        default:
            return lumivar::read_gltf(input_file("a.gltf", text), "");
    }
}

std::vector<host::CameraSample> on_picture(const lumivar::FileCamera& camera) {
    const auto other = host::look_at_camera(0.0, 0.0, 0.0, host::Lens::zoom(1000.0));
    return lumivar::samples_on_picture(lumivar::world_path(camera, 1.0, "a"), kWidth, kHeight,
                                       *other);
}

void expect_turn(const host::Matrix& m) {
    for (std::size_t a = 0; a < 3; ++a) {
        for (std::size_t b = 0; b <= a; ++b) {
            const double product =
                m[4 * a] * m[4 * b] + m[4 * a + 1] * m[4 * b + 1] + m[4 * a + 2] * m[4 * b + 2];
            require(std::abs(product - (a == b ? 1.0 : 0.0)) < 1e-6, "a camera is not square");
        }
    }
}

void expect_same(const host::CameraSample& got, const host::CameraSample& want) {
    require(std::abs(got.time - want.time) <= 1e-9 * std::max(1.0, std::abs(want.time)),
            "a time is another one");
    for (std::size_t i = 0; i < 15; ++i) {
        const double scale = i < 12 ? 1.0 : std::max(1e-300, std::abs(want.layer_to_world[i]));
        require(std::abs(got.layer_to_world[i] - want.layer_to_world[i]) <= 1e-9 * scale,
                "a camera written is not the camera read");
    }
    // A lens of millions of pixels has an angle of few digits.
    require(std::abs(got.zoom / want.zoom - 1.0) < 1e-6, "a lens written is not the lens read");
}

void judge(const lumivar::FileCamera& camera) {
    const std::vector<host::CameraSample> samples = on_picture(camera);
    const auto path = host::path_camera(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double next = samples[std::min(i + 1, samples.size() - 1)].time;
        for (const double part : {0.0, 0.3, 0.5}) {
            const double time = samples[i].time + part * (next - samples[i].time);
            expect_turn(path->layer_to_world(time));
            require(path->zoom(time) > 0.0, "a zoom is not above 0");
        }
    }
    // Times that a number of frames cannot hold apart come together in a .chan.
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i].time - samples[i - 1].time < 1e-6) {
            return;
        }
    }
    const lumivar::CameraReading written;
    const auto again = on_picture(
        lumivar::read_chan(lumivar::chan_text(samples, kHeight, written), "b.chan", written)
            .cameras.front());
    require(again.size() == samples.size(), "samples are lost");
    for (std::size_t i = 0; i < samples.size(); ++i) {
        expect_same(again[i], samples[i]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text = text_of(data, size - 1);
    try {
        const lumivar::CameraFile file = read(text, data[size - 1] % 4);
        for (const lumivar::FileCamera& camera : file.cameras) {
            require(!camera.samples.empty(), "a camera without samples");
            judge(camera);
        }
    } catch (const lumivar::Failure& failure) {
        require(*failure.what() != '\0', "a failure says nothing");
    }
    return 0;
}
