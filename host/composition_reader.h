// The "composition" object of a scene.
#pragma once

#include "json_node.h"

#include <host/scene.h>

namespace host {

/// Throws `SceneError`.
Composition read_composition(const JsonNode& node);

}  // namespace host
