#include "plugin_place.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "failure_of.h"
#include "support/scratch.h"
#include "support/variable.h"
#include "tool_run.h"

namespace {

namespace fs = std::filesystem;
using lumivar::StagedPlugin;

TEST(PluginPlaces, AreBesideTheProgramsFolder) {
    EXPECT_EQ(lumivar::plugin_places("/opt/lumivar/bin/lumivar"),
              (std::vector<fs::path>{"/opt/lumivar/plugin/Lumivar.plugin",
                                     "/opt/lumivar/lib/lumivar/Lumivar.plugin",
                                     "/opt/lumivar/lib/Lumivar.plugin"}));
}

TEST(FindPlugin, TakesTheNamedOneAndSaysWhereItLooked) {
    const ScratchFolder folder;
    fs::create_directory(folder / "My.plugin");
    EXPECT_EQ(lumivar::find_plugin(folder / "My.plugin"), folder / "My.plugin");
    EXPECT_EQ(failure_of([&] { lumivar::find_plugin(folder / "none"); }),
              "there is no plug-in " + (folder / "none"));
}

TEST(FindPlugin, FollowsLinksToWhereThePluginReallyStands) {
    const ScratchFolder folder;
    fs::create_directories(folder / "real/My.plugin/Contents/MacOS");
    write_file(folder / "real/My.plugin/Contents/MacOS/My", "module");
    write_file(folder / "real/My.plugin/Contents/MacOS/Other", "module");
    fs::create_directory_symlink("real/My.plugin", folder / "link.plugin");
    for (const char* name : {"link.plugin", "real/My.plugin", "real/My.plugin/",
                             "real/My.plugin/Contents/MacOS/My", "link.plugin/Contents/MacOS/My"}) {
        EXPECT_EQ(lumivar::find_plugin(folder / name), folder / "real/My.plugin") << name;
    }
    // A module that the bundle does not start is meant as it is.
    EXPECT_EQ(lumivar::find_plugin(folder / "real/My.plugin/Contents/MacOS/Other"),
              folder / "real/My.plugin/Contents/MacOS/Other");
}

TEST(FindPlugin, NamesThePlacesWhenItIsInNone) {
    const ScratchFolder folder;
    fs::create_directory(folder / "bin");
    fs::copy_file(LUMIVAR_PROGRAM, folder / "bin/lumivar");
    const std::pair<const char*, const char*> remedies[] = {
        {"controls", "name the bundle with --plugin"},
        {"check", "name a bundle, NAME.plugin with its module in Contents/MacOS/NAME"}};
    for (const auto& [command, remedy] : remedies) {
        const ToolResult result = run_tool({command}, {.program = folder / "bin/lumivar"});
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "lumivar: cannot find the plug-in; it is in none of " +
                                  (folder / "plugin/Lumivar.plugin") + ", " +
                                  (folder / "lib/lumivar/Lumivar.plugin") + ", " +
                                  (folder / "lib/Lumivar.plugin") + "; " + remedy + "\n");
    }
}

TEST(StagedName, IsTheFilesOwnWhereThePluginCanListIt) {
    EXPECT_EQ(lumivar::staged_name("/data/my.stars"), "my.stars");
    EXPECT_EQ(lumivar::staged_name("old.stars.bak"), "old.stars.bak");
    EXPECT_EQ(lumivar::staged_name("/data.stars/mine.db"), "catalogue.stars");
    EXPECT_EQ(lumivar::staged_name("a|b.stars"), "catalogue.stars");
}

TEST(StagedPluginFolder, HoldsACopyOfTheBundleAndALinkToTheCatalogueUntilItGoes) {
    const ScratchFolder folder;
    fs::create_directories(folder / "B.plugin/Contents/MacOS");
    write_file(folder / "B.plugin/Contents/MacOS/B", "module");
    write_file(folder / "B.plugin/Contents/Info.plist", "list");
    fs::create_symlink("Info.plist", folder / "B.plugin/Contents/link");
    write_file(folder / "other.stars", "not to be seen");
    write_file(folder / "mine.stars", "stars");
    fs::path stage;
    for (const char* name : {"B.plugin", "B.plugin/"}) {
        const StagedPlugin staged(folder / name, folder / "mine.stars");
        stage = staged.bundle().parent_path();
        EXPECT_EQ(staged.bundle().filename(), "B.plugin");
        EXPECT_EQ(names_in(stage), (std::vector<std::string>{"B.plugin", "lock", "mine.stars"}));
        EXPECT_EQ(read_file(stage / "mine.stars"), "stars");
        EXPECT_EQ(read_file(stage / "B.plugin/Contents/MacOS/B"), "module");
        EXPECT_EQ(read_file(stage / "B.plugin/Contents/Info.plist"), "list");
        // A link would lead the plug-in's search for its own folder back to the bundle copied from.
        EXPECT_FALSE(fs::is_symlink(stage / "B.plugin"));
        EXPECT_FALSE(fs::is_symlink(stage / "B.plugin/Contents/MacOS/B"));
        EXPECT_FALSE(fs::is_symlink(stage / "B.plugin/Contents/link"));
    }
    EXPECT_FALSE(fs::exists(stage));
    EXPECT_TRUE(fs::exists(folder / "mine.stars"));
}

TEST(StagedPluginFolder, IsGoneWhenTheBundleCannotBeCopied) {
    const ScratchFolder folder;
    fs::create_directories(folder / "B.plugin");
    fs::create_symlink("nowhere", folder / "B.plugin/dangling");
    const Variable place("TMPDIR", folder.path());
    EXPECT_THROW(StagedPlugin(folder / "B.plugin", folder / "mine.stars"), lumivar::Failure);
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"B.plugin"});
}

}  // namespace
