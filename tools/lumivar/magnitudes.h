// Which stars a frame shows, in magnitudes, and what that is in the effect's own controls.
//
// Luminance 1 of a catalogue is magnitude 0, and five magnitudes are a factor of 100.
#pragma once

#include <host/scene.h>
#include <host/session.h>

#include <optional>
#include <string>
#include <vector>

#include "command_line.h"

namespace lumivar {

struct MagnitudeArguments {
    std::optional<double> limiting_magnitude;
};

/// Adds `--limiting-magnitude`.
void add_magnitude_arguments(Command& command, MagnitudeArguments& arguments);

/// The "Luminance Threshold" that lets stars of `magnitude` and all brighter ones through. It is
/// rounded to single precision as the catalogue's luminances are, so that a star of exactly this
/// magnitude is drawn. `magnitude` is 0 to 90: the control ends at 1.
double threshold_of_magnitude(double magnitude);

/// Sets "Luminance Threshold" at each of `times` (increasing) to the limiting magnitude that the
/// arguments or else the scene's picture say; the arguments win over whatever the scene says, and
/// `settings`, which the caller adds to the scene's afterwards, over the scene's limit. Returns
/// whether a limiting magnitude holds.
///
/// Throws `UsageError` for arguments that contradict `settings`, and `Failure` for a scene that
/// gives both a limiting magnitude and a threshold; either for a magnitude that the control does
/// not reach.
bool bring_limiting_magnitude(const MagnitudeArguments& arguments,
                              const std::vector<host::ControlSetting>& settings,
                              const std::vector<host::Time>& times, host::Scene& scene);

/// Which stars the frames from `first` to `last`, `width` pixels wide, show, for the summary of a
/// render: a line for the faintest star and the ceiling of the brightest, and one for `exposure`
/// (stops) unless it is 0. Each gives the effect's own controls, as they can be typed in the host.
/// What the last frame has otherwise than the first is told too. Empty for an effect without these
/// controls.
///
/// The effect leaves out a star whose spot, or whose streak from one sample of the camera to the
/// next, is nowhere brighter than 1/6250. Where that is more than the threshold leaves out, it is
/// told.
///
/// `by_magnitude`: the threshold was set by a limiting magnitude. It is then told in the control's
/// six decimals, rounded so that no star is lost.
std::vector<std::string> magnitude_lines(const host::Session& session, const host::Scene& scene,
                                         host::Time first, host::Time last, int width,
                                         bool by_magnitude, double exposure);

}  // namespace lumivar
