// The scenes by which processors are compared: made from fixed seeds, the same everywhere.
#pragma once

#include <host/scene.h>

#include <functional>
#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/reference_renderer.h"

namespace processors {

struct DumpedScene {
    std::string name;
    host::Scene scene;
    std::vector<support::CatalogueStar> stars;
    /// The same for the reference renderer, to know how far the stars move.
    reference::Settings settings;
    std::function<reference::Camera(double seconds)> camera;
};

/// Every projection, still and with one and more segments; every control that changes the picture.
std::vector<DumpedScene> dumped_scenes();

/// Length in pixels of the shortest segment that a star draws between samples of the camera at
/// `times`, still ones (shorter than 1e-5) left out; infinite without any.
double shortest_segment(const DumpedScene& of, const std::vector<host::Time>& times);

}  // namespace processors
