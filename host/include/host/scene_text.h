// The text of a scene, as it stands in its file.
#pragma once

#include <string>

namespace host {

/// Far more than any scene has; stops the reading of a wrong or endless file.
inline constexpr int kLargestSceneMebibytes = 64;

/// What messages call the scene at `path`: "standard input" for "-", else the path.
std::string name_of_scene(const std::string& path);

/// Reads the file at `path`, which may be a pipe, to its end; "-" is standard input. Throws
/// `SceneError` when it cannot be read, holds a byte that no text has (0 or 0xFF), or is larger
/// than `most_mebibytes`.
std::string read_scene_text(const std::string& path, int most_mebibytes = kLargestSceneMebibytes);

}  // namespace host
