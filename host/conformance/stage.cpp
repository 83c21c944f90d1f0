#include "stage.h"

#include <host/camera.h>

namespace conformance {

host::Scene pan_scene() {
    host::Scene scene;
    scene.source = "conformance run";
    scene.composition.width = 48;
    scene.composition.height = 27;
    scene.composition.duration = 2.0;
    scene.composition.motion_blur = true;
    scene.camera = host::look_at_camera(host::Track({{0.0, 80.0}, {2.0, 86.0}}), 0.0, 0.0,
                                        host::Lens::vertical_fov(40.0, scene.composition.height));
    return scene;
}

std::vector<std::byte> pixels(const host::Frame& frame) {
    std::vector<std::byte> all;
    const std::size_t row = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(bytes_per_pixel(frame.world.depth()));
    for (int y = 0; y < frame.world.height(); ++y) {
        all.insert(all.end(), frame.world.row(y), frame.world.row(y) + row);
    }
    return all;
}

}  // namespace conformance
