// The kinds of camera that a scene may have.
//
// World and camera space are the host's: x right, y down, z away from the viewer; points are row
// vectors multiplied on the left. Every value may change over time; matrices and angles are
// interpolated number by number.
#pragma once

#include <host/scene.h>

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace host {

/// How much the camera sees: the distance to the image plane, given directly or as an angle of
/// view.
class Lens {
public:
    /// `pixels` is the distance to the image plane, above 0.
    static Lens zoom(Track pixels) { return {std::move(pixels), 0.0}; }
    /// `degrees` is the angle, above 0 and below 180, from the bottom to the top of a picture of
    /// `height` pixels: zoom = (height / 2) / tan(angle / 2).
    static Lens vertical_fov(Track degrees, int height) {
        return {std::move(degrees), height / 2.0};
    }
    /// The 50 mm preset on film 36 mm wide, which a new camera has: zoom = width * 50 / 36.
    static Lens new_camera(int width) { return zoom(width * 50.0 / 36.0); }

    /// Pixels.
    double zoom_at(double seconds) const;

private:
    Lens(Track value, double half_height) : value_(std::move(value)), half_height_(half_height) {}

    Track value_;         ///< pixels, or degrees of the angle of view
    double half_height_;  ///< pixels; 0: `value_` is the zoom
};

/// A camera at the origin that looks at the sky position `ra`, `dec` (right ascension and
/// declination), north up and east to the left, then rolled; all in degrees. The stars' space has y
/// up, and a star stands in the direction
///
///     d = (cos dec cos ra, sin dec, cos dec sin ra).
///
/// With n the derivative of d by `dec` (north) and e that by `ra`, normalised (east), the camera's
/// axes in that space are
///
///     forward = d
///     right   = -e cos roll - n sin roll
///     up      = -e sin roll + n cos roll
///
/// so a positive roll turns the camera clockwise and the picture counter-clockwise, as a positive z
/// orientation does. These axes, y turned down, are the rows of the layer-to-world matrix. At the
/// poles north is where it is along the meridian `ra`.
std::shared_ptr<const Camera> look_at_camera(Track ra, Track dec, Track roll, Lens lens);

/// A place in the sky, or in space: `distance` parsecs from the Sun, which is the origin; nothing
/// is infinitely far. `ra` and `dec` in degrees.
struct SkyPlace {
    double ra = 0.0;
    double dec = 0.0;
    std::optional<double> distance;
};

/// The point of the world that stands at `place`, in parsecs, x right, y down: its direction where
/// it is infinitely far.
std::array<double, 3> world_point(const SkyPlace& place);

/// As above, at `position` (parsecs) instead of the origin. With `distance`, above 0, it looks from
/// there at the point that is as far from the origin as that; without it, in the direction of `ra`
/// and `dec`. Where camera and point coincide it looks in the point's direction.
std::shared_ptr<const Camera> look_at_camera(std::array<Track, 3> position, Track ra, Track dec,
                                             std::optional<Track> distance, Track roll, Lens lens);

/// What a camera looks at from a time on.
struct AimKey {
    double time;  ///< seconds of composition time
    SkyPlace place;
    Interpolation interpolation = Interpolation::Linear;  ///< from here to the next key
};

/// A camera at `position` (parsecs) that looks at one place after another, held before the first
/// key and after the last. In between its aim goes along the great circle that leads from the one
/// place to the other as seen from where the camera is at that moment: at an even pace if linear;
/// if smooth, by the share 3 s^2 - 2 s^3 of the way after the share s of the time, so that it comes
/// to rest at each place, since the next great circle leaves in another direction. Between opposite
/// places it goes by north. North is up and east to the left, then rolled by `roll` (degrees).
///
/// `aims` must be non-empty, with times strictly increasing; throws `std::invalid_argument`.
std::shared_ptr<const Camera> aimed_camera(std::array<Track, 3> position, std::vector<AimKey> aims,
                                           Track roll, Lens lens);

/// A camera at `position` (pixels), turned by `orientation` (degrees about x, y, z). The
/// layer-to-world matrix is Rz * Ry * Rx * T: a point of the camera is turned about z first, then
/// y, then x, and then moved. With y down a positive angle about x tilts the view upward, about y
/// turns it to the right, and about z turns the camera clockwise:
///
///          | 1   0  0 |        | c  0  -s |        |  c  s  0 |
///     Rx = | 0   c  s |   Ry = | 0  1   0 |   Rz = | -s  c  0 |
///          | 0  -s  c |        | s  0   c |        |  0  0  1 |
///
std::shared_ptr<const Camera> placed_camera(std::array<Track, 3> position,
                                            std::array<Track, 3> orientation, Lens lens);

/// A camera with its layer-to-world matrix given, row by row, the translation in the last row.
/// Interpolated element by element: between two keys that differ by a large turn it shrinks.
std::shared_ptr<const Camera> matrix_camera(std::array<Track, 16> elements, Lens lens);

/// Where a camera is at one moment, and how far its image plane.
struct CameraSample {
    double time = 0.0;        ///< seconds of composition time
    Matrix layer_to_world{};  ///< a turn and a move: no scale, no shear, no mirror
    double zoom = 0.0;        ///< pixels, above 0
};

/// A camera that moves from sample to sample: position and zoom on straight lines, the turn about
/// one axis at an even pace and the short way round (spherical linear interpolation of unit
/// quaternions). At a sample's time the matrix is exactly the sample's; before the first and after
/// the last the camera stands still.
///
/// `samples` must be non-empty, with times strictly increasing, a zoom above 0 and matrices whose
/// axes are of length 1 and square to each other within 1e-6; throws `std::invalid_argument`.
///
/// `lens`, if given, is the camera whose zoom is taken instead of the samples'.
std::shared_ptr<const Camera> path_camera(std::vector<CameraSample> samples,
                                          std::shared_ptr<const Camera> lens = nullptr);

}  // namespace host
