// The members of a scene, each read by a function of its own; all throw `SceneError`.
#pragma once

#include <host/camera.h>
#include <host/scene.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "json_node.h"

namespace host {

Composition read_composition(const JsonNode& node);

/// `composition` gives the defaults of a new camera and the height that an angle of view spans;
/// `stars` finds stars by name.
std::shared_ptr<const Camera> read_camera(const JsonNode& node, const Composition& composition,
                                          const StarResolver& stars);

/// A control's value, whatever its kind.
std::variant<Track, std::string, Colour> read_control_value(const JsonNode& node);
std::vector<ControlSetting> read_controls(const JsonNode& node);

Picture read_picture(const JsonNode& node);

}  // namespace host
