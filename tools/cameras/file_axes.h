// From a file's axes to the composition's world, and back.
//
// With y up (x, y, z) becomes (x, -y, -z), a half turn about x, of the world and of the camera's
// own axes; a world with z up is first turned into its twin with y up: (x, y, z) becomes (x, z,
// -y). So a file with z up has the equatorial axes: x to right ascension 0 h, y to 6 h, z north.
#pragma once

#include <host/scene.h>

#include "camera_file.h"

namespace lumivar {

/// A camera-to-world matrix of a file as the host's layer-to-world matrix.
host::Matrix world_matrix(const host::Matrix& camera_to_world, UpAxis up);

/// And back.
host::Matrix file_matrix(const host::Matrix& layer_to_world, UpAxis up);

}  // namespace lumivar
