// The "camera" object of a scene.
#pragma once

#include "json_node.h"

#include <host/camera.h>

#include <memory>

namespace host {

/// Throws `SceneError`. `composition` gives the defaults of a new camera and the height that an
/// angle of view spans.
std::shared_ptr<const Camera> read_camera(const JsonNode& node, const Composition& composition);

}  // namespace host
