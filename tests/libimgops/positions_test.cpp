// Where stars land, against the sky projections of a public library: gnomonic, orthographic and
// equidistant azimuthal.
//
// The bound is 0.02 pixel. Single precision of the angles comes to 6e-7 radians at most, which is
// 0.0016 pixel for the longest lens here on a frame 1080 high, more towards the corners of a wide
// one.
#include <libimgops/projection.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <tuple>
#include <utility>

#include "product_frame.h"
#include "support/blobs.h"
#include "support/path_in_use.h"
#include "support/sky_wcs.h"

namespace {

using reference::Camera;
using reference::Projection;
using reference::Settings;
using support::SkyProjection;

constexpr double bound = 0.02;

const std::pair<Projection, SkyProjection> kinds[] = {
    {Projection::Perspective, SkyProjection::Tan},
    {Projection::Hemisphere, SkyProjection::Sin},
    {Projection::Equidistant, SkyProjection::Arc}};

// Directions spread evenly over the sphere, and views that include the awkward ones.
class Sky {
public:
    explicit Sky(unsigned seed) : numbers_(seed) {}
    double even(double low, double high) {
        return low + (high - low) * static_cast<double>(numbers_()) * 0x1p-32;
    }
    double ra() { return even(0, 360); }
    double dec() { return std::asin(even(-1, 1)) * 180 / std::numbers::pi; }

    struct View {
        double ra;
        double dec;
        double roll;
    };
    View view(int index) {
        const View awkward[] = {{0, 0, 0},      {90, 0, 0},      {83, -1, 0},  {10, 90, 0},
                                {200, -90, 30}, {359.99, 45, 0}, {0.01, 0, 90}};
        if (index < 7) {
            return awkward[index];
        }
        return {ra(), dec(), even(-180, 180)};
    }
    // A direction anywhere within `radius` degrees of the view's axis.
    std::pair<double, double> near(const View& view, double radius) {
        for (;;) {
            const double ra_here = ra();
            const double dec_here = dec();
            const double degree = std::numbers::pi / 180;
            const double cosine = std::sin(dec_here * degree) * std::sin(view.dec * degree) +
                                  std::cos(dec_here * degree) * std::cos(view.dec * degree) *
                                      std::cos((ra_here - view.ra) * degree);
            if (cosine > std::cos(radius * degree)) {
                return {ra_here, dec_here};
            }
        }
    }

private:
    std::mt19937 numbers_;
};

TEST(Positions, OfTheProjectionAgreeOnAFullFrame) {
    Sky sky(5);
    Settings settings;
    settings.width = 1920;
    settings.height = 1080;
    const double aspect = 1920.0 / 1080;
    for (int i = 0; i < 200; ++i) {
        const Sky::View view = sky.view(i);
        const double focal = sky.even(0.5, 5);
        const Camera camera = reference::look_at(view.ra, view.dec, view.roll, focal);
        const ::camera product = product_camera(camera);
        for (const auto& [projection, sky_projection] : kinds) {
            settings.projection = projection;
            const bool perspective = projection == Projection::Perspective;
            const op_stars_projection kind = product_settings(settings).projection;
            const Matrix4<double> matrix = projection_matrix(product, kind);
            const support::SkyWcs wcs({view.ra, view.dec, view.roll, settings.width,
                                       settings.height, sky_projection, focal});
            // The frame's corner is at 2.04 half heights.
            const double radius =
                perspective ? std::atan(2.04 / focal) * 180 / std::numbers::pi : 89.9;
            for (int k = 0; k < 10; ++k) {
                const auto [ra, dec] = sky.near(view, radius);
                const auto expected = wcs.pixel(ra, dec);
                ASSERT_TRUE(expected);
                Vector2 found;
                EXPECT_TRUE(world_to_screen(ra, dec, -1, 0, matrix, kind, settings.width,
                                            settings.height, -aspect, aspect, -1, 1, found));
                EXPECT_NEAR(static_cast<double>(found[0]), expected->x, bound)
                    << ra << ", " << dec << " seen from view " << i;
                EXPECT_NEAR(static_cast<double>(found[1]), expected->y, bound)
                    << ra << ", " << dec << " seen from view " << i;
            }
        }
    }
}

TEST(Positions, OfDrawnStarsAgree) {
    Sky sky(9);
    Settings settings;
    settings.width = 320;
    settings.height = 180;
    settings.spot_size = 10;  // 1.6 pixels
    settings.threshold = 0;
    settings.max_luminance = 1;
    int judged = 0;
    for (int i = 0; i < 60; ++i) {
        const Sky::View view = sky.view(i);
        const double focal = sky.even(0.5, 4);
        const Camera camera = reference::look_at(view.ra, view.dec, view.roll, focal);
        for (const auto& [projection, sky_projection] : kinds) {
            settings.projection = projection;
            const support::SkyWcs wcs({view.ra, view.dec, view.roll, settings.width,
                                       settings.height, sky_projection, focal});
            reference::Star one;
            one.luminance = 1;
            std::tie(one.lon, one.lat) =
                sky.near(view, projection == Projection::Perspective
                                   ? std::atan(1 / focal) * 180 / std::numbers::pi
                                   : 89);
            const auto expected = wcs.pixel(one.lon, one.lat);
            ASSERT_TRUE(expected);
            if (expected->x < 5 || expected->x > 314 || expected->y < 5 || expected->y > 174) {
                continue;
            }
            for (const DrawPath path : support::kBothPaths) {
                const auto blob = support::find_blob(product_frame({one}, settings, {camera}, path),
                                                     expected->x, expected->y, 3);
                ASSERT_TRUE(blob) << support::name_of(path) << ": " << one.lon << ", " << one.lat
                                  << " seen from view " << i;
                EXPECT_NEAR(blob->x, expected->x, bound) << support::name_of(path);
                EXPECT_NEAR(blob->y, expected->y, bound) << support::name_of(path);
            }
            ++judged;
        }
    }
    EXPECT_GT(judged, 120);
}

}  // namespace
