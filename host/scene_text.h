// The text of a scene, as it stands in its file.
#pragma once

#include <string>

namespace host {

/// Far above any scene: a wrong file, or an endless one, is told.
inline constexpr int kLargestSceneMebibytes = 64;

/// Reads the file at `path`, which may be a pipe, to its end. Throws `SceneError` when it cannot be
/// read, holds a byte that no text has (0 or 0xFF), or is larger than `most_mebibytes`.
std::string read_scene_text(const std::string& path, int most_mebibytes = kLargestSceneMebibytes);

}  // namespace host
