// The built module, in a bundle as it ships.
#include <gtest/gtest.h>
#include <support/catalogue.h>

#include "bundle.h"
#include "fake_host.h"

namespace {

const std::string kHeader = support::catalogue_header(support::VERSION_1);

class Module : public testing::Test {
protected:
    PF_Err send(PF_Cmd cmd, void* extra = nullptr) {
        return bundle.entry()(cmd, &host.in_data, &host.out_data, nullptr, nullptr, extra);
    }
    std::string message() const { return host.out_data.return_msg; }

    Bundle bundle;
    FakeHost host;
};

}  // namespace

TEST_F(Module, FindsTheDatabasesBesideTheBundle) {
    write_file(bundle.root / "sky.stars", kHeader);
    // Not beside it but inside.
    write_file(bundle.root / "Lumivar.plugin/Contents/inside.stars", kHeader);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(host.out_data.my_version, 0x100001U);
    EXPECT_EQ(host.out_data.out_flags, 0x3080000);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 0);
    EXPECT_EQ(host.out_data.num_params, 17);
    ASSERT_EQ(host.declared.size(), 16U);
    EXPECT_EQ(host.declared[15].text, "sky.stars");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
}

TEST_F(Module, WithoutDatabasesSaysWhereItLooked) {
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
    EXPECT_EQ(message(),
              "Cannot locate any Lumivar star database files. Please place the .stars file in the "
              "same directory as the Lumivar plugin (" +
                  bundle.database_folder() + ").");
    EXPECT_EQ(host.out_data.out_flags, 0x3080000) << "deliberately no display flag";
}

TEST_F(Module, DatabaseThatCannotBeReadIsNamed) {
    write_file(bundle.root / "sky.stars", "");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
    EXPECT_EQ(message(),
              "Error reading Lumivar database file " + bundle.database_folder() + "/sky.stars.");
    EXPECT_EQ(host.out_data.out_flags, 0x3080100);
}

TEST_F(Module, FailedSetupLeavesNoDatabases) {
    write_file(bundle.root / "a.stars", kHeader);
    write_file(bundle.root / "b.stars", "");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
    EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 0);
    ASSERT_EQ(host.declared.size(), 16U);
    EXPECT_EQ(host.declared[15].text, "");
}

TEST_F(Module, FolderThatCannotBeListedIsAnExceptionOfTheModule) {
    std::filesystem::remove_all(bundle.root.path());
    EXPECT_ANY_THROW(send(PF_Cmd_GLOBAL_SETUP));
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Module, SetupTwiceStartsAnew) {
    write_file(bundle.root / "a.stars", kHeader);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    std::filesystem::rename(bundle.root / "a.stars", bundle.root / "b.stars");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 0);
    ASSERT_EQ(host.declared.size(), 16U);
    EXPECT_EQ(host.declared[15].text, "b.stars");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
}

TEST_F(Module, PremiereWithoutItsFormatSuiteIsToldSoAndSetUp) {
    write_file(bundle.root / "a.stars", kHeader);
    host.in_data.appl_id = 0x50724D72;
    host.missing_suites = {"PF Pixel Format Suite"};
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(message(), "Not able to acquire AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x3080100);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
}

TEST_F(Module, RendersAFrame) {
    write_file(bundle.root / "sky.stars",
               kHeader + support::catalogue_record({.lon = 90, .lat = 0}));
    ASSERT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    host.set_default_values();
    host.has_camera = false;
    FakeWorld input(16, 16, PF_PixelFormat_ARGB64);
    FakeWorld output(33, 17, PF_PixelFormat_ARGB64);
    host.input_world = &input;
    host.output_world = &output;
    ASSERT_EQ(send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra), 0);
    host.render_input.pre_render_data = host.pre_output.pre_render_data;
    EXPECT_EQ(send(PF_Cmd_SMART_RENDER, &host.render_extra), 0);
    host.pre_output.delete_pre_render_data_func(host.pre_output.pre_render_data);
    EXPECT_GT(output.at16(16, 8).red, 0);
    EXPECT_EQ(output.at16(0, 0).red, 0);
    EXPECT_EQ(output.at16(0, 0).alpha, 32768);
    EXPECT_TRUE(output.margins_intact());
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
    EXPECT_TRUE(host.suites_balanced());
}
