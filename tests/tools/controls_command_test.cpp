// lumivar controls, through the built plug-in.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tool_run.h"

namespace {

TEST(Controls, AreListedAsDeclared) {
    const ToolResult result = run_tool({"controls"});
    EXPECT_EQ(result.code, 0) << result.err;
    // The contract with users' saved projects, in its order.
    const std::string expected = R"(
Control               Kind            Values                   Slider    Default
Star Brightness       float slider    0 to 1000                0 to 20   5
Brightness Bias       float slider    0 to 5                   0 to 2    1
Star Saturation       float slider    0 to 2                   0 to 2    0.4
Tint Strength         float slider    0 to 1                   0 to 1    0
Tint Color            colour          0 to 255 each                      128, 128, 128
Maximum Luminance     float slider    0 to 10                  0 to 10   0.5
Luminance Threshold   float slider    0 to 1                   0 to 1    0.0001
Star Spot Size        float slider    0 to 1000                0 to 10   2.5
Star Aspect Ratio     float slider    0 to 10                  0 to 4    1
Motion Blur Segments  integer slider  0 to 100                 0 to 100  1
Projection            popup           Persp | HemiSph | AzEqu            0
3D Stars              checkbox        off, on                            on
Parallax Crush        float slider    0 to 1000                0 to 100  100
Treat Pixels As       popup           Linear Luminance | sRGB            Linear Luminance
Anamorphic DOF        checkbox        off, on                            off
Star Database         popup           hipparcos.stars                    0
)";
    EXPECT_EQ("\n" + result.out, expected);
}

TEST(Controls, AreGivenAsJson) {
    const ToolResult result = run_tool({"controls", "--json"});
    ASSERT_EQ(result.code, 0) << result.err;
    const nlohmann::json json = nlohmann::json::parse(result.out);
    ASSERT_EQ(json.size(), 16U);
    EXPECT_EQ(json[0]["name"], "Star Brightness");
    EXPECT_EQ(json[0]["id"], 1);
    EXPECT_EQ(json[0]["valid"], nlohmann::json::parse(R"({"min": 0, "max": 1000})"));
    EXPECT_EQ(json[0]["slider"], nlohmann::json::parse(R"({"min": 0, "max": 20})"));
    EXPECT_EQ(json[0]["default"], 5.0);
    EXPECT_EQ(json[4]["default"], nlohmann::json::parse("[128, 128, 128]"));
    EXPECT_EQ(json[10]["choices"], nlohmann::json::parse(R"(["Persp", "HemiSph", "AzEqu"])"));
}

}  // namespace
