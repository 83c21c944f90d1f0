// Scenes through the whole product (command line, stand-in host, built bundle, star file), judged
// by the committed pictures that the double-precision renderer made from the scenes' plain numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "golden_picture.h"
#include "golden_scene.h"
#include "golden_stars.h"
#include "support/catalogue.h"
#include "support/compare.h"
#include "support/pixels.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using golden::Name;
using reference::Rendering;
using support::Comparison;
using support::Picture;

Rendering committed(const Name& name) {
    return golden::read_picture(LUMIVAR_GOLDEN "/" + std::string(name.scene) + ".exr");
}

Comparison judge(const Picture& picture, const Rendering& by) {
    return support::compare_within(picture, by.light, by.allowance);
}

/// The scene's frame through the built program; `more` goes to its command line.
Picture product(const Name& name, const std::vector<std::string>& more = {}) {
    const ScratchFolder folder;
    support::write_catalogue(
        folder / "golden.stars", support::kVersion2,
        golden::catalogue_stars(golden::load_stars(LUMIVAR_DATA "/bright-stars.csv")));
    std::vector<std::string> arguments = {
        "render",      LUMIVAR_GOLDEN "/scenes/" + std::string(name.scene) + ".json",
        "-o",          folder / "product.exr",
        "--frame",     std::to_string(name.frame),
        "--catalogue", folder / "golden.stars"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ToolOptions built;
    built.program = LUMIVAR_PROGRAM;
#ifdef LUMIVAR_PLUGIN
    // Another system's bundle in place of this build's own.
    arguments.insert(arguments.end(), {"--plugin", LUMIVAR_PLUGIN});
    built.environment = {"LD_PRELOAD=" LUMIVAR_PLUGIN_LOADER};
#endif
    const ToolResult result = run_tool(arguments, built);
    if (result.code != 0) {
        throw std::runtime_error(result.err);
    }
    return golden::read_light(folder / "product.exr");
}

/// The picture moved to the right, which leaves the first column dark.
Picture moved(const Picture& picture) {
    Picture result = picture;
    support::for_each_pixel(picture.width, picture.height, [&](int x, int y) {
        for (int c = 0; c < 3; ++c) {
            result.at(x, y, c) = x > 0 ? picture.at(x - 1, y, c) : 0;
        }
    });
    return result;
}

class Golden : public testing::TestWithParam<Name> {};

TEST_P(Golden, ProductRendersThePicture) {
    const Comparison result = judge(product(GetParam()), committed(GetParam()));
    EXPECT_TRUE(result.passed) << result.report;
}

TEST_P(Golden, PictureRejectsEveryOther) {
    const Rendering picture = committed(GetParam());
    EXPECT_TRUE(judge(picture.light, picture).passed);
    for (const Name& other : golden::names) {
        if (std::string(other.scene) != GetParam().scene) {
            EXPECT_FALSE(judge(committed(other).light, picture).passed) << other.scene;
        }
    }
}

TEST_P(Golden, PictureRejectsSmallFaults) {
    const Rendering picture = committed(GetParam());
    EXPECT_FALSE(judge(moved(picture.light), picture).passed) << "a pixel aside";
    Picture changed = picture.light;
    for (double& value : changed.values) {
        value *= 1.005;
    }
    EXPECT_FALSE(judge(changed, picture).passed) << "half a hundredth brighter";
    changed = picture.light;
    for (std::size_t i = 0; i < changed.values.size(); i += 3) {
        std::swap(changed.values[i], changed.values[i + 2]);
    }
    EXPECT_FALSE(judge(changed, picture).passed) << "red and blue swapped";
    EXPECT_FALSE(judge(Picture(changed.width, changed.height, 3), picture).passed) << "black";
}

TEST_P(Golden, PictureShowsMuchMoreLightThanItAllowsFor) {
    const Rendering picture = committed(GetParam());
    for (int c = 0; c < 3; ++c) {
        EXPECT_GT(picture.light.total(c), 100 * picture.allowance.total(c)) << c;
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, Golden, testing::ValuesIn(golden::names), [](const auto& name) {
    std::string text = name.param.scene;
    std::replace(text.begin(), text.end(), '-', '_');
    return text;
});

TEST(GoldenPictures, AreWhatTheirMakerMakesToday) {
    const ScratchFolder folder;
    ToolOptions maker;
    maker.program = LUMIVAR_MAKE_GOLDEN;
    const ToolResult result = run_tool({folder.path()}, maker);
    ASSERT_EQ(result.code, 0) << result.err;
    ASSERT_EQ(names_in(folder.path()).size(), golden::names.size());
    for (const Name& name : golden::names) {
        const Rendering made = golden::read_picture(folder / (std::string(name.scene) + ".exr"));
        const Rendering kept = committed(name);
        const auto expect_same = [&](const Picture& now, const Picture& before, const char* what) {
            Picture limit = before;
            for (double& value : limit.values) {
                // Below the far reach the reference itself does not say.
                value = 1e-6 * std::fabs(value) + reference::far_reach;
            }
            const Comparison comparison = support::compare_within(now, before, limit);
            EXPECT_TRUE(comparison.passed)
                << name.scene << ' ' << what << ": " << comparison.report;
        };
        expect_same(made.light, kept.light, "light");
        expect_same(made.allowance, kept.allowance, "allowance");
    }
}

/// A difference on the product's side that must show: another frame, or another control.
struct Difference {
    const char* label;
    Name name;
    const char* control;  ///< NAME=VALUE; null for none
    int frame;
};

class ProductOfAnotherScene : public testing::TestWithParam<Difference> {};

// The scenes must say enough.
TEST_P(ProductOfAnotherScene, IsRejected) {
    const Difference& difference = GetParam();
    const std::vector<std::string> more =
        difference.control != nullptr ? std::vector<std::string>{"--set", difference.control}
                                      : std::vector<std::string>{};
    const Picture picture = product({difference.name.scene, difference.frame}, more);
    EXPECT_FALSE(judge(picture, committed(difference.name)).passed);
}

constexpr Name pan{"pan", 6};
constexpr Name near_stars{"near-stars", 12};

INSTANTIATE_TEST_SUITE_P(
    Differences, ProductOfAnotherScene,
    testing::Values(Difference{"FewerSegments", pan, "Motion Blur Segments=4", 6},
                    Difference{"MoreSegments", pan, "Motion Blur Segments=6", 6},
                    Difference{"FrameOfThePan", pan, nullptr, 5},
                    Difference{"Crush", near_stars, "Parallax Crush=0.6", 12},
                    Difference{"TintByOneCode", near_stars, "Tint Color=90,161,255", 12},
                    Difference{"Saturation", near_stars, "Star Saturation=1.79", 12},
                    Difference{"FrameOfTheDrive", near_stars, nullptr, 11},
                    Difference{"Projection", {"equidistant", 0}, "Projection=HemiSph", 0}),
    [](const auto& difference) { return std::string(difference.param.label); });

}  // namespace
