// The scenes of the golden pictures, understood once more: cameras, shutter and controls for the
// reference renderer from the plain numbers of a scene file, without any of the host's code.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "support/reference_renderer.h"

namespace golden {

/// A scene of tests/golden/scenes and the frame of it that the picture shows.
struct Name {
    const char* scene;
    int frame;
};

inline constexpr std::array<Name, 5> names = {
    {{"persp", 0}, {"hemisphere", 0}, {"equidistant", 0}, {"pan", 6}, {"near-stars", 12}}};

/// One frame as the reference renderer takes it.
struct Frame {
    reference::Settings settings;
    std::vector<reference::Camera> cameras;
};

/// Frame `index` of a scene file. Understands what the golden scenes use and throws
/// `std::runtime_error` for anything else, so that nothing is passed over in silence.
Frame load_frame(const std::string& scene_file, int index);

}  // namespace golden
