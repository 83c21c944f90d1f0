#include "support/reference_renderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace reference {

namespace {

constexpr double degree = std::numbers::pi / 180;

double along(const Triple& a, const Triple& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Triple direction(double lon, double lat) {
    // The circle of latitude has radius cos(lat); lon turns from x to z on it.
    const double circle = std::sin((90 - lat) * degree);
    return {circle * std::cos(lon * degree), std::sin(lat * degree),
            circle * std::sin(lon * degree)};
}

// IEC 61966-2-1.
double from_srgb(std::uint8_t code) {
    const double v = code / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

/// How far an honest renderer in single precision may be off; every term is an upper bound.
struct Doubt {
    /// Of an angle in radians, up to one turn: three roundings (the degrees, the product, and the
    /// factor's own 8e-9 of the whole) of numbers below 8, half a unit in the last place each.
    static constexpr double angle = 6e-7;
    /// Of a coordinate, in shares of its size: the position itself, the segment's middle, the
    /// offset from it and its product with the direction, a unit in the last place each, twice.
    static constexpr double coordinate = 8 * 0x1p-23;
    /// Of a weight, in shares of itself: a dozen roundings in exponent and factors, the exponent's
    /// magnified by its size, ln(6250 peak) of about 10 at most.
    static constexpr double weight = 1e-5;
    /// Of a moving spot's weight, in shares of the peak: rounding an error function's argument, six
    /// times, where it comes of the difference of two numbers about length over radius.
    static constexpr double way = 1e-6;
    /// The same times the radius over the length: two error functions near 1 are subtracted, each
    /// known to half a unit in the last place, and their arguments rounded.
    static constexpr double short_way = 6e-7;
    /// Of each sum.
    static constexpr double sum = 0x1p-23;
};

// The largest slope, in units of the peak and the radius, that a spot can have where its light is
// `share` of the peak: for exp(-r^2) the slope is 2 r exp(-r^2). As a function of the share it is
// concave, so it bounds the mean of a moving spot by the mean's share just as well.
double steepest(double share) {
    return share < 1 ? 2 * share * std::sqrt(-std::log(std::max(share, 1e-300))) : 0.0;
}

struct Segment {
    Point a;
    Point b;
    double peak;    // of one still star, already shared over the segments
    double wander;  // doubt of the positions, pixels
};

struct Range {
    int first;
    int last;
};

// The pixels of 0 .. size - 1 within `margin` of the way from `a` to `b`.
Range pixels(double a, double b, double margin, int size) {
    const double low = std::max(std::ceil(std::min(a, b) - margin), 0.0);
    const double high = std::min(std::floor(std::max(a, b) + margin), size - 1.0);
    // Also when something is not a number.
    if (!(low <= high)) {
        return {0, -1};
    }
    return {static_cast<int>(low), static_cast<int>(high)};
}

void draw(const Segment& segment, const Triple& colour, const Spot& spot, Rendering& out) {
    if (!(segment.peak > far_reach)) {
        return;
    }
    const double radii = std::sqrt(std::log(segment.peak / far_reach));
    const Range columns = pixels(segment.a.x, segment.b.x, radii * spot.width, out.light.width);
    const Range rows = pixels(segment.a.y, segment.b.y, radii * spot.height, out.light.height);

    const double length = std::hypot(segment.b.x - segment.a.x, segment.b.y - segment.a.y);
    // Below 1e-5 pixels the real renderer draws a still spot: half of that is a wander as well.
    const double wander =
        (segment.wander + (length < 2e-5 ? 1e-5 : 0.0)) / std::min(spot.width, spot.height);
    // The share of the time that a moving spot is near any one pixel: it covers four radii, and the
    // whole of its profile's length, sqrt(pi) radii, is less.
    const double stay = std::min(1.0, 4 * std::max(spot.width, spot.height) / length);
    const double moving =
        length > 0.9e-5 ? Doubt::way + Doubt::short_way * std::max(spot.width, spot.height) / length
                        : 0.0;
    // The real renderer draws all pixels to where the spot's edge has fallen to the reach.
    const double reached =
        std::sqrt(std::max(std::log(segment.peak / reach) - 2 * Doubt::weight, 0.0));
    for (int y = rows.first; y <= rows.last; ++y) {
        for (int x = columns.first; x <= columns.last; ++x) {
            const Point pixel{static_cast<double>(x), static_cast<double>(y)};
            const double weight = segment.peak * moving_spot(pixel, segment.a, segment.b, spot);
            const double share = weight / segment.peak;
            // A shift adds the slope's part and, at its second order, at most its square for as
            // long as the spot is near; never more than all the light there can be.
            const double shift = std::min(steepest(share) * wander + stay * wander * wander, stay);
            const double nearest = distance_from_way(pixel, segment.a, segment.b, spot) - wander;
            const double noise =
                segment.peak * (Doubt::weight * share + moving + (nearest < radii ? shift : 0.0));
            const bool beyond_reach = nearest + 2 * wander >= reached;
            const double missing = beyond_reach ? weight : 0.0;
            for (int channel = 0; channel < 3; ++channel) {
                const double strength = colour[static_cast<std::size_t>(channel)];
                double& light = out.light.at(x, y, channel);
                light += weight * strength;
                out.allowance.at(x, y, channel) += std::fabs(strength) * missing +
                                                   std::max(1.0, std::fabs(strength)) * noise +
                                                   Doubt::sum * std::fabs(light);
            }
        }
    }
}

double distance_between(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

// How far the star may land elsewhere because its angles and coordinates are single: found by
// turning both angles a little.
double wander(const Star& star, const Projected& projected, const Settings& settings,
              const Camera& camera) {
    Star east = star;
    east.lon += Doubt::angle / degree;
    Star north = star;
    north.lat += Doubt::angle / degree;
    const Point here = projected.place;
    return distance_between(project(east, settings, camera).place, here) +
           distance_between(project(north, settings, camera).place, here) +
           Doubt::coordinate *
               std::max({std::fabs(here.x), std::fabs(here.y), static_cast<double>(settings.width),
                         static_cast<double>(settings.height)});
}

}  // namespace

Camera look_at(double lon, double lat, double roll, double focal) {
    const Triple north = direction(lon, lat + 90);
    const Triple east = direction(lon + 90, 0);
    Camera camera;
    camera.forward = direction(lon, lat);
    for (std::size_t i = 0; i < 3; ++i) {
        camera.up[i] = std::cos(roll * degree) * north[i] + std::sin(roll * degree) * east[i];
        camera.right[i] = std::sin(roll * degree) * north[i] - std::cos(roll * degree) * east[i];
    }
    camera.focal = focal;
    return camera;
}

Projected project(const Star& star, const Settings& settings, const Camera& camera) {
    Triple ray = direction(star.lon, star.lat);
    // The crush takes a hundredth a unit from the inverse distance, down to none at all.
    const double inverse =
        (star.distance > 0 ? 1 / star.distance : 0.0) - settings.parallax_crush / 100;
    const bool near = inverse > 0;
    if (near) {
        for (std::size_t i = 0; i < 3; ++i) {
            ray[i] = ray[i] / inverse - camera.position[i];
        }
    }
    const double x = along(ray, camera.right);
    const double y = along(ray, camera.up);
    const double z = along(ray, camera.forward);

    const double off_axis = std::hypot(x, y);
    Projected result;
    result.visible = z >= 0;
    double radius = 0;
    switch (settings.projection) {
        case Projection::Perspective:
            radius = off_axis * camera.focal / z;
            result.visible = z > 0 && (!near || z >= camera.near_clip);
            break;
        case Projection::Hemisphere:
            radius = std::sin(std::atan2(off_axis, z));
            break;
        case Projection::Equidistant:
            radius = std::atan2(off_axis, std::fabs(z)) / (90 * degree);
            break;
    }
    const double scale = off_axis > 0 ? radius / off_axis * settings.height / 2 : 0.0;
    result.place = {settings.width / 2.0 + x * scale, settings.height / 2.0 - y * scale};
    return result;
}

Shade shade(const Star& star, const Settings& settings) {
    const double catalogue = static_cast<double>(star.luminance);
    Shade result;
    if (!(settings.threshold > catalogue)) {
        result.luminance =
            std::min(std::pow(catalogue, 1 / (settings.bias + 0.000001)), settings.max_luminance);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        const double own = from_srgb(star.srgb[i]);
        const double tinted = own + (settings.tint[i] - own) * settings.tint_strength;
        result.colour[i] = 0.5 + (tinted - 0.5) * settings.saturation;
    }
    return result;
}

FrameSpot frame_spot(const Settings& settings) {
    const double half_width = settings.width / 2.0;
    const double height = half_width * settings.spot_size / 1000;
    const double width = height * settings.aspect_ratio;
    FrameSpot result;
    result.spot = {std::max(width, 1.0), std::max(height, 1.0)};
    result.intensity = 4 * settings.brightness * std::min(width, 1.0) * std::min(height, 1.0);
    return result;
}

Rendering render(const std::vector<Star>& stars, const Settings& settings,
                 const std::vector<Camera>& cameras) {
    Rendering out{support::Picture(settings.width, settings.height, 3),
                  support::Picture(settings.width, settings.height, 3)};
    const FrameSpot frame = frame_spot(settings);
    const std::size_t segments = std::max<std::size_t>(cameras.size(), 2) - 1;
    for (const Star& star : stars) {
        const Shade shaded = shade(star, settings);
        const double peak = frame.intensity * shaded.luminance / static_cast<double>(segments);
        for (std::size_t i = 0; i < segments; ++i) {
            const Camera& opening = cameras[i];
            const Camera& closing = cameras[std::min(i + 1, cameras.size() - 1)];
            const Projected a = project(star, settings, opening);
            const Projected b = project(star, settings, closing);
            if (!a.visible && !b.visible) {
                continue;
            }
            const double doubt =
                std::max(wander(star, a, settings, opening), wander(star, b, settings, closing));
            draw({a.place, b.place, peak, doubt}, shaded.colour, frame.spot, out);
        }
    }
    // What lies beyond the far reach of all.
    const double beyond = far_reach * static_cast<double>(stars.size() * segments);
    for (double& value : out.allowance.values) {
        value += beyond;
    }
    return out;
}

}  // namespace reference
