#include "picture_arguments.h"

#include <gtest/gtest.h>

#include <string>

#include "failure_of.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using host::Depth;
using lumivar::content_text;
using lumivar::Look;
using lumivar::PictureArguments;
using lumivar::PictureContent;
using lumivar::PictureWishes;

std::string text_for(const PictureArguments& arguments, const std::string& path,
                     Depth depth = Depth::Float, const PictureWishes& wishes = {}) {
    return content_text(lumivar::picture_content(arguments, wishes, path, depth, ""));
}

std::string fault_of(const PictureArguments& arguments, const std::string& path,
                     Depth depth = Depth::Float) {
    return failure_of([&] { (void)text_for(arguments, path, depth); });
}

TEST(PictureContent, IsAPhotographOfAFloatFrameAndPlainOfOneThatIsCutOff) {
    for (const char* path : {"a.png", "a.jpg"}) {
        EXPECT_EQ(text_for({}, path), "photo view, halo 1");
        EXPECT_EQ(text_for({}, path, Depth::Bits8), "plain view");
        EXPECT_EQ(text_for({}, path, Depth::Bits16), "plain view");
    }
    EXPECT_EQ(text_for({}, "a.exr"), "linear light");
    EXPECT_EQ(text_for({}, "a.tif"), "linear light");
}

TEST(PictureContent, IsWhatTheArgumentsSayThenTheScene) {
    const PictureWishes wishes = {1.5, "plain", 0.5};
    EXPECT_EQ(text_for({}, "a.png", Depth::Float, wishes),
              "plain view, exposure +1.5 stops, halo 0.5");
    EXPECT_EQ(text_for({.exposure = -1.0, .view = "photo"}, "a.png", Depth::Float, wishes),
              "photo view, exposure -1 stop, halo 0.5");
    EXPECT_EQ(text_for({.exposure = 0.0, .halo = 0.0}, "a.png", Depth::Float, wishes),
              "plain view");
    EXPECT_EQ(text_for({}, "a.exr", Depth::Float, wishes), "linear light");
    EXPECT_EQ(text_for({.halo = 2.0}, "a.exr", Depth::Float, wishes), "linear light, halo 2");
}

TEST(PictureContent, OfTifIsForLookingWhereThatIsAskedFor) {
    const auto content = [](const PictureArguments& arguments) {
        return lumivar::picture_content(arguments, {}, "a.tif", Depth::Float, "");
    };
    for (const PictureArguments& arguments :
         {PictureArguments{.view = "photo"}, PictureArguments{.bits = 16},
          PictureArguments{.exposure = 0.0}}) {
        const PictureContent made = content(arguments);
        ASSERT_TRUE(made.look);
        EXPECT_EQ(made.look->bits, 16);
        EXPECT_EQ(made.look->view, Look::View::Photo);
    }
    EXPECT_EQ(content({.bits = 8}).look->bits, 8);
}

TEST(PictureContent, RefusesWhatDoesNotGoTogether) {
    EXPECT_EQ(fault_of({.exposure = 1.0}, "a.exr"),
              ".exr stays scene-linear, without exposure and view; use .png, .jpg or .tif for a "
              "picture to look at");
    EXPECT_EQ(fault_of({.view = "photo"}, "a.exr"), fault_of({.exposure = 1.0}, "a.exr"));
    EXPECT_EQ(fault_of({.bits = 16}, "a.jpg"), ".jpg has no channels of 16 bits; use .png or .tif");
    EXPECT_EQ(fault_of({.exposure = 1.0, .raw = true}, "a.png", Depth::Bits8),
              "--raw writes the frame's codes as they are; leave out exposure, view and halo");
    EXPECT_EQ(fault_of({.halo = 5.0}, "a.png"),
              "--halo takes a strength from 0 to 4.348, at which all light goes into the halo; 1 "
              "is a common lens");
    EXPECT_EQ(fault_of({.exposure = 1000.0}, "a.png"), "--exposure takes stops from -100 to 100");
    EXPECT_EQ(fault_of({.view = "photo", .ocio = "config.ocio"}, "a.png"),
              "--view and the --ocio options both choose a view; give one of them");
    EXPECT_EQ(fault_of({.ocio_display = "Television"}, "a.png"),
              "no OpenColorIO configuration is named; give its config.ocio to --ocio or in $OCIO");
}

TEST(PictureContent, OfARunIsTheEnvironmentsConfiguration) {
    const ScratchFolder folder;
    write_file(folder / "scene.json", "{}");
    ToolOptions options;
    options.environment = {"OCIO=/no/config"};
    const std::vector<std::string> render = {
        "render", folder / "scene.json", "-o", folder / "a.png", "--size", "32x18"};
    const ToolResult refused = run_tool(render, options);
    EXPECT_EQ(refused.code, 1);
    EXPECT_NE(refused.err.find("OpenColorIO configuration /no/config"), std::string::npos)
        << refused.err;
    std::vector<std::string> plain = render;
    plain.insert(plain.end(), {"--view", "plain"});
    EXPECT_EQ(run_tool(plain, options).code, 0);
}

TEST(PictureContent, TakesTheEnvironmentsConfigurationWhereNoViewIsNamed) {
    const auto fault = [](const PictureArguments& arguments, const PictureWishes& wishes) {
        return failure_of([&] {
            (void)lumivar::picture_content(arguments, wishes, "a.png", Depth::Float, "/no/config");
        });
    };
    const std::string missing =
        "there is no OpenColorIO configuration /no/config; give the path of a config.ocio to "
        "--ocio or in $OCIO, or choose --view photo (named by ";
    EXPECT_EQ(fault({}, {}), missing + "the environment variable OCIO)");
    EXPECT_EQ(fault({.ocio_view = "Film"}, {}), missing + "the environment variable OCIO)");
    EXPECT_EQ(fault({.ocio = "/no/config"}, {}), missing + "--ocio)");
    EXPECT_EQ(fault({.view = "photo"}, {}), "no failure");
    EXPECT_EQ(fault({}, {.view = "plain"}), "no failure");
}

}  // namespace
