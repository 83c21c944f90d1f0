#include <gtest/gtest.h>
#include <host/errors.h>
#include <host/module.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using host::Module;
using host::ModuleError;

std::string refusal(const fs::path& path) {
    try {
        const Module module(path);
    } catch (const ModuleError& error) {
        return error.what();
    }
    return "opened";
}

/// FOLDER/Test.plugin with the test effect in it.
fs::path make_bundle(const ScratchFolder& place) {
    const fs::path bundle = fs::path(place.path()) / "Test.plugin";
    fs::create_directories(bundle / "Contents" / "MacOS");
    fs::copy_file(TEST_EFFECT, bundle / "Contents" / "MacOS" / "Test");
    return bundle;
}

TEST(Module, OpensABundle) {
    const ScratchFolder place;
    const Module module(make_bundle(place));
    EXPECT_NE(module.entry_point(), nullptr);
    EXPECT_EQ(module.file(),
              fs::path(place.path()) / "Test.plugin" / "Contents" / "MacOS" / "Test");
    EXPECT_EQ(module.folder(), fs::canonical(fs::path(place.path())));
}

TEST(Module, OpensABundleNamedWithATrailingSlash) {
    const ScratchFolder place;
    EXPECT_NO_THROW(Module(make_bundle(place).string() + "/"));
}

TEST(Module, OpensTheModuleFileItself) {
    const ScratchFolder place;
    EXPECT_NO_THROW(Module(make_bundle(place) / "Contents" / "MacOS" / "Test"));
}

TEST(Module, FindsTheFolderOfALinkedBundleWhereItReallyStands) {
    const ScratchFolder place;
    const ScratchFolder elsewhere;
    const fs::path link = fs::path(elsewhere.path()) / "Test.plugin";
    fs::create_directory_symlink(make_bundle(place), link);
    EXPECT_EQ(host::plugin_folder(link), fs::canonical(fs::path(place.path())));
}

TEST(Module, CanBeOpenedAgainOnceClosed) {
    const ScratchFolder place;
    const fs::path bundle = make_bundle(place);
    { const Module module(bundle); }
    EXPECT_NO_THROW(Module{bundle});
}

TEST(Module, RefusesToOpenOneFileTwice) {
    const ScratchFolder place;
    const fs::path bundle = make_bundle(place);
    const Module module(bundle);
    EXPECT_EQ(refusal(bundle),
              "\"" + module.file().string() + "\" is already open in this process");
    // A failed attempt leaves the first one as it is.
    EXPECT_EQ(refusal(bundle),
              "\"" + module.file().string() + "\" is already open in this process");
}

TEST(Module, IsResidentWhileItIsOpen) {
    EXPECT_FALSE(host::is_resident(TEST_EFFECT));
    {
        const Module module(TEST_EFFECT);
        EXPECT_TRUE(host::is_resident(module.file()));
    }
    EXPECT_FALSE(host::is_resident(TEST_EFFECT));
}

TEST(Module, SaysThatNothingIsThere) {
    const ScratchFolder place;
    const std::string missing = place / "Missing.plugin";
    EXPECT_EQ(refusal(missing), "no plug-in at \"" + missing + "\"");
}

TEST(Module, SaysThatAFolderIsNoBundle) {
    const ScratchFolder place;
    const fs::path folder = fs::path(place.path()) / "Empty.plugin";
    fs::create_directory(folder);
    EXPECT_EQ(refusal(folder),
              "\"" + folder.string() + "\" is no plug-in bundle: it has no Contents/MacOS/Empty");
}

TEST(Module, SaysThatAFileCannotBeLoaded) {
    const ScratchFolder place;
    const std::string text = place / "Text";
    write_file(text, "hello");
    const std::string message = refusal(text);
    EXPECT_EQ(message.rfind("\"" + text + "\" cannot be loaded: ", 0), 0u) << message;
    EXPECT_GT(message.size(), ("\"" + text + "\" cannot be loaded: ").size());
    // Not entered as open.
    EXPECT_EQ(refusal(text), message);
}

TEST(Module, SaysThatTheEntryPointIsMissing) {
    EXPECT_EQ(refusal(NO_ENTRY_POINT),
              std::string("\"") + NO_ENTRY_POINT + "\" exports no entry point EntryPointFunc");
    EXPECT_EQ(refusal(NO_ENTRY_POINT),
              std::string("\"") + NO_ENTRY_POINT + "\" exports no entry point EntryPointFunc");
}

}  // namespace
