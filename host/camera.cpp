// The cameras' matrices.
#include <host/camera.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>

namespace host {

namespace {

double radians(double degrees) { return degrees * (std::numbers::pi / 180.0); }

struct Vector {
    double x, y, z;
};

/// A lens, and a function that gives the matrix at a time.
class LensCamera : public Camera {
public:
    LensCamera(Lens lens, std::function<Matrix(double)> placing)
        : lens_(std::move(lens)), placing_(std::move(placing)) {}
    Matrix layer_to_world(double seconds) const override { return placing_(seconds); }
    double zoom(double seconds) const override { return lens_.zoom_at(seconds); }

private:
    Lens lens_;
    std::function<Matrix(double)> placing_;
};

/// The numbers of three tracks at a time.
Vector at(const std::array<Track, 3>& tracks, double seconds) {
    return {tracks[0].at(seconds), tracks[1].at(seconds), tracks[2].at(seconds)};
}

/// Rz * Ry * Rx * T, multiplied out; `turn` in degrees.
Matrix placed(const Vector& place, const Vector& turn) {
    const double sx = std::sin(radians(turn.x)), cx = std::cos(radians(turn.x));
    const double sy = std::sin(radians(turn.y)), cy = std::cos(radians(turn.y));
    const double sz = std::sin(radians(turn.z)), cz = std::cos(radians(turn.z));
    const Vector right = {cz * cy, sz * cx + cz * sy * sx, sz * sx - cz * sy * cx};
    const Vector down = {-sz * cy, cz * cx - sz * sy * sx, cz * sx + sz * sy * cx};
    const Vector forward = {sy, -cy * sx, cy * cx};
    return {right.x,   right.y,   right.z,   0.0,  //
            down.x,    down.y,    down.z,    0.0,  //
            forward.x, forward.y, forward.z, 0.0,  //
            place.x,   place.y,   place.z,   1.0};
}

}  // namespace

double Lens::zoom_at(double seconds) const {
    const double value = value_.at(seconds);
    return half_height_ > 0.0 ? half_height_ / std::tan(radians(value) / 2.0) : value;
}

std::shared_ptr<const Camera> placed_camera(std::array<Track, 3> position,
                                            std::array<Track, 3> orientation, Lens lens) {
    return std::make_shared<LensCamera>(
        std::move(lens),
        [position = std::move(position), orientation = std::move(orientation)](double seconds) {
            return placed(at(position, seconds), at(orientation, seconds));
        });
}

std::shared_ptr<const Camera> matrix_camera(std::array<Track, 16> elements, Lens lens) {
    return std::make_shared<LensCamera>(
        std::move(lens), [elements = std::move(elements)](double seconds) {
            Matrix matrix;
            std::transform(elements.begin(), elements.end(), matrix.begin(),
                           [=](const Track& element) { return element.at(seconds); });
            return matrix;
        });
}

}  // namespace host
