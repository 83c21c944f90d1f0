// The six faces of a cube around the camera.
#pragma once

#include <host/scene.h>

#include <array>
#include <string>
#include <vector>

namespace lumivar {

/// In the order of the faces of `cube_scenes`. Front is where the scene's camera looks; right, back
/// and left follow when it turns to the right, up and down when it tilts from the front.
inline constexpr std::array<const char*, 6> kCubeFaces = {"front", "right", "back",
                                                          "left",  "up",    "down"};
/// What stands for a face's name in the pictures' name.
inline constexpr char kFacePlace[] = "FACE";

/// A scene for each face: `side` x `side` pixels, 90 degrees wide and high, in perspective. Faces
/// that share an edge show a star there at the same place of it. A scene without a camera is looked
/// at from the Sun, toward right ascension 0 h on the equator.
std::vector<host::Scene> cube_scenes(const host::Scene& scene, int side);

/// The pictures' name of a face. Throws `UsageError` for a pattern whose file's name has no
/// `kFacePlace`.
std::string face_pattern(const std::string& pattern, const std::string& face);

}  // namespace lumivar
