#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/instance.h>
#include <gtest/gtest.h>

#include "fake_host.h"

namespace {

class Parameters : public testing::Test {
protected:
    ~Parameters() override { drop_globals(); }

    static void list_databases(std::initializer_list<const char*> paths) {
        globals = new LumivarGlobals;
        for (const char* path : paths) {
            globals->starfiles.append(path);
        }
    }
    PF_Err setup() { return ParamsSetup(&host.in_data, &host.out_data, nullptr, nullptr); }
    void read(MyInstance& instance) {
        AEGP_SuiteHandler suites(&host.basic);
        get_params(&host.in_data, instance, suites);
    }
    /// The declared control with this id; there must be one.
    const FakeHost::Declared& declared(int id) { return host.declared.at(id - 1); }

    FakeHost host;
};

}  // namespace

TEST_F(Parameters, ThreeDatabasesAreJoinedInListOrder) {
    list_databases({"/p/a.stars", "/p/bb.stars", "/p/c.stars"});
    ASSERT_EQ(setup(), 0);
    EXPECT_EQ(declared(16).text, "a.stars|bb.stars|c.stars");
    EXPECT_EQ(declared(16).def.u.pd.num_choices, 24);
}

TEST_F(Parameters, ChoiceCountIsSixteenBitsOfTheLength) {
    // 65536 + 3 characters.
    list_databases({std::string(65539, 'x').c_str()});
    ASSERT_EQ(setup(), 0);
    EXPECT_EQ(declared(16).def.u.pd.num_choices, 3);
}

TEST_F(Parameters, DefaultsRead) {
    host.set_default_values();
    MyInstance instance;
    instance.projection_mode = AzEqu;
    read(instance);
    EXPECT_EQ(instance.spot_size, 2.5);
    EXPECT_EQ(instance.aspect_ratio, 1.0);
    EXPECT_EQ(instance.lum_threshold, 9.999999747378752e-05);
    EXPECT_EQ(instance.max_lum, 0.5);
    EXPECT_EQ(instance.star_brightness, 5.0);
    EXPECT_EQ(instance.brightness_bias, 1.0);
    EXPECT_EQ(instance.star_saturation, 0.4000000059604645);
    EXPECT_EQ(instance.tint_strength_param, 0.0);
    // 128 / 255 as the nearest float: 0x3F008081 = 8421505 / 2^24.
    for (const double channel : instance.tint_rgb) {
        EXPECT_EQ(channel, 8421505.0 / 16777216.0);
    }
    EXPECT_EQ(instance.parallax_crush_param, 100.0);
    EXPECT_EQ(instance.mb_segments, 1);
    EXPECT_EQ(instance.treat_srgb, 1U);
    EXPECT_EQ(instance.anamorphic_dof, 0U);
    EXPECT_EQ(instance.stars_3d, 1U);
    EXPECT_EQ(instance.projection_mode, AzEqu) << "popup value 0 leaves the field alone";
    EXPECT_EQ(instance.database_index, -1);
}

TEST_F(Parameters, EachControlReachesItsOwnField) {
    for (const auto& [id, value] : std::map<int, double>{{1, 11.5},
                                                         {2, 2.5},
                                                         {3, 3.5},
                                                         {4, 4.5},
                                                         {6, 6.5},
                                                         {7, 7.5},
                                                         {8, 8.5},
                                                         {9, 9.5},
                                                         {13, 13.5}}) {
        host.values[id].u.fs_d.value = value;
    }
    host.values[5].u.cd.value = {7, 255, 0, 51};
    host.values[10].u.sd.value = 42;
    host.values[11].u.pd.value = 2;
    host.values[12].u.bd.value = 0;
    host.values[14].u.pd.value = 0;
    host.values[15].u.bd.value = 5;
    host.values[16].u.pd.value = 3;
    MyInstance instance;
    read(instance);
    EXPECT_EQ(instance.star_brightness, 11.5);
    EXPECT_EQ(instance.brightness_bias, 2.5);
    EXPECT_EQ(instance.star_saturation, 3.5);
    EXPECT_EQ(instance.tint_strength_param, 4.5);
    EXPECT_EQ(instance.max_lum, 6.5);
    EXPECT_EQ(instance.lum_threshold, 7.5);
    EXPECT_EQ(instance.spot_size, 8.5);
    EXPECT_EQ(instance.aspect_ratio, 9.5);
    EXPECT_EQ(instance.parallax_crush_param, 13.5);
    EXPECT_EQ(instance.tint_rgb[0], 1.0);
    EXPECT_EQ(instance.tint_rgb[1], 0.0);
    // 51 / 255 = 0.2, as the nearest float.
    EXPECT_EQ(instance.tint_rgb[2], 0.20000000298023224);
    EXPECT_EQ(instance.mb_segments, 42);
    EXPECT_EQ(instance.projection_mode, HemiSph);
    EXPECT_EQ(instance.stars_3d, 0U);
    EXPECT_EQ(instance.treat_srgb, 0U);
    EXPECT_EQ(instance.anamorphic_dof, 1U);
    EXPECT_EQ(instance.database_index, 2);
}

TEST_F(Parameters, BothTreatmentsOfPixelsReadAsOne) {
    host.set_default_values();
    for (const int choice : {1, 2}) {
        host.values[14].u.pd.value = choice;
        MyInstance instance;
        read(instance);
        EXPECT_EQ(instance.treat_srgb, 1U) << choice;
    }
}

TEST_F(Parameters, ProjectionsByChoice) {
    host.set_default_values();
    for (const auto& [choice, expected] : std::map<int, op_stars_projection>{
             {1, Persp}, {2, HemiSph}, {3, AzEqu}, {4, AzEqu}, {-1, AzEqu}}) {
        MyInstance instance;
        instance.projection_mode = AzEqu;
        host.values[11].u.pd.value = choice;
        read(instance);
        EXPECT_EQ(instance.projection_mode, expected) << choice;
    }
}

TEST_F(Parameters, SmallestDatabaseChoiceWraps) {
    host.set_default_values();
    host.values[16].u.pd.value = INT32_MIN;
    MyInstance instance;
    read(instance);
    EXPECT_EQ(instance.database_index, INT32_MAX);
}

TEST_F(Parameters, ControlsAreCheckedOutInOrderAtTheCurrentTimeAndNeverIn) {
    host.set_default_values();
    MyInstance instance;
    read(instance);
    std::vector<FakeHost::ParamCheckout> expected;
    for (const int id : {8, 9, 7, 6, 1, 2, 3, 4, 5, 13, 10, 14, 15, 12, 11, 16}) {
        expected.push_back({id, 100, 50, 1200});
    }
    EXPECT_EQ(host.checkouts, expected);
    for (const std::string& call : host.log) {
        EXPECT_NE(call, "checkin_param");
    }
}

TEST_F(Parameters, FailedCheckoutEndsTheReadingAndTheCameraSampling) {
    host.set_default_values();
    host.failures["checkout_param"] = {4, 3};
    MyInstance instance;
    instance.lum_threshold = 0.25;
    instance.database_index = 9;
    read(instance);
    EXPECT_EQ(instance.spot_size, 2.5);
    EXPECT_EQ(instance.aspect_ratio, 1.0);
    EXPECT_EQ(instance.lum_threshold, 0.25);
    EXPECT_EQ(instance.database_index, 9);
    EXPECT_EQ(host.log, (std::vector<std::string>{"checkout_param 8", "checkout_param 9",
                                                  "checkout_param 7"}));
    ASSERT_EQ(instance.cameras.len(), 1U);
    EXPECT_EQ(instance.cameras[0].focal, 3.200000047683716);
}

TEST_F(Parameters, EveryFieldOfANewInstanceIsZero) {
    const MyInstance instance;
    EXPECT_EQ(instance.spot_size, 0.0);
    EXPECT_EQ(instance.tint_rgb[2], 0.0);
    EXPECT_EQ(instance.mb_segments, 0);
    EXPECT_EQ(instance.projection_mode, Persp);
    EXPECT_EQ(instance.database_index, 0);
    EXPECT_TRUE(instance.cameras.empty());
}

TEST_F(Parameters, CompositionWithoutCameraHasTheDefaultOne) {
    host.set_default_values();
    host.has_camera = false;
    MyInstance instance;
    // An earlier frame's cameras are forgotten.
    instance.cameras.append();
    instance.cameras.append();
    read(instance);
    ASSERT_EQ(instance.cameras.len(), 1U);
    const camera& only = instance.cameras[0];
    EXPECT_EQ(only.focal, 3.200000047683716);
    EXPECT_EQ(only.near_clip, 0.10000000149011612);
    EXPECT_EQ(only.far_clip, -1.0);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            EXPECT_EQ(only.xform(row, column), row == column ? 1.0 : 0.0);
        }
    }
}
