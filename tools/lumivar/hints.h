// Settings of a scene that a frame does not show, or that make it black, in words and with what to
// do.
//
// The effect takes all of them without a word, as it must for the sake of saved projects. Hints are
// the command line's alone.
#pragma once

#include <host/controls.h>
#include <host/scene.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumivar {

/// What is known of the database from which frames without light were drawn.
struct BlackFrames {
    std::uint64_t stars = 0;  ///< in the databases that the frames used
    /// Luminance of the brightest star there, nothing when it is not known.
    std::optional<double> brightest;
};

/// A line for each thing that the scene sets at these times and the frames will not show, without a
/// line feed. A keyed value counts only where it has no effect at any of the times. `times` are
/// those of the frames to render, at least one. Throws `host::SceneError` for controls that do not
/// fit. Empty where all is well, and for an effect without the controls in question.
std::vector<std::string> setting_hints(const std::vector<host::DeclaredControl>& controls,
                                       const host::Scene& scene,
                                       const std::vector<host::Time>& times);

/// The likely reason why no frame at these times has any light, or nothing where `setting_hints`
/// says it already. Throws `host::SceneError` for controls that do not fit.
std::optional<std::string> black_frame_hint(const std::vector<host::DeclaredControl>& controls,
                                            const host::Scene& scene,
                                            const std::vector<host::Time>& times,
                                            const BlackFrames& frames);

/// Said of pictures that are black though the frames are not: `brightest` is the most light in any
/// frame, of which less than `least_visible` is black in a picture.
std::optional<std::string> black_picture_hint(double brightest, double least_visible);

}  // namespace lumivar
