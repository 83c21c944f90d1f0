// Where stars land, against the sky projections of a public library: gnomonic, orthographic and
// equidistant azimuthal.
//
// The bound is 0.02 pixel. Single precision of the angles comes to 6e-7 radians at most, which is
// 0.0016 pixel for the longest lens here on a frame 1080 high, more towards the corners of a wide
// one.
#include <gtest/gtest.h>
#include <libimgops/projection.h>

#include <cmath>
#include <cstddef>
#include <iterator>
#include <numbers>
#include <random>
#include <utility>

#include "product_camera.h"
#include "support/sky_wcs.h"

namespace {

using support::SkyProjection;

constexpr double kBound = 0.02;
constexpr double kDegree = std::numbers::pi / 180;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

constexpr std::pair<op_stars_projection, SkyProjection> kKinds[] = {
    {Persp, SkyProjection::Tan}, {HemiSph, SkyProjection::Sin}, {AzEqu, SkyProjection::Arc}};

struct View {
    double ra;
    double dec;
    double roll;
};

class Positions : public testing::Test {
protected:
    double even(double low, double high) {
        return low + (high - low) * static_cast<double>(numbers_()) * 0x1p-32;
    }
    /// Spread evenly over the sphere.
    std::pair<double, double> direction() {
        return {even(0, 360), std::asin(even(-1, 1)) / kDegree};
    }
    /// The awkward ones first, then any.
    View view(std::size_t index) {
        constexpr View kAwkward[] = {{0, 0, 0},      {90, 0, 0},      {83, -1, 0},  {10, 90, 0},
                                     {200, -90, 30}, {359.99, 45, 0}, {0.01, 0, 90}};
        if (index < std::size(kAwkward)) {
            return kAwkward[index];
        }
        const auto [ra, dec] = direction();
        return {ra, dec, even(-180, 180)};
    }
    /// Anywhere within `radius` degrees of the view's axis.
    std::pair<double, double> near(const View& view, double radius) {
        for (;;) {
            const auto [ra, dec] = direction();
            const double cosine = std::sin(dec * kDegree) * std::sin(view.dec * kDegree) +
                                  std::cos(dec * kDegree) * std::cos(view.dec * kDegree) *
                                      std::cos((ra - view.ra) * kDegree);
            if (cosine > std::cos(radius * kDegree)) {
                return {ra, dec};
            }
        }
    }

private:
    std::mt19937 numbers_{5};
};

TEST_F(Positions, AgreeOnAFullFrame) {
    const double aspect = static_cast<double>(kWidth) / kHeight;
    for (std::size_t i = 0; i < 200; ++i) {
        const View view = this->view(i);
        const double focal = even(0.5, 5);
        const ::camera camera =
            product_camera(reference::look_at(view.ra, view.dec, view.roll, focal));
        for (const auto& [kind, sky_projection] : kKinds) {
            const Matrix4<double> matrix = projection_matrix(camera, kind);
            const support::SkyWcs wcs(
                {view.ra, view.dec, view.roll, kWidth, kHeight, sky_projection, focal});
            // The frame's corner is at 2.04 half heights.
            const double radius = kind == Persp ? std::atan(2.04 / focal) / kDegree : 89.9;
            for (int k = 0; k < 10; ++k) {
                const auto [ra, dec] = near(view, radius);
                const auto expected = wcs.pixel(ra, dec);
                ASSERT_TRUE(expected);
                Vector2 found;
                EXPECT_TRUE(world_to_screen(ra, dec, -1, 0, matrix, kind, kWidth, kHeight, -aspect,
                                            aspect, -1, 1, found));
                EXPECT_NEAR(static_cast<double>(found[0]), expected->x, kBound)
                    << ra << ", " << dec << " seen from view " << i;
                EXPECT_NEAR(static_cast<double>(found[1]), expected->y, kBound)
                    << ra << ", " << dec << " seen from view " << i;
            }
        }
    }
}

}  // namespace
