#include "places.h"

#include <libimgops/byte_order.h>
#include <libimgops/projection.h>

#include <array>
#include <bit>

#include "scene.h"

namespace bench {

namespace {

/// Results that the compiler has to work out.
volatile double seen_x;
volatile bool seen;

auto bits_of(const Vector2& v) { return std::bit_cast<std::array<u32, 2>>(v); }

}  // namespace

Places::Places(int stars, op_stars_projection projection)
    : data_(default_settings(kWidth, kHeight)) {
    data_.projection = projection;
    for (const star& s : whole_sky(static_cast<u32>(stars))) {
        stars_.push_back(
            {ledouble_to_cpu(&s.lon), ledouble_to_cpu(&s.lat), ledouble_to_cpu(&s.distance)});
    }
    matrix_ = projection_matrix(camera(), projection);
}

bool Places::plainly(const Star& s, Vector2& place) const {
    return world_to_screen(s.lon, s.lat, s.distance, data_.parallax_crush, matrix_,
                           data_.projection, kWidth, kHeight, data_.window_x0, data_.window_x1,
                           data_.window_y0, data_.window_y1, place);
}

VectorN<double, 4> Places::direction(const Star& s) const {
    return star_point(s.lon, s.lat, s.distance, data_.parallax_crush);
}

bool Places::on_screen(const VectorN<double, 4>& direction, Vector2& place) const {
    return point_to_screen(direction, matrix_, data_.projection, kWidth, kHeight, data_.window_x0,
                           data_.window_x1, data_.window_y0, data_.window_y1, place);
}

void Places::project(DrawPath path) const {
    Vector2 place;
    for (const Star& s : stars_) {
        if (path == DrawPath::Plain) {
            for (int sample = 0; sample < kSamples; ++sample) {
                seen = plainly(s, place);
                seen_x = static_cast<double>(place[0]);
            }
            continue;
        }
        const VectorN<double, 4> point = direction(s);
        for (int sample = 0; sample < kSamples; ++sample) {
            seen = on_screen(point, place);
            seen_x = static_cast<double>(place[0]);
        }
    }
}

bool Places::agree() const {
    for (const Star& s : stars_) {
        Vector2 in_one, in_two;
        if (plainly(s, in_one) != on_screen(direction(s), in_two) ||
            bits_of(in_one) != bits_of(in_two)) {
            return false;
        }
    }
    return true;
}

}  // namespace bench
