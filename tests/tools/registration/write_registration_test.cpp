// The program that writes the bundle's registration: where it puts the files, and how it fails.
// What stands in them is judged in the built bundle.
#include <gtest/gtest.h>
#include <support/scratch.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class WriteRegistration : public testing::Test {
protected:
    /// Runs the program; its exit code.
    int run(const std::string& arguments) {
        const std::string command =
            "'" WRITE_REGISTRATION "' " + arguments + " 2>'" + (folder / "errors") + "'";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string errors() const { return read_file(folder / "errors"); }
    /// Runs the program, which cannot write a file below Contents.
    void expect_failure(const std::string& file, const std::string& reason) {
        EXPECT_EQ(run(argument), 1);
        EXPECT_EQ(errors(), "write_registration: cannot write " + contents + "/" + file + ": " +
                                reason + "\n");
    }

    /// Every file below Contents, by its path there.
    std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(contents)) {
            if (!entry.is_directory()) {
                found.push_back(entry.path().lexically_relative(contents).string());
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    ScratchFolder folder;
    const std::string contents = folder / "A b.plugin/Contents";
    const std::string argument = "'" + contents + "' x86_64";
};

const std::vector<std::string> kFiles = {"Info.plist", "PkgInfo", "Resources/Lumivar.rsrc"};

}  // namespace

TEST_F(WriteRegistration, MakesTheFoldersReplacesWhatIsThereAndLeavesNothingElse) {
    EXPECT_EQ(run(argument), 0);
    EXPECT_EQ(errors(), "");
    EXPECT_EQ(files(), kFiles);
    write_file(contents + "/PkgInfo", "longer than it will be");
    write_file(contents + "/PkgInfo.inprogress", "left by a build that was stopped");
    EXPECT_EQ(run(argument), 0);
    EXPECT_EQ(read_file(contents + "/PkgInfo"), "eFKTFXTC");
    EXPECT_EQ(files(), kFiles);
}

// The keys stand in a row, each with its entry point, behind the category.
TEST_F(WriteRegistration, NamesAnEntryPointForEachProcessorAndForNoOther) {
    const auto keys = [&](const std::string& processors) {
        EXPECT_EQ(run("'" + contents + "' " + processors), 0);
        const std::string bytes = read_file(contents + "/Resources/Lumivar.rsrc");
        std::string found;
        for (const std::string key : {"mi32", "mi64", "ma64"}) {
            found += bytes.find("8BIM" + key) == std::string::npos ? "" : key + " ";
        }
        return found;
    };
    EXPECT_EQ(keys("arm64 x86_64"), "mi64 ma64 ");
    EXPECT_EQ(keys("i386"), "mi32 ");
    EXPECT_EQ(keys(""), "");
}

TEST_F(WriteRegistration, NamesTheFileThatCannotBeWrittenAndKeepsTheOldOne) {
    fs::create_directories(contents + "/Resources/Lumivar.rsrc/in the way");
    expect_failure("Resources/Lumivar.rsrc", "Is a directory");
    EXPECT_EQ(files(), (std::vector<std::string>{"Info.plist", "PkgInfo"}));
    fs::create_directories(contents + "/Info.plist.inprogress/in the way");
    write_file(contents + "/Info.plist", "old");
    expect_failure("Info.plist", "Is a directory");
    EXPECT_EQ(read_file(contents + "/Info.plist"), "old");
}

TEST_F(WriteRegistration, NamesTheFileWhoseFolderCannotBeMade) {
    write_file(folder / "A b.plugin", "a file");
    expect_failure("Info.plist", "Not a directory");
}

TEST_F(WriteRegistration, NoticesAFullDisk) {
    if (!fs::is_character_file("/dev/full")) {
        FAIL() << "the test needs a device that takes nothing";
    }
    fs::create_directories(contents);
    fs::create_symlink("/dev/full", contents + "/PkgInfo.inprogress");
    expect_failure("PkgInfo", "No space left on device");
    EXPECT_EQ(files(), std::vector<std::string>{"Info.plist"});
}

TEST_F(WriteRegistration, WantsOneFolderAndKnownProcessorsOnceEach) {
    for (const std::string& arguments :
         {std::string(), std::string("''"), std::string("'' x86_64"), std::string("--windows ''"),
          std::string("--windows a b"), argument + " x86_64", argument + " ppc", argument + " ''",
          argument + " x86_64 ppc"}) {
        EXPECT_EQ(run(arguments), 2) << arguments;
        EXPECT_EQ(errors(),
                  "usage: write_registration CONTENTS-FOLDER [PROCESSOR...]\n"
                  "       write_registration --windows FILE\n"
                  "PROCESSOR: i386, x86_64 or arm64, once for each that the module has code for\n")
            << arguments;
    }
    EXPECT_FALSE(fs::exists(contents));
}
