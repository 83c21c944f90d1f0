#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libimgops/projection.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <string>

#include "product_camera.h"
#include "support/random_numbers.h"

namespace {

/// A 1000 x 500 frame whose window has square pixels, unless a test says otherwise.
struct View {
    DblMatrix4 m{1.0};
    op_stars_projection projection = Persp;
    double crush = 0;
    int width = 1000;
    int height = 500;
    double x0 = -2;
    double x1 = 2;
    double y0 = -1;
    double y1 = 1;

    bool see(double lon, double lat, double distance, Vector2& out) const {
        return world_to_screen(lon, lat, distance, crush, m, projection, width, height, x0, x1, y0,
                               y1, out);
    }
};

/// World to camera for a camera moved so that the world shifts by (x, y, z).
DblMatrix4 shifted(double x, double y, double z) {
    DblMatrix4 m(1.0);
    m(3, 0) = x;
    m(3, 1) = y;
    m(3, 2) = z;
    return m;
}

void expect_same(const Vector2& a, const Vector2& b) {
    EXPECT_EQ(a[0], b[0]);
    EXPECT_EQ(a[1], b[1]);
}

}  // namespace

// Places are written whether or not the star is visible, and are not limited to the frame.
TEST(Projection, PutsStarsWhereTheyAreByHand) {
    const double focal = 2;
    const struct {
        const char* what;
        op_stars_projection projection;
        double lon, lat;
        bool visible;
        double x, y;  ///< in the window, y up
    } rows[] = {
        {"the view axis", Persp, 90, 0, true, 0, 0},
        {"the view axis", HemiSph, 90, 0, true, 0, 0},
        {"the view axis", AzEqu, 90, 0, true, 0, 0},
        {"the x axis", HemiSph, 0, 0, true, 1, 0},
        {"the x axis", AzEqu, 0, 0, true, 1, 0},
        {"half way to it", AzEqu, 45, 0, true, 0.5, 0},
        {"off the frame", Persp, 20, 0, true, focal * std::tan(70 * std::numbers::pi / 180), 0},
        {"above the frame", Persp, 90, 70, true, 0, focal * std::tan(70 * std::numbers::pi / 180)},
        // Mirrored through the centre.
        {"behind", Persp, -85, 0, false, -focal * std::tan(5 * std::numbers::pi / 180), 0},
        {"behind", HemiSph, -60, 0, false, 0.5, 0},
        // 100 degrees off the axis is where 80 is.
        {"behind", AzEqu, -10, 0, false, 80.0 / 90.0, 0},
        {"just behind", AzEqu, -0.001, 0, false, 1, 0},
        {"straight behind", AzEqu, 270, 0, false, 0, 0},
    };
    for (const auto& row : rows) {
        View view;
        view.projection = row.projection;
        view.m =
            row.projection == Persp ? DblMatrix4::perspective(focal, 0.1, -1) : DblMatrix4(1.0);
        Vector2 out(-7, -7);
        EXPECT_EQ(view.see(row.lon, row.lat, -1, out), row.visible) << row.what;
        // 250 pixels a unit of the window; y = 1 is the top row.
        EXPECT_NEAR(out[0], 500 + 250 * row.x, 0.01) << row.what << row.projection;
        EXPECT_NEAR(out[1], 250 - 250 * row.y, 0.01) << row.what << row.projection;
    }
}

TEST(Projection, TakesTheSecondAngleAsElevation) {
    View view;
    view.projection = HemiSph;
    for (const double lon : {0.0, 45.0, 123.0, 300.0}) {
        Vector2 out;
        // Straight up, on the rim: whether that is visible hangs on the last bit.
        view.see(lon, 90, -1, out);
        EXPECT_NEAR(out[0], 500.0, 1e-4);
        EXPECT_NEAR(out[1], 0.0, 1e-4);
    }
}

TEST(Projection, UsesAnglesInSinglePrecision) {
    View view;
    view.projection = HemiSph;
    view.x0 = -1e-7;
    view.x1 = 1e-7;
    Vector2 out;
    view.see(90, 0, -1, out);
    // The single-precision pi / 2 is 1.57079637..., whose cosine is -4.3711390e-8; exact degrees
    // would land at 500.
    EXPECT_NEAR(out[0], 1000.0 * (1e-7 - 4.3711390e-8) / 2e-7, 1e-3);

    // What a float cannot tell apart lands in the same place.
    view = View();
    view.projection = AzEqu;
    Vector2 other;
    view.see(83.0, -1.0, -1, out);
    view.see(83.0 + 1e-9, -1.0 - 1e-10, -1, other);
    expect_same(out, other);
}

TEST(Projection, ShiftsStarsWithADistanceAlone) {
    View view;
    view.m = shifted(4, 0, 0) * DblMatrix4::perspective(2, 0.1, -1);
    view.x0 = -1;
    view.x1 = 1;
    Vector2 out;
    // Weight 1 / 10 moves the point to (0.4, 0, 1); times focal 2 that is 0.8 of the half window.
    EXPECT_TRUE(view.see(90, 0, 10, out));
    EXPECT_NEAR(out[0], 900.0, 1e-3);
    // Crush 5 takes 0.05 off the weight of 0.1: half the shift.
    view.crush = 5;
    EXPECT_TRUE(view.see(90, 0, 10, out));
    EXPECT_NEAR(out[0], 700.0, 1e-3);
    view.crush = 0;
    for (const double none : {0.0, -0.0, -1.0, -1e300}) {
        EXPECT_TRUE(view.see(90, 0, none, out));
        EXPECT_NEAR(out[0], 500.0, 1e-3);
    }
    // The crush acts on stars without a distance too: a negative one brings them near.
    view.crush = -5;
    EXPECT_TRUE(view.see(90, 0, -1, out));
    EXPECT_NEAR(out[0], 700.0, 1e-3);
}

TEST(Projection, CrushesStarsToInfinityAndNoFarther) {
    View view;
    view.m = shifted(0.3, -0.2, 0.1) * DblMatrix4::perspective(2, 0.1, -1);
    Vector2 at_infinity, out;
    view.see(80, 5, -1, at_infinity);

    view.see(80, 5, 50, out);
    EXPECT_NE(out[0], at_infinity[0]);
    // 1 / 50 - 2 x 0.01 is 0; with 3 it would be negative.
    for (const double crush : {2.0, 3.0, 1e6}) {
        view.crush = crush;
        view.see(80, 5, 50, out);
        expect_same(out, at_infinity);
    }
}

TEST(Persp, GivesInfinitiesInTheCameraPlane) {
    View view;
    view.m = DblMatrix4::perspective(2, 0.1, -1);
    Vector2 out;
    // Longitude 0 has no z at all, so the last element is exactly 0.
    EXPECT_TRUE(view.see(0, 45, -1, out));
    EXPECT_EQ(out[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(out[1], -std::numeric_limits<float>::infinity());
}

TEST(AzEqu, MeasuresTheAngleWithASinglePrecisionFactor) {
    View view;
    view.projection = AzEqu;
    // A window of a millionth on either side of the rim, 1000 pixels wide.
    view.x0 = 1 - 1e-6;
    view.x1 = 1 + 1e-6;
    Vector2 out;
    EXPECT_TRUE(view.see(0, 0, -1, out));
    // 0.63661974668503 in place of 2 / pi = 0.63661977236758: the rim is 4.0342e-8 short of 1,
    // which is 20.17 pixels here.
    EXPECT_NEAR(out[0], 500 - 20.17, 0.01);
}

TEST(AzEqu, DividesZeroByZeroOnTheAxis) {
    View view;
    view.projection = AzEqu;
    // The camera looks along the world's x axis.
    view.m = {0,  0, 1, 0,  //
              0,  1, 0, 0,  //
              -1, 0, 0, 0,  //
              0,  0, 0, 1};
    Vector2 out;
    EXPECT_TRUE(view.see(0, 0, -1, out));
    EXPECT_TRUE(std::isnan(out[0]));
    EXPECT_TRUE(std::isnan(out[1]));
}

TEST(AzEqu, MayBeNoNumberOnTheRimAndIsVisibleThen) {
    View view;
    view.projection = AzEqu;
    // Longitude 0 lies in the camera's plane, at radius 1 give or take the rounding of its length;
    // a scaled world makes that length round more.
    view.m = DblMatrix4(3.0);
    int no_number = 0;
    for (int step = -9000; step <= 9000; ++step) {
        Vector2 out;
        EXPECT_TRUE(view.see(0, 0.01 * step, -1, out)) << step;
        if (std::isnan(out[0])) {
            EXPECT_TRUE(std::isnan(out[1]));
            ++no_number;
        } else {
            EXPECT_NEAR(std::hypot((out[0] - 500) / 250, (out[1] - 250) / 250), 1.0, 1e-6) << step;
        }
    }
    EXPECT_GT(no_number, 0);
    EXPECT_LT(no_number, 18001);
}

TEST(HemiSph, LosesThoseOnTheRimThatRoundBeyondIt) {
    View view;
    view.projection = HemiSph;
    int visible = 0;
    for (int step = -900; step <= 900; ++step) {
        Vector2 out;
        visible += view.see(0, 0.1 * step, -1, out) ? 1 : 0;
        EXPECT_NEAR(std::hypot((out[0] - 500) / 250, (out[1] - 250) / 250), 1.0, 1e-6) << step;
    }
    EXPECT_GT(visible, 0);
    EXPECT_LT(visible, 1801);
}

TEST(Projection, RefusesAnUnknownOneBeforeWriting) {
    View view;
    for (const int unknown : {3, -1, 1000000}) {
        view.projection = static_cast<op_stars_projection>(unknown);
        Vector2 out(-7, -8);
        try {
            view.see(90, 0, -1, out);
            FAIL() << "projection " << unknown << " was taken";
        } catch (const StrXception& x) {
            const std::string message = x.message().c_str();
            EXPECT_EQ(message.find("unknown projection in <bool world_to_screen(double, double, "),
                      0U);
            EXPECT_NE(message.find("> (libimgops/stars.cpp:290)"), std::string::npos) << message;
        }
        expect_same(out, Vector2(-7, -8));
    }
}

// A second formulation, in double precision; `sky_wcs_test` judges it by a public library.
TEST(Projection, AgreesWithTheReferenceRendererAllOverTheSky) {
    const reference::Triple awkward[] = {{0, 0, 0},      {90, 0, 0},      {83, -1, 0},  {10, 90, 0},
                                         {200, -90, 30}, {359.99, 45, 0}, {0.01, 0, 90}};
    RandomNumbers random(20261121);
    const auto latitude = [&] { return std::asin(random.between(-1, 1)) * 180 / std::numbers::pi; };
    View view;
    reference::Settings settings;
    view.width = settings.width = 1600;
    view.height = settings.height = 900;
    view.x1 = 1600.0 / 900.0;
    view.x0 = -view.x1;
    int seen = 0;
    for (std::size_t i = 0; i < 200; ++i) {
        const auto [lon, lat, roll] =
            i < std::size(awkward)
                ? awkward[i]
                : reference::Triple{random.between(0, 360), latitude(), random.between(-180, 180)};
        const double focal = random.between(0.5, 5);
        const reference::Camera camera = reference::look_at(lon, lat, roll, focal);
        for (int k = 0; k < 30; ++k) {
            const reference::Star star{.lon = random.between(-180, 180), .lat = latitude()};
            for (const reference::Projection kind :
                 {reference::Projection::Perspective, reference::Projection::Hemisphere,
                  reference::Projection::Equidistant}) {
                const op_stars_projection projection = product_projection(kind);
                settings.projection = kind;
                const auto [at, visible] = project(star, settings, camera);
                const double radius = std::hypot(at.x - 800, at.y - 450) / 450;
                // To 85 degrees from the axis, where a pinhole's picture has become large.
                const double tangent = std::tan(85 * std::numbers::pi / 180);
                if (!visible || (projection == Persp && radius > focal * tangent)) {
                    continue;
                }
                ++seen;
                view.projection = projection;
                view.m = projection_matrix(product_camera(camera), projection);
                Vector2 out;
                EXPECT_TRUE(view.see(star.lon, star.lat, -1, out));
                // 180 degrees in single precision are known to 7.6e-6 degrees, radians to 1.2e-7;
                // an angle is off by 5e-7 at most, and a float position by half its last place.
                const double slope = projection == Persp ? focal + radius * radius / focal : 1;
                const double tolerance =
                    5e-7 * slope * 450 + 1e-7 * (std::fabs(at.x) + std::fabs(at.y));
                EXPECT_NEAR(out[0], at.x, tolerance) << projection << " of view " << i;
                EXPECT_NEAR(out[1], at.y, tolerance) << projection << " of view " << i;
            }
        }
    }
    EXPECT_GT(seen, 5000);
}
