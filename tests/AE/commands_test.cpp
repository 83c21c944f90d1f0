#include <AE/commands.h>
#include <AE/globals.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libimgops/starfile.h>
#include <support/catalogue.h>
#include <support/scratch.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

#include "fake_host.h"

namespace {

const std::string kHeader = support::catalogue_header(support::VERSION_1);

using Log = std::vector<std::string>;

class Commands : public testing::Test {
protected:
    ~Commands() override { drop_globals(); }

    PF_Err send(PF_Cmd cmd, void* extra = nullptr) {
        return dispatch_command(cmd, &host.in_data, &host.out_data, nullptr, nullptr, extra);
    }
    /// All bytes that the host shows the effect, to see what a command changed.
    std::string records() const {
        const auto bytes = [](const auto& record) {
            return std::string(reinterpret_cast<const char*>(&record), sizeof record);
        };
        return bytes(host.in_data) + bytes(host.out_data) + bytes(host.pre_output) +
               bytes(host.pre_extra) + bytes(host.render_extra);
    }

    FakeHost host;
};

}  // namespace

TEST_F(Commands, OthersAreAnsweredWithoutTouchingAnything) {
    const std::string before = records();
    for (const PF_Cmd cmd :
         {2, 5, 6, 7, 8, 9, 10, 12, 13, 14, 15, 17, 19, 20, 21, 22, 25, 26, 28, 31, 33, 1000, -1}) {
        EXPECT_EQ(send(cmd), 0) << cmd;
        EXPECT_EQ(records(), before) << cmd;
    }
    EXPECT_EQ(host.log, Log{});
}

TEST_F(Commands, HostWithoutBasicSuiteIsTurnedAway) {
    host.in_data.pica_basicP = nullptr;
    for (const PF_Cmd cmd : {0, 1, 2, 3, 4, 11, 16, 18, 23, 24, 25}) {
        EXPECT_EQ(send(cmd), 516) << cmd;
    }
    EXPECT_EQ(host.log, Log{});
}

TEST_F(Commands, AboutNamesEffectVersionAndMaker) {
    EXPECT_EQ(send(PF_Cmd_ABOUT), 0);
    EXPECT_STREQ(host.out_data.return_msg, "Lumivar for After Effects v2.0\rLumivar, 2026");
    EXPECT_EQ(host.log, (Log{"acquire PF ANSI Suite 1", "sprintf", "release PF ANSI Suite 1"}));
}

TEST_F(Commands, AboutLeavesTheMessageAloneUnderPremiere) {
    host.in_data.appl_id = 0x50724D72;
    std::strcpy(host.out_data.return_msg, "as it was");
    EXPECT_EQ(send(PF_Cmd_ABOUT), 0);
    EXPECT_STREQ(host.out_data.return_msg, "as it was");
    EXPECT_EQ(host.log, Log{});
}

TEST_F(Commands, MissingSuiteComesBackAsStatus) {
    host.missing_suites = {"PF ANSI Suite"};
    EXPECT_EQ(send(PF_Cmd_ABOUT), 516);
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Commands, SetdownClosesTheDatabaseAndForgetsTheRest) {
    const ScratchFolder folder;
    const std::string path = folder / "a.stars";
    write_file(path, kHeader);
    const int before = open_descriptors();
    globals = new LumivarGlobals;
    globals->starfiles.append(path.c_str());
    globals->stardb.reset(op_stars_file_input(path.c_str()));
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
    EXPECT_EQ(globals, nullptr);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0) << "nothing left to do";
}

TEST_F(Commands, AllDependenciesAreAText) {
    PF_ExtDependenciesExtra extra = {1, nullptr};
    EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
    ASSERT_NE(extra.dependencies_strH, nullptr);
    EXPECT_EQ(FakeHost::handle_text(extra.dependencies_strH), "All Dependencies requested.");
    EXPECT_EQ(host.handle_size(extra.dependencies_strH), 28U);
    EXPECT_EQ(host.log,
              (Log{"acquire PF Handle Suite 2", "acquire PF ANSI Suite 1", "host_new_handle 28",
                   "strcpy", "release PF Handle Suite 2", "release PF ANSI Suite 1"}));
}

TEST_F(Commands, DependenciesLoseNoHandleWhenASuiteIsMissing) {
    for (const std::string suite : {"PF ANSI Suite", "PF Handle Suite"}) {
        host.missing_suites = {suite};
        host.log.clear();
        PF_ExtDependenciesExtra extra = {1, nullptr};
        EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 516) << suite;
        EXPECT_EQ(extra.dependencies_strH, nullptr) << suite;
        EXPECT_EQ(std::count(host.log.begin(), host.log.end(), "host_new_handle 28"), 0) << suite;
        EXPECT_TRUE(host.suites_balanced()) << suite;
    }
}

TEST_F(Commands, MissingDependenciesAreNever) {
    char block = 'x';
    char* handle = &block;
    PF_ExtDependenciesExtra extra = {2, &handle};
    EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
    EXPECT_EQ(extra.dependencies_strH, nullptr);
    EXPECT_EQ(host.log, Log{});
}

TEST_F(Commands, OtherDependencyChecksGiveAnEmptyText) {
    for (const PF_DepCheckType check : {0, 3, -1, 65536}) {
        PF_ExtDependenciesExtra extra = {check, nullptr};
        EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
        ASSERT_NE(extra.dependencies_strH, nullptr);
        EXPECT_EQ(FakeHost::handle_text(extra.dependencies_strH), "");
        EXPECT_EQ(host.handle_size(extra.dependencies_strH), 1U);
        EXPECT_EQ(extra.check_type, check);
    }
}

TEST_F(Commands, DependenciesWithoutHostMemoryAreNull) {
    host.failures["host_new_handle"] = {1};
    char block = 'x';
    char* handle = &block;
    PF_ExtDependenciesExtra extra = {1, &handle};
    EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
    EXPECT_EQ(extra.dependencies_strH, nullptr);
}

TEST_F(Commands, DynamicFlagsAddCameraAndLightsWhateverTheCheckbox) {
    host.out_data.out_flags2 = 0x1000;
    EXPECT_EQ(send(PF_Cmd_QUERY_DYNAMIC_FLAGS), 0);
    EXPECT_EQ(host.out_data.out_flags2, 0x1006);
    EXPECT_EQ(host.log, (Log{"checkout_param 12", "checkin_param"}));
    EXPECT_EQ(host.checkouts, (std::vector<FakeHost::ParamCheckout>{{12, 100, 50, 1200}}));
}

TEST_F(Commands, DynamicFlagsStayWhenTheCheckoutFails) {
    host.failures = {{"checkout_param", {513}}, {"checkin_param", {514}}};
    EXPECT_EQ(send(PF_Cmd_QUERY_DYNAMIC_FLAGS), 513);
    EXPECT_EQ(host.out_data.out_flags2, 0);
    EXPECT_EQ(host.log, (Log{"checkout_param 12", "checkin_param"}));
}

TEST_F(Commands, DynamicFlagsReportAFailedCheckIn) {
    host.failures = {{"checkin_param", {514}}};
    EXPECT_EQ(send(PF_Cmd_QUERY_DYNAMIC_FLAGS), 514);
    EXPECT_EQ(host.out_data.out_flags2, 6);
}

TEST_F(Commands, ParamsSetupIsReached) {
    EXPECT_EQ(send(PF_Cmd_PARAMS_SETUP), 0);
    EXPECT_EQ(host.declared.size(), 16U);
}

TEST_F(Commands, SetupDeclaresVersionAndFlagsBeforeItLooksForDatabases) {
    // Whatever it finds beside the test program.
    send(PF_Cmd_GLOBAL_SETUP);
    EXPECT_EQ(host.out_data.my_version, 0x100001U);
    EXPECT_EQ(host.out_data.out_flags & ~0x100, 0x3080000);
    EXPECT_EQ(host.out_data.out_flags2, 0x1407);
    EXPECT_EQ(host.log, Log{}) << "the pixel formats are Premiere's alone";
}

TEST_F(Commands, SetupDeclaresFormatsToPremiere) {
    host.in_data.appl_id = 0x50724D72;
    send(PF_Cmd_GLOBAL_SETUP);
    EXPECT_EQ(host.log, (Log{"acquire PF Pixel Format Suite 1", "ClearSupportedPixelFormats",
                             "AddSupportedPixelFormat BGra", "AddSupportedPixelFormat Bgra",
                             "AddSupportedPixelFormat bgra", "release PF Pixel Format Suite 1"}));
}

namespace {

/// Set-up's search in a folder of the test's own.
class Databases : public testing::Test {
protected:
    PF_Err find() { return find_star_databases(folder.path().c_str(), found, &out_data); }
    /// The names in the folder in the order in which the system lists them.
    Log listing() const {
        Log names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    ScratchFolder folder;
    std::unique_ptr<LumivarGlobals> owner = std::make_unique<LumivarGlobals>();
    LumivarGlobals& found = *owner;
    PF_OutData out_data = {};
};

}  // namespace

TEST_F(Databases, AreAllFilesWithStarsInTheirNameInListingOrder) {
    for (const char* name : {"a.stars", "old.stars.txt", ".stars", "x.stars.bak"}) {
        write_file(folder / name, kHeader);
    }
    for (const char* name : {"a.star", "stars", "A.STARS", "readme.txt"}) {
        write_file(folder / name, "not looked at");
    }
    EXPECT_EQ(find(), 0);
    Log expected;
    for (const std::string& name : listing()) {
        if (name.find(".stars") != std::string::npos) {
            expected.push_back(folder / name);
        }
    }
    ASSERT_EQ(expected.size(), 4U);
    ASSERT_EQ(found.starfiles.len(), 4U);
    for (uword i = 0; i < 4; ++i) {
        EXPECT_EQ(std::string(found.starfiles[i].c_str()), expected[i]);
    }
    EXPECT_EQ(found.stardb_index, -99);
    EXPECT_FALSE(found.stardb);
    EXPECT_EQ(out_data.out_flags, 0);
    EXPECT_STREQ(out_data.return_msg, "");
}

TEST_F(Databases, AreProvedReadableWithoutReadingTheirHeader) {
    write_file(folder / "foreign.stars", "PK\x03\x04 something else altogether");
    EXPECT_EQ(find(), 0);
    EXPECT_EQ(found.starfiles.len(), 1U);
}

TEST_F(Databases, SecondThatCannotBeReadIsNamedAndEndsTheSearch) {
    for (const char* name : {"a.stars", "b.stars", "c.stars"}) {
        write_file(folder / name, kHeader);
    }
    const Log names = listing();
    // An empty file cannot be mapped.
    write_file(folder / names[1], "");
    EXPECT_EQ(find(), 512);
    EXPECT_EQ(out_data.out_flags, 0x100);
    EXPECT_EQ(std::string(out_data.return_msg),
              "Error reading Lumivar database file " + (folder / names[1]) + ".");
    ASSERT_EQ(found.starfiles.len(), 2U);
    EXPECT_EQ(std::string(found.starfiles[0].c_str()), folder / names[0]);
    EXPECT_EQ(std::string(found.starfiles[1].c_str()), folder / names[1]);
}

TEST_F(Databases, FolderNamedLikeOneCannotBeRead) {
    std::filesystem::create_directory(folder / "dir.stars");
    EXPECT_EQ(find(), 512);
    EXPECT_EQ(out_data.out_flags, 0x100);
    EXPECT_EQ(std::string(out_data.return_msg),
              "Error reading Lumivar database file " + (folder / "dir.stars") + ".");
}

TEST_F(Databases, NoneIsSaidWithoutTheErrorFlag) {
    write_file(folder / "readme.txt", "");
    EXPECT_EQ(find(), 512);
    EXPECT_EQ(out_data.out_flags, 0);
    EXPECT_EQ(std::string(out_data.return_msg),
              "Cannot locate any Lumivar star database files. Please place the .stars file in the "
              "same directory as the Lumivar plugin (" +
                  folder.path() + ").");
}

TEST_F(Databases, MessagesAreCutToTheHostsBuffer) {
    const std::string name = std::string(240, 'n') + ".stars";
    write_file(folder / name, "");
    out_data.start_sampL = 77;
    EXPECT_EQ(find(), 512);
    const std::string whole = "Error reading Lumivar database file " + (folder / name) + ".";
    EXPECT_EQ(std::string(out_data.return_msg), whole.substr(0, 255));
    EXPECT_EQ(out_data.start_sampL, 77) << "the field behind the buffer";
}

TEST_F(Databases, FolderThatCannotBeListedIsThrown) {
    try {
        find_star_databases(String((folder / "missing").c_str()), found, &out_data);
        ADD_FAILURE() << "nothing thrown";
    } catch (const StrXception& failure) {
        EXPECT_EQ(std::string(failure.message().c_str())
                      .rfind("opendir(\"" + (folder / "missing") + "\"): ", 0),
                  0U);
    }
}
