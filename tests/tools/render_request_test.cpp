#include "render_request.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace {

using lumivar::parse_setting;
using lumivar::parse_size;
using lumivar::UsageError;

TEST(ParseSize, TakesWidthAndHeight) {
    EXPECT_EQ(parse_size("1920x1080"), (std::pair{1920, 1080}));
    EXPECT_EQ(parse_size("1x1"), (std::pair{1, 1}));
    for (const char* text : {"", "x", "1920", "1920x", "x1080", "0x5", "5x0", "-5x5", "5x5x5",
                             "5 x 5", "5.5x4", "99999999999x1"}) {
        EXPECT_THROW(parse_size(text), UsageError) << text;
    }
}

TEST(ParseSetting, TakesNumbersSwitchesChoicesAndColours) {
    host::ControlSetting setting = parse_setting("Star Brightness=8.5");
    EXPECT_EQ(setting.name, "Star Brightness");
    EXPECT_EQ(setting.place, "--set \"Star Brightness=8.5\"");
    EXPECT_EQ(std::get<host::Track>(setting.value).at(0), 8.5);
    EXPECT_EQ(std::get<host::Track>(parse_setting("3D Stars=on").value).at(0), 1.0);
    EXPECT_EQ(std::get<host::Track>(parse_setting("3D Stars=true").value).at(0), 1.0);
    EXPECT_EQ(std::get<host::Track>(parse_setting("3D Stars=off").value).at(0), 0.0);
    EXPECT_EQ(std::get<host::Track>(parse_setting("3D Stars=false").value).at(0), 0.0);
    EXPECT_EQ(std::get<std::string>(parse_setting("Projection=AzEqu").value), "AzEqu");
    const auto colour = std::get<host::Colour>(parse_setting("Tint Color=255,128,0").value);
    EXPECT_EQ(colour.channels[0].at(0), 255.0);
    EXPECT_EQ(colour.channels[1].at(0), 128.0);
    EXPECT_EQ(colour.channels[2].at(0), 0.0);
}

TEST(ParseSetting, TakesWhatASceneTakes) {
    for (const char* text :
         {"Tint Color=#ffc880", "Tint Color=\"#FFC880\"", "Tint Color=[255, 200, 128]",
          "Tint Color=[{\"keys\":[{\"time\":0,\"value\":255}]},200,128]"}) {
        const auto colour = std::get<host::Colour>(parse_setting(text).value);
        EXPECT_EQ(colour.channels[0].at(0), 255.0) << text;
        EXPECT_EQ(colour.channels[1].at(0), 200.0) << text;
        EXPECT_EQ(colour.channels[2].at(0), 128.0) << text;
    }
    const host::ControlSetting keyed =
        parse_setting(R"(Star Brightness={"keys":[{"time":0,"value":0},{"time":2,"value":9}]})");
    EXPECT_EQ(keyed.name, "Star Brightness");
    EXPECT_EQ(std::get<host::Track>(keyed.value).at(1), 4.5);
    EXPECT_EQ(
        std::get<host::Track>(parse_setting(R"(3D Stars={"keys":[{"time":0,"value":true}]})").value)
            .at(0),
        1.0);
    EXPECT_EQ(std::get<std::string>(parse_setting("Projection=\"AzEqu\"").value), "AzEqu");
}

TEST(ParseSetting, TellsWhatIsWrongWithAValueAsInAScene) {
    const std::pair<const char*, const char*> table[] = {
        {"A=#ffc88",
         "--set \"A=#ffc88\": expected a colour ([red, green, blue] from 0 to 255, or "
         "\"#rrggbb\"), found \"#ffc88\""},
        {"A=[1,2,300]", "--set \"A=[1,2,300]\": /2: expected a number from 0 to 255, found 300"},
        {"A={\"keys\":[]}",
         "--set \"A={\"keys\":[]}\": /keys: expected a list of keys, each "
         "{\"time\": seconds, \"value\": ...}, found an empty array"},
        {"A=[1,2", "--set \"A=[1,2\": line 1, column 5: expected ',' or ']', found end of input"},
    };
    for (const auto& [text, error] : table) {
        try {
            parse_setting(text);
            ADD_FAILURE() << text;
        } catch (const UsageError& failure) {
            EXPECT_STREQ(failure.what(), error);
        }
    }
}

TEST(ParseSetting, TakesEverythingElseForAName) {
    for (const char* text : {"1,2", "1,2,3,4", "1,2,x", "nan", "inf", "5 apples", "a=b"}) {
        EXPECT_EQ(std::get<std::string>(parse_setting(std::string("X=") + text).value), text);
    }
}

TEST(ParseSetting, RefusesWhatHasNoNameOrNoValue) {
    for (const char* text : {"", "Star Brightness", "=8", "Star Brightness="}) {
        EXPECT_THROW(parse_setting(text), UsageError) << text;
    }
}

}  // namespace
