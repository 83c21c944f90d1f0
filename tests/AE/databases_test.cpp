// Set-up's search for star databases, in a folder of the test's own.
#include <AE/globals.h>
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <support/scratch.h>

#include <filesystem>
#include <memory>

#include "star_ahead.h"

namespace {

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
