// The cameras of a glTF 2.0 file, .gltf or .glb: its nodes, their perspective lenses and what its
// animations do to a camera's node and to those above it.
#pragma once

#include <string>

#include "camera_file.h"

namespace lumivar {

/// A camera is called after its node, or after itself where the node has no name. A path is sampled
/// at the keys of all that moves it, and in between wherever the straight way would differ by more
/// than a millionth of a radian, a ten-millionth of the path's extent or a millionth of its zoom.
/// The way between two keys is divided into 4096 parts at most.
///
/// With a `name` that camera alone is read. Without (empty) all are, and of several the ones that
/// cannot be used are left out with a warning. Animations of anything else are not looked at.
/// Throws `Failure`, also where the file's cameras have other names.
CameraFile read_gltf(const std::string& path, const std::string& name);

}  // namespace lumivar
