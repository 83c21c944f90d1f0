// A path as a scene's camera, with keys that an artist can type into the host as well.
#pragma once

#include <host/camera.h>
#include <host/scene.h>

#include <string>
#include <vector>

namespace lumivar {

/// How a scene tells where the camera stands and looks.
enum class Placing {
    /// Position and orientation, which can be typed into the host. The angles run on past 180
    /// degrees, so that
    /// what is drawn between two keys stays near the path; but near right ascension 0 h and 12 h on
    /// the equator
    /// the angles about x and z take over from each other, and it does not.
    Angles,
    Matrices  ///< near the path everywhere, for keys that are close enough
};

/// The text of a scene: `base`'s text (see scenes/README.md; comments are lost) with the camera in
/// place of its own, as keys. Throws `Failure`.
std::string scene_with_path(const std::string& base, const std::string& source,
                            const std::vector<host::CameraSample>& samples, Placing placing);

/// A scene to begin with: 1920x1080, as long as the path, distances taken as they are.
std::string new_scene(double frames_per_second, double last_second);

}  // namespace lumivar
