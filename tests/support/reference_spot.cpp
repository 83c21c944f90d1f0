#include "support/reference_spot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace reference {

namespace {

constexpr int nodes = 16;

struct Rule {
    std::array<double, nodes> place;   // on (-1, 1)
    std::array<double, nodes> weight;  // sums to 2
};

// The roots of the Legendre polynomial of degree `nodes` by Newton's method on its recurrence,
// (k + 1) P[k+1] = (2k + 1) x P[k] - k P[k-1], and the weights 2 / ((1 - x^2) P'(x)^2).
Rule gauss_legendre() {
    Rule rule{};
    for (int i = 0; i < nodes; ++i) {
        double x = std::cos(std::numbers::pi * (i + 0.75) / (nodes + 0.5));
        double slope = 0;
        for (int round = 0; round < 20; ++round) {
            double before = 1;
            double here = x;
            for (int k = 1; k < nodes; ++k) {
                const double after = ((2 * k + 1) * x * here - k * before) / (k + 1);
                before = here;
                here = after;
            }
            slope = nodes * (x * here - before) / (x * x - 1);
            x -= here / slope;
        }
        rule.place[static_cast<std::size_t>(i)] = x;
        rule.weight[static_cast<std::size_t>(i)] = 2 / ((1 - x * x) * slope * slope);
    }
    return rule;
}

// Length of the way in the spot's radii.
double way(Point a, Point b, Spot spot) {
    return std::hypot((b.x - a.x) / spot.width, (b.y - a.y) / spot.height);
}

}  // namespace

double still_spot(Point pixel, Point centre, Spot spot) {
    const double distance =
        std::hypot((pixel.x - centre.x) / spot.width, (pixel.y - centre.y) / spot.height);
    return std::exp(-distance * distance);
}

double moving_spot(Point pixel, Point a, Point b, Spot spot) {
    const double length = way(a, b, spot);
    if (length < 1e-9) {
        return still_spot(pixel, {(a.x + b.x) / 2, (a.y + b.y) / 2}, spot);
    }
    const double px = (pixel.x - a.x) / spot.width;
    const double py = (pixel.y - a.y) / spot.height;
    const double vx = (b.x - a.x) / spot.width / length;
    const double vy = (b.y - a.y) / spot.height / length;
    const double along = px * vx + py * vy;
    const double across = px * vy - py * vx;
    return std::exp(-across * across) * std::sqrt(std::numbers::pi) / (2 * length) *
           (std::erf(length - along) + std::erf(along));
}

double moving_spot_by_quadrature(Point pixel, Point a, Point b, Spot spot) {
    static const Rule rule = gauss_legendre();
    // Half a radius a panel: the integrand is then a smooth bump that 16 nodes integrate to
    // rounding.
    const int panels = 1 + static_cast<int>(2 * way(a, b, spot));
    double sum = 0;
    for (int panel = 0; panel < panels; ++panel) {
        for (std::size_t i = 0; i < nodes; ++i) {
            const double t = (panel + 0.5 + 0.5 * rule.place[i]) / panels;
            const Point centre{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
            sum += rule.weight[i] / 2 * still_spot(pixel, centre, spot);
        }
    }
    return sum / panels;
}

double distance_from_way(Point pixel, Point a, Point b, Spot spot) {
    const double px = (pixel.x - a.x) / spot.width;
    const double py = (pixel.y - a.y) / spot.height;
    const double vx = (b.x - a.x) / spot.width;
    const double vy = (b.y - a.y) / spot.height;
    const double square = vx * vx + vy * vy;
    const double t = square > 0 ? std::clamp((px * vx + py * vy) / square, 0.0, 1.0) : 0.0;
    return std::hypot(px - t * vx, py - t * vy);
}

}  // namespace reference
