// What a rendered picture's file says about how it was made.
#pragma once

#include <host/scene.h>
#include <host/session.h>

#include <optional>
#include <string>

#include "picture_file.h"
#include "player.h"

namespace lumivar {

/// Scene, time, composition, shutter, camera (matrix and zoom), catalogue, version of the plug-in
/// and every control at the frame's time; the settings are those of `picture_settings` in their
/// one-line text form.
PictureInfo picture_info(const host::Session& session, const host::Scene& scene, host::Time time,
                         const std::optional<CatalogueUsed>& catalogue);

/// What compositing programs read: the composition's rate, the frame's number where it is one, and
/// the camera.
ShotInfo shot_info(const host::Scene& scene, host::Time time, std::optional<int> frame);

/// A control's value at a time as text: a number, a choice's name, "on", "128, 128, 128".
std::string value_text(const host::DeclaredControl& control, double number,
                       const host::Argb& colour);

/// The same as a frame shows it: of a popup that stands before its first choice, where those of the
/// effect start, the name of the first, which the effect then uses.
std::string used_value_text(const host::DeclaredControl& control, double number,
                            const host::Argb& colour);

}  // namespace lumivar
