#include <gtest/gtest.h>
#include <host/controls.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using host::Argb;
using host::Colour;
using host::ControlKind;
using host::ControlSetting;
using host::ControlValues;
using host::DeclaredControl;
using host::Track;

std::vector<DeclaredControl> controls() {
    return {{.name = "Mask Layer", .kind = ControlKind::Layer},
            {.name = "Star Brightness",
             .kind = ControlKind::FloatSlider,
             .valid = {0, 1000},
             .value = 5},
            {.name = "Motion Blur Segments",
             .kind = ControlKind::Slider,
             .valid = {0, 100},
             .value = 1},
            {.name = "3D Stars", .kind = ControlKind::Checkbox, .value = 1},
            {.name = "Tint Color", .kind = ControlKind::Colour, .colour = {255, 128, 128, 128}},
            {.name = "Projection",
             .kind = ControlKind::Popup,
             .choices = {"Persp", "HemiSph", "AzEqu"}}};
}
enum Place { kLayer, kBrightness, kSegments, kDepth, kTint, kProjection };

ControlSetting setting(const std::string& name, decltype(ControlSetting::value) value) {
    return {name, "s.json: /controls/" + name, std::move(value)};
}

double number(const ControlSetting& set, Place place, double seconds = 0.0) {
    return ControlValues(controls(), {set}).number(place, seconds);
}

std::string refusal(const ControlSetting& set) {
    try {
        const ControlValues values(controls(), {set});
    } catch (const host::SceneError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(ControlValues, AreTheDeclaredOnesWhereTheSceneSaysNothing) {
    const ControlValues values(controls(), {});
    EXPECT_EQ(values.number(kBrightness, 0.0), 5.0);
    EXPECT_EQ(values.number(kSegments, 0.0), 1.0);
    EXPECT_EQ(values.number(kDepth, 0.0), 1.0);
    EXPECT_EQ(values.number(kProjection, 0.0), 0.0) << "a value before the first choice is kept";
    EXPECT_EQ(values.colour(kTint, 0.0), (Argb{255, 128, 128, 128}));
}

TEST(ControlValues, FollowKeysInFloatSlidersAndAreRoundedInIntegerOnes) {
    const auto bright = setting("Star Brightness", Track({{0.0, 2.0}, {2.0, 3.0}}));
    EXPECT_EQ(number(bright, kBrightness, 0.5), 2.25);
    EXPECT_EQ(number(bright, kBrightness, 9.0), 3.0);
    const auto set = setting("Motion Blur Segments", Track({{0.0, 2.0}, {1.0, 4.0}}));
    EXPECT_EQ(number(set, kSegments, 0.2), 2.0);   // 2.4
    EXPECT_EQ(number(set, kSegments, 0.25), 3.0);  // 2.5
    EXPECT_EQ(number(set, kSegments, 0.7), 3.0);   // 3.4
    EXPECT_EQ(number(setting("Motion Blur Segments", Track(7.6)), kSegments), 8.0);
}

TEST(ControlValues, HoldInCheckboxesAndPopupsWhichTakeChoicesByNameAndByNumberFromOne) {
    const auto box = setting("3D Stars", Track({{1.0, 1.0}, {2.0, 0.0}}));
    EXPECT_EQ(number(box, kDepth, 0.0), 1.0) << "before the first key";
    EXPECT_EQ(number(box, kDepth, 1.999), 1.0);
    EXPECT_EQ(number(box, kDepth, 2.0), 0.0);
    const auto popup = setting("Projection", Track({{0.0, 1.0}, {1.0, 3.0}}));
    EXPECT_EQ(number(popup, kProjection, 0.9), 1.0);
    EXPECT_EQ(number(popup, kProjection, 1.0), 3.0);
    EXPECT_EQ(number(setting("Projection", std::string("Persp")), kProjection), 1.0);
    EXPECT_EQ(number(setting("Projection", std::string("AzEqu")), kProjection), 3.0);
    EXPECT_EQ(number(setting("Projection", Track(2.0)), kProjection), 2.0);
}

TEST(ControlValues, RoundColoursToEightBits) {
    const auto set = setting(
        "Tint Color", Colour{{Track(0.49), Track(254.5), Track({{0.0, 10.0}, {1.0, 20.0}})}});
    const ControlValues values(controls(), {set});
    EXPECT_EQ(values.colour(kTint, 0.5), (Argb{255, 0, 255, 15}));
}

TEST(ControlValues, AcceptTheEndsOfTheValidRangeAndTheLaterOfTwoSettings) {
    const ControlValues values(controls(), {setting("Star Brightness", Track(1.0)),
                                            setting("Star Brightness", Track(8.0))});
    EXPECT_EQ(values.number(kBrightness, 0.0), 8.0);
    EXPECT_EQ(refusal(setting("Star Brightness", Track(0.0))), "accepted");
    EXPECT_EQ(refusal(setting("Star Brightness", Track(1000.0))), "accepted");
    EXPECT_EQ(refusal(setting("Motion Blur Segments", Track(100.0))), "accepted");
}

TEST(ControlValues, RefuseWhatDoesNotFitTheirControl) {
    const std::string range = "takes a number from 0 to 1000";
    const std::string choices =
        "\"Projection\" takes one of \"Persp\", \"HemiSph\", \"AzEqu\" or its number from 1 to 3, "
        "not ";
    const std::string colour = "takes a colour of red, green and blue from 0 to 255";
    const std::pair<ControlSetting, std::string> rows[] = {
        // Unknown controls, with the likely name; layers are never set.
        {setting("Star Brightnes", Track(1.0)),
         "the effect has no control \"Star Brightnes\"; did you mean \"Star Brightness\"?"},
        {setting("tint colour", Track(1.0)),
         "the effect has no control \"tint colour\"; did you mean \"Tint Color\"?"},
        {setting("Warp", Track(1.0)), "the effect has no control \"Warp\""},
        {setting("Mask Layer", Track(1.0)), "the effect has no control \"Mask Layer\""},
        // Out of range.
        {setting("Star Brightness", Track(1000.5)),
         "\"Star Brightness\" " + range + ", not 1000.5"},
        {setting("Star Brightness", Track({{0.0, 1.0}, {1.0, -1.0}})),
         "\"Star Brightness\" " + range + ", not -1"},
        {setting("Projection", Track(0.0)), choices + "0"},
        {setting("Projection", Track(1.5)), choices + "1.5"},
        {setting("3D Stars", Track(2.0)), "\"3D Stars\" takes true or false, not 2"},
        {setting("Tint Color", Colour{{Track(0.0), Track(256.0), Track(0.0)}}),
         "\"Tint Color\" " + colour + ", not 256"},
        // Of another kind.
        {setting("Star Brightness", std::string("bright")),
         "\"Star Brightness\" is a float slider and " + range},
        {setting("Tint Color", Track(3.0)), "\"Tint Color\" is a colour and " + colour},
        {setting("3D Stars", Colour{}), "\"3D Stars\" is a checkbox and takes true or false"},
        // Unknown choices.
        {setting("Projection", std::string("persp")),
         "\"Projection\" has no choice \"persp\"; did you mean \"Persp\"?"},
        {setting("Projection", std::string("Mercator")),
         "\"Projection\" has no choice \"Mercator\"; it has \"Persp\", \"HemiSph\", \"AzEqu\""},
    };
    for (const auto& [set, error] : rows) {
        EXPECT_EQ(refusal(set), "s.json: /controls/" + set.name + ": " + error);
    }
}

}  // namespace
