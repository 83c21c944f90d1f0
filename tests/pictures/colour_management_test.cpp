#include "colour_management.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "failure_of.h"
#include "support/scratch.h"

namespace {

using lumivar::ManagedView;

/// Two displays; their views are a matrix and a power, so that a pixel can be worked out by hand.
constexpr char kConfig[] = R"(ocio_profile_version: 2
roles:
  default: linear
  scene_linear: linear
displays:
  Television:
    - !<View> {name: Plain, colorspace: rooted}
    - !<View> {name: Halved, colorspace: halved}
  Projector:
    - !<View> {name: Dark, colorspace: halved}
active_displays: [Television, Projector]
active_views: [Plain, Halved, Dark]
colorspaces:
  - !<ColorSpace>
    name: linear
    encoding: scene-linear
  - !<ColorSpace>
    name: rooted
    from_scene_reference: !<ExponentTransform> {value: [0.5, 0.5, 0.5, 1]}
  - !<ColorSpace>
    name: halved
    from_scene_reference: !<MatrixTransform> {matrix: [0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 1]}
  - !<ColorSpace>
    name: swapped
    to_scene_reference: !<MatrixTransform> {matrix: [0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1]}
)";

class ColourManagement : public testing::Test {
protected:
    ColourManagement() { std::ofstream(config) << kConfig; }

    lumivar::LinearImage seen(const ManagedView& wanted) {
        lumivar::LinearImage image{2, 1, {0.25F, 0.04F, 0.0F, 1.0F, 0.81F, 0.36F}};
        lumivar::view_managed(image, lumivar::found_in_config(wanted));
        return image;
    }
    void expect(const lumivar::LinearImage& image, const std::vector<float>& expected) {
        ASSERT_EQ(image.samples.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_NEAR(image.samples[i], expected[i], 1e-4F) << i;
        }
    }

    ScratchFolder folder;
    std::string config = folder / "config.ocio";
};

TEST_F(ColourManagement, TakesTheConfigurationsOwnDefaults) {
    const ManagedView found = lumivar::found_in_config({config, "", "", ""});
    EXPECT_EQ(found.display, "Television");
    EXPECT_EQ(found.view, "Plain");
    EXPECT_EQ(found.space, "linear");
    expect(seen({config, "", "", ""}), {0.5F, 0.2F, 0.0F, 1.0F, 0.9F, 0.6F});
}

TEST_F(ColourManagement, ShowsTheViewThatIsNamed) {
    expect(seen({config, "Television", "Halved", ""}), {0.125F, 0.02F, 0.0F, 0.5F, 0.405F, 0.18F});
    expect(seen({config, "Projector", "", ""}), {0.125F, 0.02F, 0.0F, 0.5F, 0.405F, 0.18F});
    expect(seen({config, "Projector", "Dark", "swapped"}),
           {0.0F, 0.02F, 0.125F, 0.18F, 0.405F, 0.5F});
}

TEST_F(ColourManagement, NamesWhatAConfigurationHasWhereItLacksSomething) {
    const auto fault = [&](const ManagedView& wanted) {
        return failure_of([&] { (void)lumivar::found_in_config(wanted); });
    };
    EXPECT_EQ(fault({config, "Cinema", "", ""}),
              "the OpenColorIO configuration " + config +
                  " has no display \"Cinema\"; it has \"Television\", \"Projector\"");
    EXPECT_EQ(
        fault({config, "Projector", "Plain", ""}),
        "the OpenColorIO configuration " + config + " has no view \"Plain\"; it has \"Dark\"");
    EXPECT_EQ(fault({config, "", "", "acescg"}),
              "the OpenColorIO configuration " + config +
                  " has no colour space \"acescg\"; it has \"linear\", \"rooted\", \"halved\", "
                  "\"swapped\"");
    EXPECT_EQ(fault({folder / "none.ocio", "", "", ""}),
              "there is no OpenColorIO configuration " + folder / "none.ocio" +
                  "; give the path of a config.ocio to --ocio or in $OCIO, or choose --view photo");
    std::ofstream(folder / "broken.ocio") << "ocio_profile_version: 2\nroles: [\n";
    const std::string broken = fault({folder / "broken.ocio", "", "", ""});
    EXPECT_TRUE(broken.starts_with("cannot read the OpenColorIO configuration " +
                                   folder / "broken.ocio" + ": "))
        << broken;
    EXPECT_EQ(broken.find('\n'), std::string::npos);
}

}  // namespace
