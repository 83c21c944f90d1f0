// The real sky: the scene of Orion with the shipped catalogue, through the built program.
//
// Places come from the table of bright stars and WCSLIB, nothing from this project's projection.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <string>

#include "read_back.h"
#include "support/picture.h"
#include "support/pixels.h"
#include "support/scratch.h"
#include "support/sky_wcs.h"
#include "tool_run.h"

namespace {

constexpr const char* kOrionScene = LUMIVAR_SCENES "/orion.json";

struct Place {
    double ra = 0.0;
    double dec = 0.0;
};

/// A star's place by its name in data/bright-stars.csv.
Place place_of(const std::string& name) {
    std::ifstream table(LUMIVAR_DATA "/bright-stars.csv");
    std::string line;
    while (std::getline(table, line)) {
        if (line.size() > name.size() && line.substr(line.rfind(',') + 1) == name) {
            std::istringstream fields(line);
            Place place;
            char comma = 0;
            fields >> place.ra >> comma >> place.dec;
            return place;
        }
    }
    throw std::runtime_error("no star " + name);
}

support::Picture load_rgb(const std::string& path) {
    const ReadBack file = read_back(path);
    support::Picture picture(file.spec.width, file.spec.height, 3);
    support::for_each_pixel(file.spec.width, file.spec.height, [&](int x, int y) {
        for (int c = 0; c < 3; ++c) {
            picture.at(x, y, c) = static_cast<double>(file.at<float>(x, y, c));
        }
    });
    return picture;
}

/// The scene's view as scenes/orion.json states it: towards 83.7, -0.5, 24 degrees high.
support::SkyView view_of(const support::Picture& picture) {
    return {.ra = 83.7,
            .dec = -0.5,
            .width = picture.width,
            .height = picture.height,
            .focal = 1.0 / std::tan(12.0 * std::numbers::pi / 180.0)};
}

/// The centre of the brightest spot within 3 pixels of a place. The logarithm of a Gaussian is a
/// parabola: three pixels give its vertex on each axis.
support::SkyPixel spot_near(const support::Picture& picture, const support::SkyPixel& place) {
    const auto light = [&](int x, int y) {
        return picture.at(x, y, 0) + picture.at(x, y, 1) + picture.at(x, y, 2);
    };
    double peak = 0;
    int peak_x = 0;
    int peak_y = 0;
    support::for_each_pixel(picture.width, picture.height, [&](int x, int y) {
        if (std::hypot(x - place.x, y - place.y) <= 3 && light(x, y) > peak) {
            peak = light(x, y);
            peak_x = x;
            peak_y = y;
        }
    });
    if (peak == 0) {
        ADD_FAILURE() << "nothing is lit around " << place.x << ", " << place.y;
        return place;
    }
    const auto vertex = [&](double before, double after) {
        const double left = std::log(before / peak);
        const double right = std::log(after / peak);
        return (left - right) / (2 * (left + right));
    };
    return {peak_x + vertex(light(peak_x - 1, peak_y), light(peak_x + 1, peak_y)),
            peak_y + vertex(light(peak_x, peak_y - 1), light(peak_x, peak_y + 1))};
}

class Orion : public testing::TestWithParam<const char*> {};

TEST_P(Orion, StarsStandWhereTheSkyHasThem) {
    const ScratchFolder folder;
    const ToolResult result =
        run_tool({"render", kOrionScene, "-o", folder / "orion.exr", "--size", GetParam()});
    ASSERT_EQ(result.code, 0) << result.err;
    const support::Picture picture = load_rgb(folder / "orion.exr");
    const support::SkyWcs sky(view_of(picture));

    const auto spot_of = [&](const char* name) {
        const Place place = place_of(name);
        const auto expected = sky.pixel(place.ra, place.dec);
        EXPECT_TRUE(expected) << name;
        const support::SkyPixel found = spot_near(picture, *expected);
        EXPECT_LT(std::hypot(found.x - expected->x, found.y - expected->y), 0.3)
            << name << " at " << found.x << ", " << found.y << " instead of " << expected->x << ", "
            << expected->y;
        return found;
    };
    const support::SkyPixel mintaka = spot_of("Mintaka");
    spot_of("Alnilam");
    const support::SkyPixel alnitak = spot_of("Alnitak");
    const support::SkyPixel betelgeuse = spot_of("Betelgeuse");
    const support::SkyPixel rigel = spot_of("Rigel");

    // North up, east to the left: Alnitak is the eastern end of the belt, Betelgeuse above Rigel.
    EXPECT_LT(alnitak.x, mintaka.x);
    EXPECT_LT(betelgeuse.y, rigel.y);
    EXPECT_LT(betelgeuse.x, rigel.x);

    const auto red_over_blue = [&](const support::SkyPixel& spot) {
        const int x = static_cast<int>(std::lround(spot.x));
        const int y = static_cast<int>(std::lround(spot.y));
        return picture.at(x, y, 0) / picture.at(x, y, 2);
    };
    EXPECT_GT(red_over_blue(betelgeuse), 1.0);
    EXPECT_LT(red_over_blue(rigel), 1.0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, Orion, testing::Values("1920x1080", "960x540", "1000x1000"),
                         [](const auto& size) { return std::string(size.param); });

}  // namespace
