// The cameras' matrices.
#include <host/camera.h>

#include <cmath>
#include <cstddef>
#include <numbers>

namespace host {

namespace {

double radians(double degrees) { return degrees * (std::numbers::pi / 180.0); }

struct Vector {
    double x, y, z;
};

/// a * `s` + b * `t`.
Vector blend(const Vector& a, double s, const Vector& b, double t) {
    return {a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t};
}

/// A camera whose lens is a `Lens`.
class LensCamera : public Camera {
public:
    explicit LensCamera(Lens lens) : lens_(std::move(lens)) {}
    double zoom(double seconds) const override { return lens_.zoom_at(seconds); }

private:
    Lens lens_;
};

class LookAtCamera : public LensCamera {
public:
    LookAtCamera(Track ra, Track dec, Track roll, Lens lens)
        : LensCamera(std::move(lens)),
          ra_(std::move(ra)),
          dec_(std::move(dec)),
          roll_(std::move(roll)) {}

    Matrix layer_to_world(double seconds) const override {
        const double ra = radians(ra_.at(seconds));
        const double dec = radians(dec_.at(seconds));
        const double roll = radians(roll_.at(seconds));
        // In the stars' space, y up.
        const Vector forward = {std::cos(dec) * std::cos(ra), std::sin(dec),
                                std::cos(dec) * std::sin(ra)};
        const Vector north = {-std::sin(dec) * std::cos(ra), std::cos(dec),
                              -std::sin(dec) * std::sin(ra)};
        const Vector west = {std::sin(ra), 0.0, -std::cos(ra)};
        const Vector right = blend(west, std::cos(roll), north, -std::sin(roll));
        const Vector up = blend(west, std::sin(roll), north, std::cos(roll));
        // To the host's space: world y and the camera's own y axis both turn over.
        return {right.x,   -right.y,   right.z,   0.0,  //
                -up.x,     up.y,       -up.z,     0.0,  //
                forward.x, -forward.y, forward.z, 0.0,  //
                0.0,       0.0,        0.0,       1.0};
    }

private:
    Track ra_, dec_, roll_;
};

class PlacedCamera : public LensCamera {
public:
    PlacedCamera(std::array<Track, 3> position, std::array<Track, 3> orientation, Lens lens)
        : LensCamera(std::move(lens)),
          position_(std::move(position)),
          orientation_(std::move(orientation)) {}

    Matrix layer_to_world(double seconds) const override {
        const double x = radians(orientation_[0].at(seconds));
        const double y = radians(orientation_[1].at(seconds));
        const double z = radians(orientation_[2].at(seconds));
        const double sx = std::sin(x), cx = std::cos(x);
        const double sy = std::sin(y), cy = std::cos(y);
        const double sz = std::sin(z), cz = std::cos(z);
        // Rz * Ry * Rx, multiplied out.
        return {cz * cy,
                sz * cx + cz * sy * sx,
                sz * sx - cz * sy * cx,
                0.0,  //
                -sz * cy,
                cz * cx - sz * sy * sx,
                cz * sx + sz * sy * cx,
                0.0,  //
                sy,
                -cy * sx,
                cy * cx,
                0.0,  //
                position_[0].at(seconds),
                position_[1].at(seconds),
                position_[2].at(seconds),
                1.0};
    }

private:
    std::array<Track, 3> position_, orientation_;
};

class MatrixCamera : public LensCamera {
public:
    MatrixCamera(std::array<Track, 16> elements, Lens lens)
        : LensCamera(std::move(lens)), elements_(std::move(elements)) {}

    Matrix layer_to_world(double seconds) const override {
        Matrix matrix;
        for (std::size_t i = 0; i < matrix.size(); ++i) {
            matrix[i] = elements_[i].at(seconds);
        }
        return matrix;
    }

private:
    std::array<Track, 16> elements_;
};

}  // namespace

double Lens::zoom_at(double seconds) const {
    const double value = value_.at(seconds);
    return half_height_ > 0.0 ? half_height_ / std::tan(radians(value) / 2.0) : value;
}

std::shared_ptr<const Camera> look_at_camera(Track ra, Track dec, Track roll, Lens lens) {
    return std::make_shared<LookAtCamera>(std::move(ra), std::move(dec), std::move(roll),
                                          std::move(lens));
}

std::shared_ptr<const Camera> placed_camera(std::array<Track, 3> position,
                                            std::array<Track, 3> orientation, Lens lens) {
    return std::make_shared<PlacedCamera>(std::move(position), std::move(orientation),
                                          std::move(lens));
}

std::shared_ptr<const Camera> matrix_camera(std::array<Track, 16> elements, Lens lens) {
    return std::make_shared<MatrixCamera>(std::move(elements), std::move(lens));
}

}  // namespace host
