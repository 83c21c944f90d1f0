// The move as a glTF file.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "gltf_writer.h"
#include "one_move.h"

namespace one_move {

using Quaternion = std::array<double, 4>;  // x, y, z, w

inline Quaternion quaternion(std::size_t axis, double degrees) {
    Quaternion q = {0, 0, 0, std::cos(degrees * kDegree / 2)};
    q[axis] = std::sin(degrees * kDegree / 2);
    return q;
}

/// Hamilton's product: `b` turns first.
inline Quaternion times(const Quaternion& a, const Quaternion& b) {
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
            a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

/// The keys of the move. With `z_up` all is turned by a quarter about x, which takes y to z.
inline GltfWriter gltf_keys(bool z_up = false) {
    std::vector<double> times_of_keys, positions, turns, lenses;
    for (const Moment& m : moments()) {
        times_of_keys.push_back(m.frame / kFramesPerSecond);
        const Vector position = position_of(m, z_up);
        positions.insert(positions.end(), position.begin(), position.end());
        const Quaternion q =
            times(quaternion(0, z_up ? 90.0 : 0.0),
                  times(quaternion(1, m.angles[1]),
                        times(quaternion(0, m.angles[0]), quaternion(2, m.angles[2]))));
        turns.insert(turns.end(), q.begin(), q.end());
        lenses.push_back(m.vertical_fov * kDegree);
    }
    GltfWriter writer;
    writer.add("SCALAR", times_of_keys);
    writer.add("VEC3", positions);
    writer.add("VEC4", turns);
    writer.add("SCALAR", lenses);
    return writer;
}

/// The document's members: the position on a node above that of the camera "head", the turn on
/// its own, the lens by a pointer. Another camera stands still. `more` is said of the lens.
inline std::string gltf_members(const std::string& more = "") {
    return R"("nodes": [{"name": "dolly", "children": [1]}, {"name": "head", "camera": 0},
                 {"name": "witness", "camera": 1}],
       "cameras": [{"type": "perspective", "perspective": {"yfov": 1, "znear": 0.1)" +
           more + R"(}},
                   {"type": "perspective", "perspective": {"yfov": 1, "znear": 0.1}}],
       "animations": [{"samplers": [{"input": 0, "output": 1}, {"input": 0, "output": 2},
                                    {"input": 0, "output": 3}],
         "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}},
                      {"sampler": 1, "target": {"node": 1, "path": "rotation"}},
                      {"sampler": 2, "target": {"path": "pointer", "extensions":
                        {"KHR_animation_pointer": {"pointer": "/cameras/0/perspective/yfov"}}}}]}])";
}

}  // namespace one_move
