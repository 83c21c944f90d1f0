// Displays and views of an OpenColorIO configuration.
#pragma once

#include <string>

#include "linear_image.h"

namespace lumivar {

/// A display's view. Empty texts take what the configuration says: its default display, the
/// default view of the display, the role scene_linear.
struct ManagedView {
    std::string config;   ///< a configuration's file
    std::string display;  ///< as "sRGB"
    std::string view;     ///< as "Film"
    std::string space;    ///< the colour space that the frame's light is taken to be in
};

/// The same with all texts filled in. Throws `Failure` for a configuration that cannot be read, and
/// for a display, view or space that it does not have; the message names those that it has.
ManagedView found_in_config(const ManagedView& wanted);

/// Scene-linear light to what the display is sent, 0 to 1, already encoded. `view` comes from
/// `found_in_config`. Throws `Failure`.
void view_managed(LinearImage& image, const ManagedView& view);

/// What the view does to light, as a text that changes with it: also with the tables that a
/// configuration has in files of their own, and with variables that it uses. Throws as
/// `view_managed`.
std::string fingerprint_of(const ManagedView& view);

}  // namespace lumivar
