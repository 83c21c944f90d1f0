// Scenes from files and texts.
#include <host/scene.h>
#include <osapi/reason.h>
#include <osapi/streams.h>

#include "camera_reader.h"
#include "composition_reader.h"
#include "control_reader.h"
#include "json_node.h"

#include <array>

namespace host {

namespace {

std::string read_file(const std::string& path) {
    // Far above any scene: a wrong file, or an endless one, is told at once.
    constexpr std::size_t kLargest = std::size_t{64} << 20U;
    try {
        OSAPI::DiskFile file(path.c_str(), OSAPI::kRead);
        OSAPI::FileInput input(file);
        std::string text;
        std::array<char, 65536> block;
        while (const int count = input.read(block.data(), block.size())) {
            text.append(block.data(), static_cast<std::size_t>(count));
            if (text.size() > kLargest) {
                throw SceneError(path + ": expected a scene, found a file of more than 64 MiB");
            }
        }
        return text;
    } catch (const StrXception& failure) {
        throw SceneError(path + ": cannot read the scene: " + OSAPI::reason(failure).c_str());
    }
}

}  // namespace

Scene load_scene(const std::string& path) { return parse_scene(read_file(path), path); }

Scene parse_scene(const std::string& text, const std::string& source) {
    if (text.empty()) {
        throw SceneError(source + ": expected a scene (a JSON object), found an empty file");
    }
    const Json document = parse_json(text, source);
    const JsonNode root(document, source);
    root.expect_members({"composition", "camera", "controls"});
    Scene scene;
    scene.source = source;
    if (root.has("composition")) {
        scene.composition = read_composition(root["composition"]);
    }
    if (root.has("camera")) {
        scene.camera = read_camera(root["camera"], scene.composition);
    }
    if (root.has("controls")) {
        scene.controls = read_controls(root["controls"]);
    }
    return scene;
}

}  // namespace host
