// The faces of a cube, by stars on their edges.
#include "cube_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "failure_of.h"
#include "read_back.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

constexpr int kSide = 256;

struct Centre {
    double x = 0.0;
    double y = 0.0;
};

/// Where the logarithms of three samples of a Gaussian, at -1, 0 and 1, have their top.
double top_of(double before, double at, double behind) {
    const double a = std::log(before);
    const double b = std::log(at);
    const double c = std::log(behind);
    return 0.5 * (a - c) / (a - 2.0 * b + c);
}

/// The centre of the one star of a picture, from the three brightest rows and columns that are
/// whole: a Gaussian's centre may lie beyond the edge.
Centre centre_of(const ReadBack& picture) {
    const auto light = [&](int x, int y) {
        return static_cast<double>(picture.at<float>(x, y, 1));
    };
    int best_x = 1;
    int best_y = 1;
    for (int y = 1; y + 1 < kSide; ++y) {
        for (int x = 1; x + 1 < kSide; ++x) {
            if (light(x, y) > light(best_x, best_y)) {
                best_x = x;
                best_y = y;
            }
        }
    }
    return {best_x +
                top_of(light(best_x - 1, best_y), light(best_x, best_y), light(best_x + 1, best_y)),
            best_y + top_of(light(best_x, best_y - 1), light(best_x, best_y),
                            light(best_x, best_y + 1))};
}

class CubeMap : public testing::Test {
protected:
    /// The cube of a sky with one star, around a camera that looks to 0 h on the equator, north up
    /// and east to the left.
    void render(double ra, double dec) {
        write_file(folder / "one.stars",
                   bytes_of(lumivar::encode_header()) + white_star(ra, dec, 0.25F));
        write_file(folder / "s.json", R"({"camera": {"look_at": {"ra": 0, "dec": 0}},
                                          "controls": {"Star Spot Size": 40}})");
        const ToolResult result =
            run_tool({"render", folder / "s.json", "-o", folder / "a.FACE.exr", "--cube-map",
                      std::to_string(kSide), "--catalogue", folder / "one.stars", "--quiet"});
        ASSERT_EQ(result.code, 0) << result.err;
    }
    Centre centre(const std::string& face) const {
        return centre_of(read_back(folder / ("a." + face + ".exr")));
    }

    ScratchFolder folder;
};

TEST_F(CubeMap, FacesMeetAtTheirEdges) {
    // East is to the left: 45 degrees west of the front is the edge to the right face, and so on
    // around.
    const struct {
        double ra;
        const char* left;
        const char* right;
    } edges[] = {{315, "front", "right"},
                 {225, "right", "back"},
                 {135, "back", "left"},
                 {45, "left", "front"}};
    for (const auto& edge : edges) {
        render(edge.ra, 20.0);
        const Centre left = centre(edge.left);
        const Centre right = centre(edge.right);
        EXPECT_NEAR(left.x - right.x, kSide, 0.02) << edge.left;
        EXPECT_NEAR(left.y, right.y, 0.02) << edge.left;
        // By hand: the middle of a picture is at half its side, and the star stands tan(20) /
        // cos(45) of half a side above the middle.
        const double above = std::tan(std::numbers::pi / 9.0) * std::sqrt(2.0) * kSide / 2.0;
        EXPECT_NEAR(left.y, kSide / 2.0 - above, 0.02) << edge.left;
    }
}

TEST_F(CubeMap, TheFrontMeetsUpAndDown) {
    // On the upper edge tan(dec) is cos(10 degrees): both are 45 degrees up within the face.
    const double dec = std::atan(std::cos(std::numbers::pi / 18.0)) * 180.0 / std::numbers::pi;
    render(10.0, dec);
    EXPECT_NEAR(centre("up").y - centre("front").y, kSide, 0.02);
    EXPECT_NEAR(centre("up").x, centre("front").x, 0.02);
    render(10.0, -dec);
    EXPECT_NEAR(centre("front").y - centre("down").y, kSide, 0.02);
    EXPECT_NEAR(centre("down").x, centre("front").x, 0.02);
}

TEST_F(CubeMap, TheRightMeetsUpAndDown) {
    // What is the right edge of "up" is the upper edge of "right", from front to back.
    const double dec = std::atan(std::cos(std::numbers::pi / 18.0)) * 180.0 / std::numbers::pi;
    render(260.0, dec);
    const Centre right = centre("right");
    const Centre up = centre("up");
    EXPECT_NEAR(kSide - up.y, right.x, 0.02);
    EXPECT_NEAR(up.x + right.y, kSide, 0.02);
}

TEST_F(CubeMap, ResumesAndNamesItsFaces) {
    render(315, 20.0);
    const ToolResult again = run_tool({"render", folder / "s.json", "-o", folder / "a.FACE.exr",
                                       "--cube-map", std::to_string(kSide), "--catalogue",
                                       folder / "one.stars", "--quiet", "--resume"});
    EXPECT_NE(again.out.find("6 frames kept"), std::string::npos) << again.out;
    EXPECT_EQ(names_in(folder.path()),
              (std::vector<std::string>{"a.back.exr", "a.down.exr", "a.front.exr", "a.left.exr",
                                        "a.right.exr", "a.up.exr", "one.stars", "s.json"}));
    EXPECT_EQ(lumivar::face_pattern("FACE/a.FACE.#.exr", "up"), "FACE/a.up.#.exr");
    EXPECT_NE(failure_of([] { lumivar::face_pattern("FACE/a.#.exr", "up"); }), "no failure");
}

}  // namespace
