// How a picture for looking at is made of a frame's light.
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

#include "colour_management.h"
#include "linear_image.h"

namespace lumivar {

/// How light becomes a picture for looking at: the halo first, then the exposure, then the view.
struct Look {
    enum class View {
        Plain,   ///< cut off at 0 and 1, channel by channel, and encoded to sRGB
        Photo,   ///< `view_as_photo`, and encoded to sRGB
        Managed  ///< an OpenColorIO display, encoded as it says
    };
    View view = View::Plain;
    double exposure = 0.0;  ///< stops
    double halo = 0.0;      ///< strength, see `add_halo`
    int bits = 8;           ///< a channel, 8 or 16; at 8 all views but the plain one are dithered
    ManagedView managed;    ///< of the managed view, from `found_in_config`
};

/// The codes of a picture's file, three for a pixel: 8-bit or 16-bit ones, as the look says.
using LookedAt = std::variant<std::vector<std::uint8_t>, std::vector<std::uint16_t>>;

/// Throws `Failure` where the colour management fails.
LookedAt look_at(LinearImage light, const Look& look);

}  // namespace lumivar
