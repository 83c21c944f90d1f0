// The plug-in's controls as its host has them after parameter set-up.
#include <gtest/gtest.h>
#include <host/controls.h>
#include <host/session.h>

#include <algorithm>
#include <string>
#include <vector>

#include "starry.h"

namespace {

using host::ControlKind;
using host::DeclaredControl;
using host::Session;
using namespace starry;

using LumivarControls = Lumivar;

struct Slider {
    int id;
    const char* name;
    double valid_max;
    double slider_max;
    double value;
    int precision;
};

TEST_F(LumivarControls, AreFloatSliders) {
    add_stars();
    const Session session(bundle());
    ASSERT_EQ(session.controls().size(), 16u);
    // The users' contract, all beginning at 0. Values are single-precision ones.
    const Slider sliders[] = {
        {1, "Star Brightness", 1000, 20, 5.0, 2},
        {2, "Brightness Bias", 5, 2, 1.0, 2},
        {3, "Star Saturation", 2, 2, 0.4000000059604645, 2},
        {4, "Tint Strength", 1, 1, 0.0, 2},
        {6, "Maximum Luminance", 10, 10, 0.5, 2},
        {7, "Luminance Threshold", 1, 1, 9.999999747378752e-05, 6},
        {8, "Star Spot Size", 1000, 10, 2.5, 2},
        {9, "Star Aspect Ratio", 10, 4, 1.0, 2},
        {13, "Parallax Crush", 1000, 100, 100.0, 2},
    };
    for (const Slider& expected : sliders) {
        const DeclaredControl& control =
            session.controls()[static_cast<std::size_t>(expected.id) - 1];
        EXPECT_EQ(control.name, expected.name);
        EXPECT_EQ(control.index, expected.id) << expected.name;
        EXPECT_EQ(control.id, expected.id) << expected.name;
        EXPECT_EQ(control.kind, ControlKind::FloatSlider) << expected.name;
        EXPECT_EQ(control.valid.min, 0.0) << expected.name;
        EXPECT_EQ(control.valid.max, expected.valid_max) << expected.name;
        EXPECT_EQ(control.slider.min, 0.0) << expected.name;
        EXPECT_EQ(control.slider.max, expected.slider_max) << expected.name;
        EXPECT_EQ(control.value, expected.value) << expected.name;
        EXPECT_EQ(control.default_value, expected.value) << expected.name;
        EXPECT_EQ(control.precision, expected.precision) << expected.name;
        EXPECT_EQ(control.display_flags, 0) << expected.name;
        EXPECT_EQ(control.slider_flags & 1u, 1u) << expected.name;
        EXPECT_EQ(control.curve_tolerance, static_cast<double>(0.05F)) << expected.name;
        EXPECT_EQ(control.flags, 0) << expected.name;
    }
}

TEST_F(LumivarControls, AreOtherKinds) {
    add_stars("stars.stars");
    const Session session(bundle());
    const auto& controls = session.controls();
    ASSERT_EQ(controls.size(), 16u);
    const auto at = [&](int id) -> const DeclaredControl& {
        return controls[static_cast<std::size_t>(id) - 1];
    };
    EXPECT_EQ(at(5).name, "Tint Color");
    EXPECT_EQ(at(5).kind, ControlKind::Colour);
    EXPECT_EQ(at(5).colour, (host::Argb{255, 128, 128, 128}));
    EXPECT_EQ(at(5).default_colour, (host::Argb{255, 128, 128, 128}));

    EXPECT_EQ(at(10).name, "Motion Blur Segments");
    EXPECT_EQ(at(10).kind, ControlKind::Slider);
    EXPECT_EQ(at(10).valid.min, 0.0);
    EXPECT_EQ(at(10).valid.max, 100.0);
    EXPECT_EQ(at(10).slider.max, 100.0);
    EXPECT_EQ(at(10).value, 1.0);
    EXPECT_EQ(at(10).default_value, 1.0);

    EXPECT_EQ(at(11).name, "Projection");
    EXPECT_EQ(at(11).kind, ControlKind::Popup);
    EXPECT_EQ(at(11).choice_text, "Persp|HemiSph|AzEqu");
    EXPECT_EQ(at(11).declared_choices, 3);
    EXPECT_EQ(at(11).value, 0.0) << "before the first choice, as projects have it";
    EXPECT_EQ(at(11).default_value, 0.0);

    EXPECT_EQ(at(12).name, "3D Stars");
    EXPECT_EQ(at(12).kind, ControlKind::Checkbox);
    EXPECT_EQ(at(12).value, 1.0);
    EXPECT_EQ(at(12).default_value, 1.0);
    EXPECT_EQ(at(12).label, "");

    EXPECT_EQ(at(14).name, "Treat Pixels As");
    EXPECT_EQ(at(14).kind, ControlKind::Popup);
    EXPECT_EQ(at(14).choice_text, "Linear Luminance|sRGB");
    EXPECT_EQ(at(14).declared_choices, 2);
    EXPECT_EQ(at(14).value, 1.0);
    EXPECT_EQ(at(14).default_value, 1.0);

    EXPECT_EQ(at(15).name, "Anamorphic DOF");
    EXPECT_EQ(at(15).kind, ControlKind::Checkbox);
    EXPECT_EQ(at(15).value, 0.0);
    EXPECT_EQ(at(15).default_value, 0.0);
    EXPECT_EQ(at(15).label, "");

    EXPECT_EQ(at(16).name, "Star Database");
    EXPECT_EQ(at(16).kind, ControlKind::Popup);
    EXPECT_EQ(at(16).choice_text, "stars.stars");
    EXPECT_EQ(at(16).declared_choices, 11) << "the length of the text, as projects have it";
    EXPECT_EQ(at(16).value, 0.0);
    EXPECT_EQ(at(16).default_value, 0.0);
}

TEST_F(LumivarControls, OfferEveryDatabaseBesideTheBundle) {
    add_stars("a.stars");
    add_stars("bb.stars");
    add_stars("c.stars");
    write_file(root / "readme.txt", "not one");
    const Session session(bundle());
    const DeclaredControl& database = session.controls().back();
    // The folder's own order decides.
    std::vector<std::string> choices = database.choices;
    std::sort(choices.begin(), choices.end());
    EXPECT_EQ(choices, (std::vector<std::string>{"a.stars", "bb.stars", "c.stars"}));
    EXPECT_EQ(database.choice_text.size(), 24u);
    EXPECT_EQ(database.declared_choices, 24);
}

}  // namespace
