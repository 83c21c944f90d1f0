#include <gtest/gtest.h>
#include <host/errors.h>
#include <host/module.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using host::Module;

std::string refusal(const fs::path& path) {
    try {
        const Module module(path);
    } catch (const host::ModuleError& error) {
        return error.what();
    }
    return "opened";
}

std::string in_quotes(const fs::path& path) { return "\"" + path.string() + "\""; }

/// A bundle with the test effect in it.
class ModuleFile : public testing::Test {
protected:
    ModuleFile() {
        fs::create_directories(file.parent_path());
        fs::copy_file(TEST_EFFECT, file);
    }

    const ScratchFolder place;
    const fs::path bundle = fs::path(place.path()) / "Test.plugin";
    const fs::path file = bundle / "Contents/MacOS/Test";
};

TEST_F(ModuleFile, IsOpenedByItsBundleOrByItself) {
    for (const fs::path& named : {bundle, bundle / "", file}) {
        const Module module(named);
        EXPECT_NE(module.entry_point(), nullptr);
        EXPECT_EQ(module.file(), file);
        EXPECT_EQ(module.folder(), fs::canonical(place.path()));
    }
}

TEST_F(ModuleFile, HasTheFolderInWhichALinkedBundleReallyStands) {
    const ScratchFolder elsewhere;
    fs::create_directory_symlink(bundle, elsewhere / "Test.plugin");
    EXPECT_EQ(host::plugin_folder(elsewhere / "Test.plugin"), fs::canonical(place.path()));
}

TEST_F(ModuleFile, IsOpenOnceAtATimeAndResidentWhileItIs) {
    EXPECT_FALSE(host::is_resident(file));
    {
        const Module module(bundle);
        EXPECT_TRUE(host::is_resident(file));
        // A failed attempt leaves the first one as it is.
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(refusal(bundle), in_quotes(file) + " is already open in this process");
        }
    }
    EXPECT_FALSE(host::is_resident(file));
    EXPECT_EQ(refusal(bundle), "opened");
}

TEST_F(ModuleFile, IsRefusedWithTheReason) {
    const fs::path folder = place / "Empty.plugin";
    fs::create_directory(folder);
    const std::string text = place / "Text";
    write_file(text, "hello");
    const std::string begin = in_quotes(text) + " cannot be loaded: ";
    // Twice: what was refused is not entered as open.
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(refusal(place / "Missing.plugin"),
                  "no plug-in at " + in_quotes(place / "Missing.plugin"));
        EXPECT_EQ(refusal(folder),
                  in_quotes(folder) + " is no plug-in bundle: it has no Contents/MacOS/Empty");
        EXPECT_EQ(refusal(text).rfind(begin, 0), 0u) << refusal(text);
        EXPECT_GT(refusal(text).size(), begin.size());
        EXPECT_EQ(refusal(NO_ENTRY_POINT),
                  in_quotes(NO_ENTRY_POINT) + " exports no entry point EntryPointFunc");
    }
}

}  // namespace
