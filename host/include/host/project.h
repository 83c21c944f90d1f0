// One composition with its cameras and the layers that carry the effect.
#pragma once

#include <host/scene.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace host {

/// A fraction; `den` is not 0.
struct Ratio {
    std::int32_t num = 1;
    std::uint32_t den = 1;
};

/// A camera layer, active from `in_point` until just before `out_point` (seconds of composition
/// time). It has a place and a lens outside of that too.
struct CameraLayer {
    std::shared_ptr<const Camera> camera;
    double in_point = -std::numeric_limits<double>::infinity();
    double out_point = std::numeric_limits<double>::infinity();

    bool active_at(double seconds) const { return in_point <= seconds && seconds < out_point; }
};

/// A layer that carries the effect.
///
/// Its own time runs within the composition's: composition time = `start` + layer time * `stretch`.
/// A stretch below 0 plays the layer backwards; 0 is not allowed.
struct LayerSpec {
    std::vector<ControlSetting> controls;  ///< over layer time
    int width = 0;                         ///< pixels; 0: the composition's
    int height = 0;
    Ratio pixel_aspect;  ///< width of a pixel by its height
    Time start;          ///< composition time at which the layer's own is 0
    Ratio stretch;       ///< seconds of the composition to a second of the layer
    bool motion_blur = true;

    /// Exact: on the scale given where that holds the result, else in lowest terms. Throw
    /// `std::out_of_range` when it does not fit 32 bits, `std::invalid_argument` for a scale or
    /// stretch of 0.
    Time composition_time(Time layer_time) const;
    Time layer_time(Time composition_time) const;
};

struct Project {
    Project() = default;
    /// The scene's composition and camera, and one layer as large and as long as they.
    explicit Project(const Scene& scene);

    std::string source;  ///< for messages
    Composition composition;
    std::vector<CameraLayer> cameras;  ///< topmost first
    std::vector<LayerSpec> layers;

    /// The topmost active one; null when there is none.
    const CameraLayer* camera_at(double seconds) const;
};

}  // namespace host
