// The controls as the built module declares them, byte for byte: saved projects and the host's own
// interface depend on every field.
#include <cstring>

#include "built_effect.h"

namespace {

class DeclaredControls : public BuiltEffect {
protected:
    /// Declares the controls, the databases named so beside the bundle.
    void declare(std::initializer_list<const char*> databases) {
        for (const char* name : databases) {
            add_database(name, kHeader);
        }
        set_up();
        offered_databases();
    }
    /// The declared control with this id; there must be one.
    const FakeHost::Declared& declared(int id) const {
        return host.declared.at(static_cast<std::size_t>(id) - 1);
    }
    /// The record that the host must have seen, all of it, but for `pointer_size` bytes at
    /// `pointer`, which hold an address.
    void expect_bytes(const PF_ParamDef& expected, std::size_t pointer = 0,
                      std::size_t pointer_size = 0) const {
        std::string seen = declared(expected.uu.id).bytes;
        std::string wanted(reinterpret_cast<const char*>(&expected), sizeof expected);
        seen.replace(pointer, pointer_size, pointer_size, '\0');
        wanted.replace(pointer, pointer_size, pointer_size, '\0');
        for (std::size_t i = 0; i < sizeof expected; ++i) {
            EXPECT_EQ(seen[i], wanted[i]) << "byte " << i << " of " << expected.name;
        }
    }
    /// A record that is zero but for its id, kind and name.
    static PF_ParamDef named(int id, PF_ParamType type, const char* name) {
        PF_ParamDef def;
        std::memset(&def, 0, sizeof def);
        def.uu.id = id;
        def.param_type = type;
        std::memcpy(def.name, name, std::strlen(name));
        return def;
    }
};

struct FloatSlider {
    int id;
    const char* name;
    float valid_max, slider_max;
    double value;
    A_short precision;
};

// Values are those of single precision.
constexpr FloatSlider kFloatSliders[] = {
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

}  // namespace

TEST_F(DeclaredControls, AreSixteenAppendedInTheOrderOfTheirIdsTheirNamesCopiedByTheHost) {
    declare({"stars.stars"});
    EXPECT_EQ(host.out_data.num_params, 17);
    Log expected;
    for (int id = 1; id <= 16; ++id) {
        EXPECT_EQ(declared(id).index, -1);
        EXPECT_EQ(declared(id).def.uu.id, id);
        expected.push_back("strcpy");
        expected.push_back("add_param " + std::to_string(id));
    }
    EXPECT_EQ(host.log, expected);
}

TEST_F(DeclaredControls, FloatSliders) {
    declare({"stars.stars"});
    for (const FloatSlider& slider : kFloatSliders) {
        PF_ParamDef def = named(slider.id, 10, slider.name);
        def.u.fs_d.value = slider.value;
        def.u.fs_d.valid_max = slider.valid_max;
        def.u.fs_d.slider_max = slider.slider_max;
        def.u.fs_d.dephault = static_cast<float>(slider.value);
        def.u.fs_d.precision = slider.precision;
        def.u.fs_d.fs_flags = 1;
        def.u.fs_d.curve_tolerance = 0.05F;
        expect_bytes(def);
    }
}

TEST_F(DeclaredControls, TintColorIsMiddleGreyAndOpaqueAndOneSegmentOfAHundred) {
    declare({"stars.stars"});
    PF_ParamDef colour = named(5, 5, "Tint Color");
    colour.u.cd.value = {255, 128, 128, 128};
    colour.u.cd.dephault = {255, 128, 128, 128};
    expect_bytes(colour);
    PF_ParamDef segments = named(10, 1, "Motion Blur Segments");
    segments.u.sd.value = 1;
    segments.u.sd.valid_max = 100;
    segments.u.sd.slider_max = 100;
    segments.u.sd.dephault = 1;
    expect_bytes(segments);
}

TEST_F(DeclaredControls, CheckboxesHaveAnEmptyLabel) {
    declare({"stars.stars"});
    for (const auto& [id, name, value] :
         {std::tuple(12, "3D Stars", 1), {15, "Anamorphic DOF", 0}}) {
        PF_ParamDef def = named(id, 4, name);
        def.u.bd.value = value;
        def.u.bd.dephault = static_cast<PF_Boolean>(value);
        expect_bytes(def, offsetof(PF_ParamDef, u.bd.u.nameptr), sizeof(void*));
        EXPECT_NE(declared(id).def.u.bd.u.nameptr, nullptr);
        EXPECT_EQ(declared(id).text, "");
    }
}

TEST_F(DeclaredControls, PopupsOfWhichTwoStartBeforeTheirFirstChoice) {
    declare({"stars.stars"});
    struct Popup {
        int id;
        const char* name;
        const char* choices;
        A_short num_choices;
        A_short value;
    };
    for (const Popup& popup :
         {Popup{11, "Projection", "Persp|HemiSph|AzEqu", 3, 0},
          Popup{14, "Treat Pixels As", "Linear Luminance|sRGB", 2, 1},
          // As many choices as the text has characters: projects were saved with such popups.
          Popup{16, "Star Database", "stars.stars", 11, 0}}) {
        PF_ParamDef def = named(popup.id, 7, popup.name);
        def.u.pd.value = popup.value;
        def.u.pd.num_choices = popup.num_choices;
        def.u.pd.dephault = popup.value;
        expect_bytes(def, offsetof(PF_ParamDef, u.pd.u.namesptr), sizeof(void*));
        EXPECT_EQ(declared(popup.id).text, popup.choices);
    }
}

TEST_F(DeclaredControls, DatabasesAreJoinedInListingOrder) {
    declare({"a.stars", "bb.stars", "c.stars"});
    const Log names = listing();
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(declared(16).text, names[0] + "|" + names[1] + "|" + names[2]);
    // 7 + 8 + 7 characters and two bars.
    EXPECT_EQ(declared(16).def.u.pd.num_choices, 24);
}

TEST_F(DeclaredControls, OfferNoDatabaseWithoutSetUp) {
    EXPECT_EQ(offered_databases(), "");
    EXPECT_EQ(host.declared.back().def.u.pd.num_choices, 0);
}

TEST_F(DeclaredControls, EndWithTheFirstThatTheHostRefuses) {
    add_database("stars.stars", kHeader);
    set_up();
    host.out_data.num_params = 1;
    host.failures["add_param"] = {513, 5};
    EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 513);
    EXPECT_EQ(host.declared.size(), 4U);
    EXPECT_EQ(host.log.back(), "add_param 5");
    EXPECT_EQ(host.out_data.num_params, 1) << "as it was";
}
