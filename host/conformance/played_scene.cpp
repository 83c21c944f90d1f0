#include "played_scene.h"

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

}  // namespace conformance
