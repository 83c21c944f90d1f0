#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/instance.h>
#include <gtest/gtest.h>

#include "fake_host.h"

namespace {

class Parameters : public testing::Test {
protected:
    ~Parameters() override { drop_globals(); }

    void read(MyInstance& instance) {
        AEGP_SuiteHandler suites(&host.basic);
        get_params(&host.in_data, instance, suites);
    }
    FakeHost host;
};

const struct {
    int id;
    double MyInstance::*field;
    double by_default;
} kNumbers[] = {
    {1, &MyInstance::star_brightness, 5.0},
    {2, &MyInstance::brightness_bias, 1.0},
    {3, &MyInstance::star_saturation, 0.4000000059604645},
    {4, &MyInstance::tint_strength_param, 0.0},
    {6, &MyInstance::max_lum, 0.5},
    {7, &MyInstance::lum_threshold, 9.999999747378752e-05},
    {8, &MyInstance::spot_size, 2.5},
    {9, &MyInstance::aspect_ratio, 1.0},
    {13, &MyInstance::parallax_crush_param, 100.0},
};

}  // namespace

TEST_F(Parameters, ChoiceCountIsSixteenBitsOfTheLength) {
    globals = new LumivarGlobals;
    // 65536 + 3 characters.
    globals->starfiles.append(std::string(65539, 'x').c_str());
    ASSERT_EQ(ParamsSetup(&host.in_data, &host.out_data, nullptr, nullptr), 0);
    EXPECT_EQ(host.declared.at(15).def.u.pd.num_choices, 3);
}

TEST_F(Parameters, DefaultsRead) {
    host.set_default_values();
    MyInstance instance;
    instance.projection_mode = AzEqu;
    read(instance);
    for (const auto& number : kNumbers) {
        EXPECT_EQ(instance.*number.field, number.by_default) << number.id;
    }
    // 128 / 255 as the nearest float: 0x3F008081 = 8421505 / 2^24.
    for (const double channel : instance.tint_rgb) {
        EXPECT_EQ(channel, 8421505.0 / 16777216.0);
    }
    EXPECT_EQ(instance.mb_segments, 1);
    EXPECT_EQ(instance.treat_srgb, 1U);
    EXPECT_EQ(instance.anamorphic_dof, 0U);
    EXPECT_EQ(instance.stars_3d, 1U);
    EXPECT_EQ(instance.projection_mode, AzEqu) << "popup value 0 leaves the field alone";
    EXPECT_EQ(instance.database_index, -1);
}

TEST_F(Parameters, EachControlReachesItsOwnField) {
    for (const auto& number : kNumbers) {
        host.values[number.id].u.fs_d.value = number.id + 0.5;
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
    for (const auto& number : kNumbers) {
        EXPECT_EQ(instance.*number.field, number.id + 0.5);
    }
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

TEST_F(Parameters, SecondTreatmentOfPixelsReadsAsTheFirstAndTheSmallestDatabaseChoiceWraps) {
    host.values[14].u.pd.value = 2;
    host.values[16].u.pd.value = INT32_MIN;
    MyInstance instance;
    read(instance);
    EXPECT_EQ(instance.treat_srgb, 1U);
    EXPECT_EQ(instance.database_index, INT32_MAX);
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

TEST_F(Parameters, FailedCheckoutEndsTheReadingAndTheCameraSampling) {
    host.set_default_values();
    host.failures["checkout_param"] = {4, 3};
    MyInstance instance;
    instance.lum_threshold = 0.25;
    instance.database_index = 9;
    instance.cameras.append();
    instance.cameras.append();
    read(instance);
    EXPECT_EQ(instance.spot_size, 2.5);
    EXPECT_EQ(instance.aspect_ratio, 1.0);
    EXPECT_EQ(instance.lum_threshold, 0.25);
    EXPECT_EQ(instance.database_index, 9);
    EXPECT_EQ(host.log, (std::vector<std::string>{"checkout_param 8", "checkout_param 9",
                                                  "checkout_param 7"}));
    ASSERT_EQ(instance.cameras.len(), 1U) << "the default one; an earlier frame's are forgotten";
}
