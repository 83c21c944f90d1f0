// The cameras, by hand where axes are turned by right angles, and against spherical trigonometry.
#include <base/newmatrix.h>
#include <gtest/gtest.h>
#include <host/camera.h>

#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using host::Camera;
using host::Lens;
using host::Matrix;
using host::Track;

constexpr double kDegree = std::numbers::pi / 180.0;

/// A row point times a matrix.
std::array<double, 4> times(const std::array<double, 4>& p, const Matrix& m) {
    std::array<double, 4> out{};
    for (std::size_t c = 0; c < 4; ++c) {
        for (std::size_t r = 0; r < 4; ++r) {
            out[c] += p[r] * m[4 * r + c];
        }
    }
    return out;
}

template <std::size_t size>
void expect_near(const std::array<double, size>& got, const std::array<double, size>& want) {
    for (std::size_t i = 0; i < size; ++i) {
        EXPECT_NEAR(got[i], want[i], 1e-12) << "element " << i;
    }
}

struct Place {
    double x, y;  ///< from the middle of the picture, x right, y up, in units of the image distance
    double ahead;
};

/// Where the effect sees a star through `camera`: its own way from the host's matrix to the
/// picture, that is the inverse with the y axis of both spaces turned over, in the foundation's
/// matrices. `distance` in parsecs; 0 is infinitely far.
Place seen(const Camera& camera, double ra, double dec, double distance = 0.0,
           double seconds = 0.0) {
    const Matrix w = camera.layer_to_world(seconds);
    DblMatrix4 m(w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7], w[8], w[9], w[10], w[11], w[12],
                 w[13], w[14], w[15]);
    m.invert();
    for (int i = 0; i < 4; ++i) {
        m(1, i) = -m(1, i);
    }
    for (int i = 0; i < 4; ++i) {
        m(i, 1) = -m(i, 1);
    }
    VectorN<double, 4> p(std::cos(dec * kDegree) * std::cos(ra * kDegree), std::sin(dec * kDegree),
                         std::cos(dec * kDegree) * std::sin(ra * kDegree),
                         distance > 0.0 ? 1.0 / distance : 0.0);
    transform(m, p);
    return {p[0] / p[2], p[1] / p[2], p[2]};
}

/// The same by spherical trigonometry: angular distance and position angle (from north through
/// east) of the star as seen from the middle, by the cosine and sine rules. The gnomonic radius is
/// the tangent of the distance; east is left; the roll turns the picture counter-clockwise, as a
/// growing position angle does.
Place by_trigonometry(double ra0, double dec0, double roll, double ra, double dec) {
    const double a = (ra - ra0) * kDegree, d = dec * kDegree, d0 = dec0 * kDegree;
    const double cos_distance =
        std::sin(d0) * std::sin(d) + std::cos(d0) * std::cos(d) * std::cos(a);
    const double sin_distance = std::sqrt(1.0 - cos_distance * cos_distance);
    const double angle =
        std::atan2(std::cos(d) * std::sin(a),
                   std::cos(d0) * std::sin(d) - std::sin(d0) * std::cos(d) * std::cos(a)) +
        roll * kDegree;
    const double radius = sin_distance / cos_distance;
    return {-radius * std::sin(angle), radius * std::cos(angle), cos_distance};
}

std::shared_ptr<const Camera> look_at(double ra, double dec, double roll = 0.0) {
    return host::look_at_camera(ra, dec, roll, Lens::zoom(1000.0));
}

TEST(LookAt, ThePlaceLookedAtIsAtTheMiddleOfThePicture) {
    for (const double ra : {0.0, 83.0, 180.0, 271.5, 359.0, -20.0, 370.0}) {
        for (const double dec : {-90.0, -60.0, -1.0, 0.0, 45.0, 89.0, 90.0}) {
            const Place place = seen(*look_at(ra, dec, 33.0), ra, dec);
            EXPECT_NEAR(place.x, 0.0, 1e-12);
            EXPECT_NEAR(place.y, 0.0, 1e-12);
            EXPECT_NEAR(place.ahead, 1.0, 1e-12);
        }
    }
}

TEST(LookAt, NorthIsUpAndEastIsLeft) {
    const auto camera = look_at(83.0, -1.0);
    const Place north = seen(*camera, 83.0, -0.9);
    EXPECT_NEAR(north.x, 0.0, 1e-12);
    EXPECT_NEAR(north.y, std::tan(0.1 * kDegree), 1e-12);
    const Place east = seen(*camera, 83.1, -1.0);
    EXPECT_LT(east.x, -0.0017);
    EXPECT_NEAR(east.y, 0.0, 1e-5);
}

TEST(LookAt, ThePolesAndAQuarterTurnAreWhereTheyAreByHand) {
    const double degree = std::tan(1.0 * kDegree);
    const struct {
        std::shared_ptr<const Camera> camera;
        double ra, dec, x, y;
    } cases[] = {
        // Over the north pole north is along the given meridian, towards the far side: ra + 180.
        {look_at(40.0, 90.0), 220.0, 89.0, 0.0, degree},
        // Counter-clockwise: what was up comes to the left, and what was left to the bottom.
        {look_at(83.0, 0.0, 90.0), 83.0, 1.0, -degree, 0.0},
        {look_at(83.0, 0.0, 90.0), 84.0, 0.0, 0.0, -degree}};
    for (const auto& each : cases) {
        const Place place = seen(*each.camera, each.ra, each.dec);
        EXPECT_NEAR(place.x, each.x, 1e-12);
        EXPECT_NEAR(place.y, each.y, 1e-12);
    }
}

TEST(LookAt, StarsStandWhereSphericalTrigonometryPutsThem) {
    for (const double ra0 : {0.0, 83.7, 200.0, 359.5}) {
        for (const double dec0 : {-75.0, -0.5, 30.0, 80.0}) {
            for (const double roll : {0.0, 25.0, -140.0}) {
                const auto camera = look_at(ra0, dec0, roll);
                for (const double off_ra : {-30.0, -3.0, 7.0, 40.0}) {
                    for (const double off_dec : {-12.0, -2.0, 5.0, 9.0}) {
                        const Place got = seen(*camera, ra0 + off_ra, dec0 + off_dec);
                        const Place want =
                            by_trigonometry(ra0, dec0, roll, ra0 + off_ra, dec0 + off_dec);
                        EXPECT_NEAR(got.x, want.x, 1e-11);
                        EXPECT_NEAR(got.y, want.y, 1e-11);
                        EXPECT_NEAR(got.ahead, want.ahead, 1e-12);
                    }
                }
            }
        }
    }
}

TEST(LookAt, StandsAtTheOrigin) {
    const Matrix m = look_at(83.0, -1.0, 5.0)->layer_to_world(0.0);
    for (const std::size_t i : {3U, 7U, 11U, 12U, 13U, 14U, 15U}) {
        EXPECT_EQ(m[i], i == 15 ? 1.0 : 0.0);
    }
}

TEST(LookAt, TurnsFromStraightAheadAsOrientationsDo) {
    expect_near(look_at(90.0, 0.0)->layer_to_world(0.0),
                {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    const auto placed = [](double x, double z) {
        return host::placed_camera({0.0, 0.0, 0.0}, {x, 0.0, z}, Lens::zoom(1.0))
            ->layer_to_world(0.0);
    };
    expect_near(look_at(90.0, 0.0, 30.0)->layer_to_world(0.0), placed(0.0, 30.0));
    expect_near(look_at(90.0, 20.0)->layer_to_world(0.0), placed(20.0, 0.0));
}

TEST(LookAt, EveryAngleIsTakenAtItsTime) {
    const auto camera =
        host::look_at_camera(Track({{0.0, 350.0}, {2.0, 370.0}}), Track({{0.0, 0.0}, {2.0, 10.0}}),
                             Track({{0.0, 0.0}, {1.0, 30.0}}), Lens::zoom(1.0));
    expect_near(camera->layer_to_world(1.0), look_at(0.0, 5.0, 30.0)->layer_to_world(0.0));
}

/// Where a camera looks, in the stars' space.
std::array<double, 3> ahead(const Camera& camera, double seconds) {
    const Matrix m = camera.layer_to_world(seconds);
    return {m[8], -m[9], m[10]};
}

std::shared_ptr<const Camera> at_point(std::array<Track, 3> position, double ra, double dec,
                                       double distance) {
    return host::look_at_camera(std::move(position), ra, dec, Track(distance), 0.0,
                                Lens::zoom(1000.0));
}

TEST(LookAt, FromAnotherPlaceADirectionStaysAndAPointIsLookedAt) {
    // Infinitely far: the matrix of the origin, moved.
    const auto afar =
        host::look_at_camera({1.0, 2.0, 3.0}, 83.0, -1.0, std::nullopt, 5.0, Lens::zoom(1000.0));
    Matrix want = look_at(83.0, -1.0, 5.0)->layer_to_world(0.0);
    want[12] = 1.0;
    want[13] = 2.0;
    want[14] = 3.0;
    EXPECT_EQ(afar->layer_to_world(0.0), want);
    // The point (10, 0, 0) from (0, 0, -10), and from (0, 10, 0), which is below, as y is down.
    const double half = std::sqrt(0.5);
    expect_near(ahead(*at_point({0.0, 0.0, -10.0}, 0.0, 0.0, 10.0), 0.0), {half, 0.0, half});
    expect_near(ahead(*at_point({0.0, 10.0, 0.0}, 0.0, 0.0, 10.0), 0.0), {half, half, 0.0});
    // In the very point, as from the origin.
    expect_near(ahead(*at_point({10.0, 0.0, 0.0}, 0.0, 0.0, 10.0), 0.0), {1.0, 0.0, 0.0});
}

TEST(LookAt, APointIsAtTheMiddleOfThePictureFromEverywhereOnTheWay) {
    const auto camera =
        at_point({Track({{0.0, -3.0}, {4.0, 30.0}}), Track({{0.0, 7.0}, {4.0, -9.0}}),
                  Track({{0.0, 1.0}, {4.0, 60.0}})},
                 88.8, 7.4, 152.7);
    for (const double seconds : {0.0, 0.7, 2.0, 3.9, 4.0}) {
        const Place star = seen(*camera, 88.8, 7.4, 152.7, seconds);
        EXPECT_NEAR(star.x, 0.0, 1e-12);
        EXPECT_NEAR(star.y, 0.0, 1e-12);
        EXPECT_GT(star.ahead, 0.0);
        // What is a little north of it is above it, and on the middle line to first order.
        const Place north = seen(*camera, 88.8, 7.41, 152.7, seconds);
        EXPECT_GT(north.y, 1e-4);
    }
}

std::shared_ptr<const Camera> aimed(std::vector<host::AimKey> aims) {
    return host::aimed_camera({0.0, 0.0, 0.0}, std::move(aims), 0.0, Lens::zoom(1000.0));
}

TEST(Aimed, GoesAlongTheGreatCircle) {
    using host::Interpolation;
    // 90 degrees apart: a third of the way is 30 degrees, where the sine is a half.
    const host::SkyPlace from = {0.0, 0.0, {}};
    const host::SkyPlace to = {90.0, 60.0, {}};
    const double sine = std::sin(60.0 * kDegree);
    const auto linear = aimed({{1.0, from}, {4.0, to}});
    expect_near(ahead(*linear, 2.0), {std::cos(30.0 * kDegree), 0.5 * sine, 0.5 * 0.5});
    expect_near(ahead(*linear, 0.0), {1.0, 0.0, 0.0});
    expect_near(ahead(*linear, 4.0), {0.0, sine, 0.5});
    expect_near(ahead(*linear, 9.0), {0.0, sine, 0.5});
    // 3 / 16 - 2 / 64 of the way after a quarter of the time.
    const auto smooth = aimed({{0.0, from, Interpolation::Smooth}, {4.0, to}});
    const double angle = 0.15625 * 90.0 * kDegree;
    expect_near(ahead(*smooth, 1.0),
                {std::cos(angle), std::sin(angle) * sine, std::sin(angle) * 0.5});
    const auto held = aimed({{0.0, from, Interpolation::Hold}, {4.0, to}});
    expect_near(ahead(*held, 3.99), {1.0, 0.0, 0.0});
    expect_near(ahead(*held, 4.0), {0.0, sine, 0.5});
}

TEST(Aimed, TakesTheShortWayAcrossTheStartOfRightAscensionAndByNorthToTheOppositePlace) {
    expect_near(ahead(*aimed({{0.0, {350.0, 0.0, {}}}, {2.0, {10.0, 0.0, {}}}}), 1.0),
                {1.0, 0.0, 0.0});
    expect_near(ahead(*aimed({{0.0, {0.0, 0.0, {}}}, {2.0, {180.0, 0.0, {}}}}), 1.0),
                {0.0, 1.0, 0.0});
    expect_near(ahead(*aimed({{0.0, {30.0, 20.0, {}}}, {2.0, {390.0, 20.0, {}}}}), 1.0),
                ahead(*look_at(30.0, 20.0), 0.0));
}

TEST(Aimed, BothEndsAreSeenFromWhereTheCameraIs) {
    // Half way, at (0, 0, 5): the point (5, 0, 0) is seen at ra -45, the point (0, 0, 10) at 90.
    const auto camera = host::aimed_camera({0.0, 0.0, Track({{0.0, 0.0}, {2.0, 10.0}})},
                                           {{0.0, {0.0, 0.0, 5.0}}, {2.0, {90.0, 0.0, 10.0}}}, 0.0,
                                           Lens::zoom(1000.0));
    const double middle = 22.5 * kDegree;
    expect_near(ahead(*camera, 1.0), {std::cos(middle), 0.0, std::sin(middle)});
}

TEST(Aimed, RefusesNoKeysAndKeysOutOfOrder) {
    EXPECT_THROW(aimed({}), std::invalid_argument);
    EXPECT_THROW(aimed({{1.0, {}}, {1.0, {}}}), std::invalid_argument);
}

std::shared_ptr<const Camera> turned(double x, double y, double z) {
    return host::placed_camera({10.0, 20.0, 30.0}, {x, y, z}, Lens::zoom(1000.0));
}

TEST(Placed, StandsAtItsPositionAndWithoutOrientationItsAxesAreTheWorlds) {
    expect_near(times({0, 0, 0, 1}, turned(12, 34, 56)->layer_to_world(0.0)), {10, 20, 30, 1});
    expect_near(turned(0, 0, 0)->layer_to_world(0.0),
                {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1});
}

TEST(Placed, TurnsByQuarters) {
    // Where right (x), down (y) and ahead (z) go.
    const struct {
        double about_x, about_y, about_z;
        std::array<double, 4> right, down, ahead;
    } cases[] = {
        // Ahead goes up, which is -y; down goes ahead.
        {90, 0, 0, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, -1, 0, 0}},
        {0, 90, 0, {0, 0, -1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}},
        // Clockwise: the camera's right goes down.
        {0, 0, 90, {0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}},
        // About z, then y, then x. Right: by z to y, by y nowhere, by x to z. Down: by z to -x, by
        // y to z, by x to -y. Ahead: not by z, by y to x, by x nowhere.
        {90, 90, 90, {0, 0, 1, 0}, {0, -1, 0, 0}, {1, 0, 0, 0}},
    };
    for (const auto& each : cases) {
        const Matrix m = turned(each.about_x, each.about_y, each.about_z)->layer_to_world(0.0);
        expect_near(times({1, 0, 0, 0}, m), each.right);
        expect_near(times({0, 1, 0, 0}, m), each.down);
        expect_near(times({0, 0, 1, 0}, m), each.ahead);
    }
}

TEST(Placed, MatchesThreeTurnsOneAfterAnother) {
    const Matrix one = turned(17, -48, 131)->layer_to_world(0.0);
    std::array<double, 4> p = {0.3, -1.7, 2.9, 0.0};
    const auto whole = times(p, one);
    for (const auto& step : {turned(0, 0, 131), turned(0, -48, 0), turned(17, 0, 0)}) {
        p = times(p, step->layer_to_world(0.0));
    }
    expect_near(whole, p);
}

TEST(Placed, EveryNumberIsTakenAtItsTime) {
    const Track slide({{0.0, 0.0}, {1.0, 100.0}});
    const Track turn({{0.0, 0.0}, {1.0, 90.0}});
    const auto camera = host::placed_camera({slide, 0.0, 0.0}, {0.0, turn, 0.0}, Lens::zoom(1.0));
    expect_near(times({0, 0, 1, 1}, camera->layer_to_world(1.0)), {101, 0, 0, 1});
    expect_near(times({0, 0, 1, 1}, camera->layer_to_world(0.5)),
                {50 + std::sqrt(0.5), 0, std::sqrt(0.5), 1});
}

TEST(MatrixCamera, IsTheGivenMatrixElementByElement) {
    std::array<Track, 16> elements;
    for (std::size_t i = 0; i < 16; ++i) {
        elements[i] = static_cast<double>(i);
    }
    elements[12] = Track({{0.0, 5.0}, {2.0, 9.0}});
    const Matrix m = host::matrix_camera(elements, Lens::zoom(1.0))->layer_to_world(0.5);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(m[i], i == 12 ? 6.0 : static_cast<double>(i));
    }
}

/// A turn about the y axis, as a layer's orientation turns it.
Matrix turned_right(double degrees, double x = 0.0) {
    const double s = std::sin(degrees * kDegree), c = std::cos(degrees * kDegree);
    return {c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, x, 0, 0, 1};
}

TEST(PathCamera, IsExactAtItsSamplesAndStandsStillOutside) {
    const Matrix first = turned_right(10, 1);
    const Matrix last = turned_right(30, 5);
    const auto camera = host::path_camera({{1.0, first, 100.0}, {3.0, last, 200.0}});
    for (const double time : {-5.0, 1.0}) {
        EXPECT_EQ(camera->layer_to_world(time), first);
        EXPECT_EQ(camera->zoom(time), 100.0);
    }
    for (const double time : {3.0, 99.0}) {
        EXPECT_EQ(camera->layer_to_world(time), last);
        EXPECT_EQ(camera->zoom(time), 200.0);
    }
}

TEST(PathCamera, TurnsAtAnEvenPaceTheShortWay) {
    const struct {
        double from, to, quarter;  // degrees
    } turns[] = {
        {0, 120, 30}, {350, 370, 355}, {170, 190, 175}, {-100, 120, -135}, {0, 1e-7, 2.5e-8}};
    for (const auto& turn : turns) {
        const auto camera = host::path_camera(
            {{0.0, turned_right(turn.from, 4), 100.0}, {2.0, turned_right(turn.to, 8), 300.0}});
        const Matrix got = camera->layer_to_world(0.5);
        const Matrix want = turned_right(turn.quarter, 5);
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_NEAR(got[i], want[i], 1e-14) << turn.from << " to " << turn.to;
        }
        EXPECT_EQ(camera->zoom(0.5), 150.0);
    }
}

TEST(PathCamera, TurnsAboutAnyAxis) {
    // Half turns about each axis and in between, from the matrix of the axis and the angle.
    for (const std::array<double, 3> axis : {std::array<double, 3>{1, 0, 0},
                                             {0, 1, 0},
                                             {0, 0, 1},
                                             {0.6, 0, 0.8},
                                             {0.48, -0.64, 0.6}}) {
        const auto about_axis = [&](double degrees) {
            const double s = std::sin(degrees * kDegree), c = std::cos(degrees * kDegree);
            const auto [x, y, z] = axis;
            const double t = 1 - c;
            // For row vectors.
            return Matrix{t * x * x + c,
                          t * x * y + s * z,
                          t * x * z - s * y,
                          0,
                          t * x * y - s * z,
                          t * y * y + c,
                          t * y * z + s * x,
                          0,
                          t * x * z + s * y,
                          t * y * z - s * x,
                          t * z * z + c,
                          0,
                          0,
                          0,
                          0,
                          1};
        };
        for (const double start : {0.0, 90.0, 150.0, 179.0, 260.0}) {
            const auto camera = host::path_camera(
                {{0.0, about_axis(start), 1.0}, {1.0, about_axis(start + 40), 1.0}});
            const Matrix got = camera->layer_to_world(0.25);
            const Matrix want = about_axis(start + 10);
            for (std::size_t i = 0; i < 16; ++i) {
                EXPECT_NEAR(got[i], want[i], 1e-14);
            }
        }
    }
}

TEST(PathCamera, RefusesWhatIsNoPath) {
    const Matrix good = turned_right(0);
    Matrix scaled = good;
    scaled[0] = 2.0;
    Matrix mirrored = good;
    mirrored[0] = -1.0;
    Matrix broken = good;
    broken[5] = std::nan("");
    EXPECT_THROW(host::path_camera({}), std::invalid_argument);
    EXPECT_THROW(host::path_camera({{1.0, good, 1.0}, {1.0, good, 1.0}}), std::invalid_argument);
    EXPECT_THROW(host::path_camera({{0.0, good, 0.0}}), std::invalid_argument);
    for (const Matrix& matrix : {scaled, mirrored, broken}) {
        EXPECT_THROW(host::path_camera({{0.0, matrix, 1.0}}), std::invalid_argument);
    }
}

TEST(Lens, AVerticalAngleOf90SeesHalfTheHeightAtThatDistanceAndIsInterpolatedAsAnAngle) {
    EXPECT_NEAR(Lens::vertical_fov(90.0, 1080).zoom_at(0.0), 540.0, 1e-9);
    // tan 30 = 1 / sqrt 3.
    EXPECT_NEAR(Lens::vertical_fov(60.0, 1081).zoom_at(0.0), 540.5 * std::sqrt(3.0), 1e-9);
    const Lens lens = Lens::vertical_fov(Track({{0.0, 60.0}, {1.0, 120.0}}), 1080);
    EXPECT_NEAR(lens.zoom_at(0.5), 540.0, 1e-9);
}

TEST(Lens, ZoomIsTakenAsItIs) {
    EXPECT_EQ(Lens::zoom(Track({{0.0, 100.0}, {1.0, 200.0}})).zoom_at(0.25), 125.0);
    EXPECT_EQ(host::look_at_camera(0.0, 0.0, 0.0, Lens::zoom(777.0))->zoom(3.0), 777.0);
    // A new camera has 50 mm on 36 mm film.
    EXPECT_NEAR(Lens::new_camera(1920).zoom_at(0.0), 2666.6666666666665, 1e-9);
    EXPECT_EQ(Lens::new_camera(36).zoom_at(0.0), 50.0);
}

}  // namespace
