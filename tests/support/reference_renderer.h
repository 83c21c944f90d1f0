// A second star renderer, in double precision and with formulas of its own, which judges the frames
// of the real one and makes the reference pictures. It shares no code with the rooms: what both get
// wrong must have been misunderstood twice.
//
// Where it differs from the real renderer, on purpose:
//   - it knows no reach: a spot is followed until it gives less than `far_reach`, where the real
//     renderer stops at `reach`, so each segment may lack up to `reach` at a pixel there;
//   - angles, positions and sums are not rounded to single precision.
// `Rendering::allowance` says, for every value, how much these two may come to.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "support/picture.h"
#include "support/reference_spot.h"

namespace reference {

using Triple = std::array<double, 3>;

/// Light at which the real renderer stops following a spot.
inline constexpr double reach = 1.0 / 6250;
/// Light at which this one does.
inline constexpr double far_reach = 1e-9;

/// A catalogue star.
struct Star {
    double lon = 0;  ///< degrees from +x towards +z
    double lat = 0;  ///< degrees from the x-z plane towards +y
    float luminance = 0;
    std::array<std::uint8_t, 3> srgb{255, 255, 255};
    double distance = -1;  ///< world units; none when not above 0
};

enum class Projection {
    Perspective,  ///< image at x / z times the focal length, in half frame heights
    Hemisphere,   ///< orthographic: the sphere in front fills a disk as high as the frame
    Equidistant   ///< radius proportional to the angle, 90 degrees at half the frame height
};

/// Where the camera stands and how it is turned: the three axes are unit vectors in the world, at
/// right angles. A point's camera coordinates are its offset from `position` along them.
struct Camera {
    Triple right{1, 0, 0};
    Triple up{0, 1, 0};
    Triple forward{0, 0, 1};
    Triple position{0, 0, 0};
    double focal = 3.2;      ///< half frame heights
    double near_clip = 0.1;  ///< world units; perspective only, stars with a distance only
};

/// The camera at the origin that sees (`lon`, `lat`) at the frame's centre, with the picture's up
/// at position angle `roll` (degrees, from north towards east); all in degrees. With roll 0 north
/// is up and east, where `lon` grows, is to the left.
Camera look_at(double lon, double lat, double roll, double focal);

/// The effect's controls, as the user sets them, and the frame's size.
struct Settings {
    int width = 0;
    int height = 0;
    double spot_size = 2.5;  ///< thousandths of half the frame's width
    double aspect_ratio = 1;
    double threshold = 0.0001;
    double max_luminance = 0.5;
    double brightness = 5;
    double bias = 1;
    double saturation = 0.4;
    double tint_strength = 0;
    Triple tint{128 / 255.0, 128 / 255.0, 128 / 255.0};  ///< linear
    double parallax_crush = 100;
    Projection projection = Projection::Perspective;
};

struct Rendering {
    support::Picture light;  ///< linear red, green, blue
    /// For every value of `light`, the largest difference that the real renderer's reach and single
    /// precision account for: light of pixels that a spot passes at a distance where it is fainter
    /// than the reach may be missing, and each segment may be off by 1e-5 of itself, by what a
    /// shift within the precision of angles and coordinates does to it, when it moves by a little
    /// of its peak (the more the shorter it is), and by the rounding of the sum.
    support::Picture allowance;
};

/// Draws `stars` through the samples of one shutter: one camera stands still, more are joined by
/// segments that share each star's light.
Rendering render(const std::vector<Star>& stars, const Settings& settings,
                 const std::vector<Camera>& cameras);

// The steps, each to be judged alone.

struct Projected {
    Point place;
    bool visible = false;  ///< in front of the camera; the frame's edges do not count
};

/// Where a star lands; also when it is not visible, since a streak may begin there. In perspective
/// that is the mirrored place of a star behind the camera; the two disks fold it back inside.
Projected project(const Star& star, const Settings& settings, const Camera& camera);

/// What a star shines with: its luminance under bias and ceiling, and its linear colour under tint
/// and saturation. The luminance is 0 when the threshold (on the catalogue's value) drops it.
struct Shade {
    double luminance = 0;
    Triple colour{};
};
Shade shade(const Star& star, const Settings& settings);

/// The spot all stars of a frame share, never smaller than a pixel, and the peak a star of
/// luminance 1 has while it stands still.
struct FrameSpot {
    Spot spot;
    double intensity = 0;
};
FrameSpot frame_spot(const Settings& settings);

}  // namespace reference
