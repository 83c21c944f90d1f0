// Global set-up of the built module, in a bundle as it ships.
#include "built_effect.h"

using GlobalSetUp = BuiltEffect;

TEST_F(GlobalSetUp, FindsTheDatabasesBesideTheBundle) {
    add_database("sky.stars", kHeader);
    // Not beside it but inside.
    write_file(bundle.root / "Lumivar.plugin/Contents/inside.stars", kHeader);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(host.out_data.my_version, 0x100001U);
    EXPECT_EQ(host.out_data.out_flags, 0x3080000);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(offered_databases(), "sky.stars");
    EXPECT_EQ(host.out_data.num_params, 17);
}

TEST_F(GlobalSetUp, WithoutDatabasesSaysWhereItLooked) {
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
    EXPECT_EQ(message(),
              "Cannot locate any Lumivar star database files. Please place the .stars file in the "
              "same directory as the Lumivar plugin (" +
                  bundle.database_folder() + ").");
    EXPECT_EQ(host.out_data.out_flags, 0x3080000) << "deliberately no display flag";
    EXPECT_EQ(host.out_data.my_version, 0x100001U);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
    EXPECT_EQ(host.log, Log{}) << "the pixel formats are Premiere's alone";
}

TEST_F(GlobalSetUp, SecondDatabaseThatCannotBeReadIsNamedAndLeavesNone) {
    for (const char* name : {"a.stars", "b.stars", "c.stars"}) {
        add_database(name, kHeader);
    }
    // The system's order decides which is looked at first; the one behind the second is not.
    const Log names = listing();
    add_database(names[1], "");
    add_database(names[2], "");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
    EXPECT_EQ(message(), "Error reading Lumivar database file " + bundle.database_folder() + "/" +
                             names[1] + ".");
    EXPECT_EQ(host.out_data.out_flags, 0x3080100);
    EXPECT_EQ(offered_databases(), "");
    EXPECT_EQ(middle(), -1.0F) << "a host that goes on regardless gets no frame";
}

TEST_F(GlobalSetUp, FolderNamedLikeADatabaseCannotBeReadAndTheMessageIsCutToTheHostsBuffer) {
    for (const std::size_t length : {3U, 240U}) {
        const std::string name = std::string(length, 'd') + ".stars";
        std::filesystem::create_directory(bundle.root / name);
        host.out_data.start_sampL = 77;
        EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 512);
        const std::string whole =
            "Error reading Lumivar database file " + bundle.database_folder() + "/" + name + ".";
        EXPECT_EQ(message(), whole.substr(0, 255));
        EXPECT_EQ(host.out_data.start_sampL, 77) << "the field behind the buffer";
        std::filesystem::remove(bundle.root / name);
    }
}

TEST_F(GlobalSetUp, TakesEveryNameWithStarsAnywhereInItWhateverItsHeader) {
    for (const char* name : {"old.stars.txt", "a.stars.bak", ".stars"}) {
        add_database(name, "PK\x03\x04 something else altogether");
    }
    // These would be refused were they opened.
    for (const char* name : {"a.star", "stars", "A.STARS", "readme.txt"}) {
        write_file(bundle.root / name, "");
    }
    ASSERT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    const Log names = listing();
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(offered_databases(), names[0] + "|" + names[1] + "|" + names[2]);
}

TEST_F(GlobalSetUp, LeavesTheHostsGlobalDataAlone) {
    add_database("a.stars", kHeader);
    char block = 0;
    char* handle = &block;
    host.out_data.global_data = &handle;
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(host.out_data.global_data, &handle);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
    EXPECT_EQ(host.out_data.global_data, &handle);
}

TEST_F(GlobalSetUp, DeclaresFormatsToPremiereAndGoesOnWithoutThem) {
    add_database("a.stars", kHeader);
    host.in_data.appl_id = 0x50724D72;
    for (const PF_Err status : {0, 512}) {
        host.failures = {{"ClearSupportedPixelFormats", {status}},
                         {"AddSupportedPixelFormat", {status}}};
        host.log.clear();
        EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
        EXPECT_EQ(host.log,
                  (Log{"acquire PF Pixel Format Suite 1", "ClearSupportedPixelFormats",
                       "AddSupportedPixelFormat BGra", "AddSupportedPixelFormat Bgra",
                       "AddSupportedPixelFormat bgra", "release PF Pixel Format Suite 1"}));
        EXPECT_EQ(message(), "");
        EXPECT_EQ(host.out_data.out_flags, 0x3080000);
    }
    host.missing_suites = {"PF Pixel Format Suite"};
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(message(), "Not able to acquire AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x3080100);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
}

TEST_F(GlobalSetUp, FolderThatCannotBeListedIsAnExceptionOfTheModule) {
    std::filesystem::remove_all(bundle.root.path());
    EXPECT_ANY_THROW(send(PF_Cmd_GLOBAL_SETUP));
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(GlobalSetUp, SetupTwiceStartsAnew) {
    add_database("a.stars", kHeader);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    std::filesystem::rename(bundle.root / "a.stars", bundle.root / "b.stars");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETUP), 0);
    EXPECT_EQ(offered_databases(), "b.stars");
}
