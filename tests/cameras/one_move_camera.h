// A camera of a file, and where the host's camera draws a star.
#pragma once

#include <host/camera.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>

#include "camera_opening.h"
#include "one_move.h"

namespace one_move {

/// The camera of a file, or of FILE:NAME, on a picture.
inline std::shared_ptr<const host::Camera> camera_of(const std::string& name,
                                                     const lumivar::CameraReading& reading = {},
                                                     const Picture& picture = {}) {
    const lumivar::CameraChoice choice = lumivar::parse_camera_choice(name);
    const lumivar::CameraPaths paths = lumivar::read_camera_paths(choice, reading);
    const auto other = host::look_at_camera(0.0, 0.0, 0.0, host::Lens::zoom(1234.0));
    return host::path_camera(lumivar::samples_on_picture(lumivar::only_path(paths, choice),
                                                         picture.width, picture.height, *other));
}

/// As the host has it: y down, and the rows of the matrix are the camera's axes.
inline Pixel drawn(const host::Camera& camera, double seconds, const Star& star,
                   const Picture& picture = {}) {
    const host::Matrix m = camera.layer_to_world(seconds);
    const Vector sky = star.place();
    const Vector v = {sky[0] - m[12], -sky[2] - m[13], sky[1] - m[14]};
    std::array<double, 3> in_camera{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        in_camera[axis] = dot(v, {m[4 * axis], m[4 * axis + 1], m[4 * axis + 2]});
    }
    const double zoom = camera.zoom(seconds);
    return {picture.width / 2.0 + zoom * in_camera[0] / in_camera[2],
            picture.height / 2.0 + zoom * in_camera[1] / in_camera[2]};
}

}  // namespace one_move
