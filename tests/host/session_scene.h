// A small scene with a plain camera, for tests that play one.
#pragma once

#include <host/scene.h>

#include <memory>
#include <string>
#include <utility>

namespace session_scene {

/// Stands at x = 100 + seconds, looks along +z; its zoom is 50 + 2 seconds.
class PlainCamera : public host::Camera {
public:
    host::Matrix layer_to_world(double seconds) const override {
        return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 100.0 + seconds, 7, -9, 1};
    }
    double zoom(double seconds) const override { return 50.0 + 2.0 * seconds; }
};

inline host::Scene small_scene(int width = 64, int height = 36) {
    host::Scene scene;
    scene.source = "test";
    scene.composition.width = width;
    scene.composition.height = height;
    scene.composition.duration = 2.0;
    scene.camera = std::make_shared<PlainCamera>();
    return scene;
}

inline host::ControlSetting set(std::string name, decltype(host::ControlSetting::value) value) {
    std::string place = "test: /controls/" + name;
    return {std::move(name), std::move(place), std::move(value)};
}

}  // namespace session_scene
