// Scenes from files and texts.
#include <host/scene.h>
#include <host/scene_text.h>

#include <string>

#include "json_node.h"
#include "scene_readers.h"

namespace host {

Scene load_scene(const std::string& path, const StarResolver& stars) {
    return parse_scene(read_scene_text(path), name_of_scene(path), stars);
}

Scene parse_scene(const std::string& text, const std::string& source, const StarResolver& stars) {
    if (text.empty()) {
        throw SceneError(source + ": expected a scene (a JSON object), found an empty file");
    }
    const auto document = parse_json(text, source);
    const JsonNode root(*document, source);
    root.expect_members({"composition", "camera", "controls", "picture"});
    Scene scene;
    scene.source = source;
    if (root.has("composition")) {
        scene.composition = read_composition(root["composition"]);
    }
    if (root.has("camera")) {
        scene.camera = read_camera(root["camera"], scene.composition, stars);
    }
    if (root.has("controls")) {
        scene.controls = read_controls(root["controls"]);
    }
    if (root.has("picture")) {
        scene.picture = read_picture(root["picture"]);
    }
    return scene;
}

ControlSetting parse_control(const std::string& name, const std::string& text,
                             const std::string& place) {
    const auto document = parse_json(text, place);
    return {name, place, read_control_value(JsonNode(*document, place))};
}

}  // namespace host
