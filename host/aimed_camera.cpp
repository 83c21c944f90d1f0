// Cameras that look at places in the sky.
//
// Vectors here are of the stars' space, y up: the host's world with y turned over.
#include <host/camera.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace host {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

struct SkyVector {
    double x, y, z;
};

/// a * `s` + b * `t`.
SkyVector sum_of(const SkyVector& a, double s, const SkyVector& b, double t) {
    return {a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t};
}

double dot(const SkyVector& a, const SkyVector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

double length(const SkyVector& a) { return std::hypot(a.x, a.y, a.z); }

/// `ra` and `dec` in radians.
SkyVector direction(double ra, double dec) {
    return {std::cos(dec) * std::cos(ra), std::sin(dec), std::cos(dec) * std::sin(ra)};
}

/// The derivative of `direction` by `dec`: north.
SkyVector northward(double ra, double dec) {
    return {-std::sin(dec) * std::cos(ra), std::cos(dec), -std::sin(dec) * std::sin(ra)};
}

struct Aim {
    double ra, dec;  ///< radians
};

Aim aim_along(const SkyVector& way) {
    return {std::atan2(way.z, way.x), std::atan2(way.y, std::hypot(way.x, way.z))};
}

/// Where a camera at `from` looks to see `place`.
Aim aim_at(const SkyPlace& place, const SkyVector& from) {
    const Aim straight = {place.ra * kDegree, place.dec * kDegree};
    if (!place.distance) {
        return straight;
    }
    const SkyVector way = sum_of(direction(straight.ra, straight.dec), *place.distance, from, -1.0);
    // Nearer than rounding can tell, the way has no direction.
    constexpr double kCoincide = 1e-12;
    return length(way) <= kCoincide * *place.distance ? straight : aim_along(way);
}

/// The share `s` of the way from `from` to `to` along their great circle.
Aim between(const Aim& from, const Aim& to, double s) {
    const SkyVector start = direction(from.ra, from.dec);
    const SkyVector end = direction(to.ra, to.dec);
    const double along = dot(start, end);
    SkyVector side = sum_of(end, 1.0, start, -along);
    double across = length(side);
    // Below this the places are the same or opposite, and their great circle is open.
    constexpr double kOpen = 1e-12;
    if (across < kOpen) {
        if (along > 0.0) {
            return from;
        }
        side = northward(from.ra, from.dec);
        across = 0.0;
    }
    const double angle = std::atan2(across, along) * s;
    return aim_along(sum_of(start, std::cos(angle), side, std::sin(angle) / length(side)));
}

/// The camera's axes of `look_at_camera`, and `position` in the world; `roll` in radians.
Matrix aimed_matrix(const Aim& aim, double roll, const std::array<double, 3>& position) {
    const SkyVector forward = direction(aim.ra, aim.dec);
    const SkyVector north = northward(aim.ra, aim.dec);
    const SkyVector west = {std::sin(aim.ra), 0.0, -std::cos(aim.ra)};
    const SkyVector right = sum_of(west, std::cos(roll), north, -std::sin(roll));
    const SkyVector up = sum_of(west, std::sin(roll), north, std::cos(roll));
    // In the host's space: world y and the camera's own y axis both turn over.
    return {right.x,     -right.y,    right.z,     0.0,  //
            -up.x,       up.y,        -up.z,       0.0,  //
            forward.x,   -forward.y,  forward.z,   0.0,  //
            position[0], position[1], position[2], 1.0};
}

/// Aims from where it is, at each moment.
class AimedCamera : public Camera {
public:
    using Aiming = std::function<Aim(double seconds, const SkyVector& from)>;

    AimedCamera(std::array<Track, 3> position, Aiming aiming, Track roll, Lens lens)
        : position_(std::move(position)),
          aiming_(std::move(aiming)),
          roll_(std::move(roll)),
          lens_(std::move(lens)) {}

    Matrix layer_to_world(double seconds) const override {
        const std::array<double, 3> place = {position_[0].at(seconds), position_[1].at(seconds),
                                             position_[2].at(seconds)};
        const Aim aim = aiming_(seconds, {place[0], -place[1], place[2]});
        return aimed_matrix(aim, roll_.at(seconds) * kDegree, place);
    }
    double zoom(double seconds) const override { return lens_.zoom_at(seconds); }

private:
    std::array<Track, 3> position_;
    Aiming aiming_;
    Track roll_;
    Lens lens_;
};

Aim aim_of_keys(const std::vector<AimKey>& keys, double seconds, const SkyVector& from) {
    const auto after =
        std::upper_bound(keys.begin(), keys.end(), seconds,
                         [](double time, const AimKey& key) { return time < key.time; });
    if (after == keys.begin()) {
        return aim_at(keys.front().place, from);
    }
    const AimKey& before = *(after - 1);
    if (after == keys.end() || before.interpolation == Interpolation::Hold) {
        return aim_at(before.place, from);
    }
    double share = (seconds - before.time) / (after->time - before.time);
    if (before.interpolation == Interpolation::Smooth) {
        share = share * share * (3.0 - 2.0 * share);
    }
    return between(aim_at(before.place, from), aim_at(after->place, from), share);
}

}  // namespace

std::array<double, 3> world_point(const SkyPlace& place) {
    const SkyVector point = direction(place.ra * kDegree, place.dec * kDegree);
    const double distance = place.distance.value_or(1.0);
    return {point.x * distance, -point.y * distance, point.z * distance};
}

std::shared_ptr<const Camera> look_at_camera(Track ra, Track dec, Track roll, Lens lens) {
    return look_at_camera({0.0, 0.0, 0.0}, std::move(ra), std::move(dec), std::nullopt,
                          std::move(roll), std::move(lens));
}

std::shared_ptr<const Camera> look_at_camera(std::array<Track, 3> position, Track ra, Track dec,
                                             std::optional<Track> distance, Track roll, Lens lens) {
    return std::make_shared<AimedCamera>(
        std::move(position),
        [ra = std::move(ra), dec = std::move(dec), distance = std::move(distance)](
            double seconds, const SkyVector& from) {
            SkyPlace place = {ra.at(seconds), dec.at(seconds), std::nullopt};
            if (distance) {
                place.distance = distance->at(seconds);
            }
            return aim_at(place, from);
        },
        std::move(roll), std::move(lens));
}

std::shared_ptr<const Camera> aimed_camera(std::array<Track, 3> position, std::vector<AimKey> aims,
                                           Track roll, Lens lens) {
    if (aims.empty()) {
        throw std::invalid_argument("an aim needs at least one key");
    }
    for (std::size_t i = 1; i < aims.size(); ++i) {
        if (!(aims[i - 1].time < aims[i].time)) {
            throw std::invalid_argument("the times of an aim's keys must increase");
        }
    }
    return std::make_shared<AimedCamera>(
        std::move(position),
        [aims = std::move(aims)](double seconds, const SkyVector& from) {
            return aim_of_keys(aims, seconds, from);
        },
        std::move(roll), std::move(lens));
}

}  // namespace host
