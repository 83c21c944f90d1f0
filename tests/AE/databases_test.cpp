// Details of set-up's search for star databases, in a folder of the test's own. What the host sees
// of it is in set_up_test.
#include <AE/globals.h>
#include <gtest/gtest.h>
#include <support/expect_throw.h>
#include <support/scratch.h>

#include <memory>
#include <string>

#include "star_ahead.h"

namespace {

class Databases : public testing::Test {
protected:
    PF_Err find() { return find_star_databases(folder.path().c_str(), found, &out_data); }
    ScratchFolder folder;
    std::unique_ptr<LumivarGlobals> owner = std::make_unique<LumivarGlobals>();
    LumivarGlobals& found = *owner;
    PF_OutData out_data = {};
};

}  // namespace

TEST_F(Databases, AreKnownByTheirPathsAndNoneIsOpen) {
    write_file(folder / "a.stars", kHeader);
    EXPECT_EQ(find(), 0);
    ASSERT_EQ(found.starfiles.len(), 1U);
    EXPECT_EQ(std::string(found.starfiles[0].c_str()), folder / "a.stars");
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
    const std::string missing = folder / "missing";
    const std::string message =
        thrown_message([&] { find_star_databases(String(missing.c_str()), found, &out_data); });
    EXPECT_EQ(message.rfind("opendir(\"" + missing + "\"): ", 0), 0U) << message;
}
