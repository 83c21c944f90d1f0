// The files of a bundle beside its module, whatever stands in their places.
#include "bundle_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/child.h"
#include "support/scratch.h"

namespace {

namespace fs = std::filesystem;
using conformance::BundleFiles;

class BundleFilesOf : public testing::Test {
protected:
    BundleFilesOf() {
        fs::create_directories(contents() / "MacOS");
        fs::create_directories(contents() / "Resources");
    }
    fs::path contents() const { return folder / "A.plugin/Contents"; }
    BundleFiles files() const { return BundleFiles(contents() / "MacOS/A"); }

    ScratchFolder folder;
};

TEST_F(BundleFilesOf, ABundleAreReadToTheLastByte) {
    const std::string bytes = {'a', '\0', '\n', '\xFF'};
    write_file(contents() / "Info.plist", bytes);
    write_file(contents() / "PkgInfo", "");
    write_file(contents() / "Resources/A.rsrc", "resource");
    const BundleFiles read = files();
    EXPECT_TRUE(read.in_bundle);
    EXPECT_EQ(read.info_list.content, bytes);
    EXPECT_EQ(read.info_list.name(), "\"" + (contents() / "Info.plist").string() + "\"");
    EXPECT_EQ(read.package_info.content, "");
    EXPECT_EQ(read.resource.content, "resource");
}

TEST_F(BundleFilesOf, AModuleThatStandsAloneAreNotLookedFor) {
    write_file(folder / "Info.plist", "of something else");
    for (const char* alone : {"MacOS/A", "A", "Contents/A", "A.plugin/Contents/Other/A"}) {
        const BundleFiles none((fs::path(folder.path()) / alone));
        EXPECT_FALSE(none.in_bundle) << alone;
        EXPECT_EQ(none.info_list.content, std::nullopt) << alone;
    }
}

TEST_F(BundleFilesOf, ABundleSayWhyTheyAreNotThere) {
    ASSERT_EQ(mkfifo((contents() / "PkgInfo").c_str(), 0600), 0);
    write_file(contents() / "Resources/A.rsrc", "");
    fs::resize_file(contents() / "Resources/A.rsrc", conformance::kLargestBundleFile + 1);
    const BundleFiles read = files();
    EXPECT_TRUE(read.in_bundle) << "though it lacks them";
    EXPECT_EQ(read.info_list.trouble, "is missing");
    EXPECT_EQ(read.package_info.trouble, "is no regular file") << "and is not waited for";
    EXPECT_EQ(read.resource.trouble, "has 16777217 bytes; 16777216 are read at most");
    for (const auto* file : {&read.info_list, &read.package_info, &read.resource}) {
        EXPECT_EQ(file->content, std::nullopt) << file->name();
    }
}

TEST_F(BundleFilesOf, ABundleThatCannotBeFoundOutAboutSaySo) {
    fs::create_symlink("PkgInfo", contents() / "PkgInfo");
    EXPECT_EQ(files().package_info.trouble, "cannot be read: Too many levels of symbolic links");
}

TEST_F(BundleFilesOf, ABundleThatMustNotBeReadSaySo) {
    constexpr uid_t kNobody = 65534;
    write_file(contents() / "PkgInfo", "eFKTFXTC");
    ASSERT_EQ(chmod((contents() / "PkgInfo").c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(
        result_in_child([&] {
            // Root reads everything. From within, since the folders above may be closed.
            if (chdir(folder.path().c_str()) != 0 || (geteuid() == 0 && seteuid(kNobody) != 0)) {
                return 1;
            }
            const BundleFiles read("A.plugin/Contents/MacOS/A");
            return read.package_info.trouble == "cannot be read: Permission denied" ? 0 : 2;
        }),
        0);
}

}  // namespace
