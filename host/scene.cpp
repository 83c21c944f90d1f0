// Scenes from files and texts.
#include <host/scene.h>

#include "camera_reader.h"
#include "composition_reader.h"
#include "control_reader.h"
#include "json_node.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace host {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string read_file(const std::string& path) {
    // Far above any scene: a wrong file, or an endless one, is told at once.
    constexpr std::size_t kLargest = std::size_t{64} << 20U;
    const auto fail = [&path](int error) {
        throw SceneError(path + ": cannot read the scene: " + std::strerror(error));
    };
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        fail(errno);
    }
    std::string text;
    std::array<char, 65536> block;
    errno = 0;
    while (const std::size_t read = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), read);
        if (text.size() > kLargest) {
            throw SceneError(path + ": expected a scene, found a file of more than 64 MiB");
        }
    }
    if (std::ferror(file.get()) != 0) {
        fail(errno);
    }
    return text;
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
