// The "controls" object of a scene.
#pragma once

#include "json_node.h"

#include <host/scene.h>

#include <vector>

namespace host {

/// Throws `SceneError`.
std::vector<ControlSetting> read_controls(const JsonNode& node);

}  // namespace host
