// The operating-system room on Windows: mappings, folders, modules, texts.
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <osapi/directories.h>
#include <osapi/loading.h>
#include <osapi/mappings.h>
#include <osapi/module_path.h>
#include <osapi/path_text.h>
#include <osapi/reason.h>
#include <osapi/system_text.h>
#include <support/scratch.h>
#include <windows.h>
#include <winioctl.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using namespace std::string_literals;
using Names = std::set<std::string>;

// Several scripts, and a character beyond 16 bits.
const std::string kName = "звёзды 星 نجوم \U0001F31F";

const std::string kFarDown = [] {
    std::string path;
    for (int level = 0; level < 5; ++level) {
        path += "/" + std::string(60, 'd');
    }
    return path;
}();

fs::path utf8(const std::string& text) { return std::u8string(text.begin(), text.end()); }

std::string text_of(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

std::string lower_case(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

template <class Run>
std::string thrown(Run run) {
    try {
        run();
    } catch (const StrXception& failure) {
        return failure.message().c_str();
    }
    return "nothing thrown";
}

bool begins_with(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

class WindowsFiles : public testing::Test {
protected:
    WindowsFiles() : folder(fs::path(scratch_.path()) / utf8(kName)) {
        fs::create_directory(folder);
    }

    std::string add(const std::string& name, const std::string& bytes) {
        const std::string plain = scratch_ / "made";
        write_file(plain, bytes);
        fs::rename(plain, folder / utf8(name));
        return text_of(folder / utf8(name));
    }
    Names listing(const std::string& path) const {
        Array<String> entries;
        OSAPI::lsdir(path.c_str(), entries);
        Names names;
        for (uword i = 0; i < entries.len(); ++i) {
            EXPECT_TRUE(names.insert(entries[i].c_str()).second) << "twice";
        }
        return names;
    }

    /// A folder to be made below this one, its path longer than 260 characters. The mark takes that
    /// limit away for what the test itself does.
    fs::path far_down() const {
        fs::path deep = L"\\\\?\\" + fs::path(folder).make_preferred().native();
        for (int level = 0; level < 5; ++level) {
            deep /= std::string(60, 'd');
        }
        return deep;
    }

private:
    ScratchFolder scratch_;

protected:
    fs::path folder;
};

std::string bytes_of(const OSAPI::FileMapping& mapping) { return {mapping.addr(), mapping.size()}; }

}  // namespace

TEST_F(WindowsFiles, MappingHasTheBytesOfAFileOfAnyName) {
    const std::string bytes = "LUMIVAR1\r\n\x1A and\0 more"s + std::string(100000, 'x');
    const std::string path = add(kName + ".stars", bytes);
    const OSAPI::FileMapping mapping(path.c_str(), OSAPI::kRead);
    EXPECT_EQ(mapping.size(), bytes.size());
    EXPECT_EQ(bytes_of(mapping), bytes);
}

// A word of the compiler that has 32 bits on this system would lose the upper part of the size.
TEST_F(WindowsFiles, MappingOfMoreThan4GiBIsWhole) {
    const std::string path = add("large.stars", "first");
    constexpr LONGLONG kLast = 0x100000010;
    const HANDLE file = CreateFileW((folder / "large.stars").c_str(), GENERIC_READ | GENERIC_WRITE,
                                    0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD ignored = 0;
    // With nothing but holes in between, where the file system can.
    DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
    LARGE_INTEGER place = {};
    place.QuadPart = kLast;
    EXPECT_NE(SetFilePointerEx(file, place, nullptr, FILE_BEGIN), 0);
    EXPECT_NE(WriteFile(file, "L", 1, &ignored, nullptr), 0);
    CloseHandle(file);
    const OSAPI::FileMapping mapping(path.c_str(), OSAPI::kRead);
    ASSERT_EQ(mapping.size(), 0x100000011U);
    EXPECT_EQ(mapping.addr()[0], 'f');
    EXPECT_EQ(mapping.addr()[kLast], 'L');
}

TEST_F(WindowsFiles, MissingFileIsNamedWithTheSystemsReason) {
    const std::string path = text_of(folder / "none.stars");
    const std::string message = thrown([&] { OSAPI::FileMapping(path.c_str(), OSAPI::kRead); });
    const std::string start = "opening file \"" + path + "\": ";
    ASSERT_TRUE(begins_with(message, start)) << message;
    // The system's own words, which end before the place of the raise, without a line end.
    const std::string rest = message.substr(start.size());
    EXPECT_GT(rest.find(" in <OSAPI::FileMapping::FileMapping(const char*, int)> "
                        "(osapi/osapi-windows-mappings.cpp:"),
              5U);
    EXPECT_NE(rest.find(" in <"), std::string::npos);
    EXPECT_EQ(rest.find_first_of("\r\n"), std::string::npos);
}

TEST_F(WindowsFiles, EmptyFileCannotBeMapped) {
    const std::string path = add("empty.stars", "");
    const std::string message = thrown([&] { OSAPI::FileMapping(path.c_str(), OSAPI::kRead); });
    EXPECT_TRUE(begins_with(message, "mmap(file): ")) << message;
    // Nothing holds it afterwards.
    EXPECT_TRUE(fs::remove(folder / "empty.stars"));
}

TEST_F(WindowsFiles, FolderCannotBeMapped) {
    const std::string path = text_of(folder);
    EXPECT_TRUE(begins_with(thrown([&] { OSAPI::FileMapping(path.c_str(), OSAPI::kRead); }),
                            "opening file \"" + path + "\": "));
}

TEST_F(WindowsFiles, MappedFileKeepsItsBytesWhileOthersRenameWriteAndDelete) {
    const std::string path = add("a.stars", std::string(5000, 'a'));
    {
        const OSAPI::FileMapping mapping(path.c_str(), OSAPI::kRead);
        fs::rename(folder / "a.stars", folder / "b.stars");
        std::fstream(folder / "b.stars", std::ios::in | std::ios::out | std::ios::binary) << 'b';
        EXPECT_EQ(bytes_of(mapping), 'b' + std::string(4999, 'a')) << "one file for all";
        // Systems differ in whether they let go of a mapped file's name.
        std::error_code ignored;
        fs::remove(folder / "b.stars", ignored);
        EXPECT_EQ(bytes_of(mapping), 'b' + std::string(4999, 'a'));
    }
    std::error_code error;
    fs::remove(folder / "b.stars", error);
    EXPECT_FALSE(error) << "after the mapping nothing holds the file";
}

TEST_F(WindowsFiles, ListingHasEveryNameInUtf8) {
    const Names expected = {".", "..", kName + ".stars", "plain.txt", ".hidden", "folder.stars"};
    add(kName + ".stars", "x");
    add("plain.txt", "");
    add(".hidden", "");
    fs::create_directory(folder / "folder.stars");
    EXPECT_EQ(listing(text_of(folder)), expected);
    EXPECT_EQ(listing(text_of(folder) + "/"), expected);
}

// As `dirname` leaves it of a file there.
TEST_F(WindowsFiles, ListingOfADriveIsThatOfItsRoot) {
    wchar_t windows[MAX_PATH] = {};
    ASSERT_GT(GetWindowsDirectoryW(windows, MAX_PATH), 3U);
    const fs::path place = windows;
    Names found;
    for (const std::string& name : listing(place.root_name().string())) {
        found.insert(lower_case(name));
    }
    EXPECT_EQ(found.count(lower_case(place.filename().string())), 1U);
}

TEST_F(WindowsFiles, ListingOfWhatIsNoFolderNamesIt) {
    const std::string file = add("file", "x");
    for (const std::string& path : {text_of(folder / "none"), file, std::string()}) {
        const std::string message = thrown([&] { listing(path); });
        EXPECT_TRUE(begins_with(message, "opendir(\"" + path + "\"): ")) << message;
        EXPECT_NE(message.find(" in <void OSAPI::lsdir(const char*, Array<String>&)> "
                               "(osapi/osapi-windows-directories.cpp:"),
                  std::string::npos)
            << message;
    }
}

TEST_F(WindowsFiles, PathsMayBeLongerThan260Characters) {
    const fs::path deep = far_down();
    fs::create_directories(deep);
    fs::rename(utf8(add("a.stars", "bytes")), deep / "a.stars");
    const std::string path = text_of(folder) + kFarDown;
    EXPECT_EQ(listing(path), (Names{".", "..", "a.stars"}));
    EXPECT_EQ(bytes_of(OSAPI::FileMapping((path + "/a.stars").c_str(), OSAPI::kRead)), "bytes");
    EXPECT_EQ(bytes_of(OSAPI::FileMapping(
                  (path + "/../" + std::string(60, 'd') + "/a.stars").c_str(), OSAPI::kRead)),
              "bytes");
}

TEST(WindowsModules, PathIsTheFileThatHoldsTheAddressWithSlashes) {
    const String path = OSAPI::module_path(reinterpret_cast<const void*>(&begins_with));
    EXPECT_EQ(OSAPI::basename(path.c_str()), String("windows_osapi_test.exe"));
    EXPECT_EQ(path.find('\\'), String::kNotFound);
    EXPECT_TRUE(fs::exists(utf8(path.c_str())));
    const auto of_system = reinterpret_cast<const void*>(&GetACP);
    const std::string library =
        lower_case(OSAPI::basename(OSAPI::module_path(of_system).c_str()).c_str());
    EXPECT_EQ(library.find("kernel"), 0U) << library;
}

TEST_F(WindowsFiles, ModuleIsLoadedFromAFolderFarDownAndKnowsItsPath) {
    const fs::path deep = far_down();
    fs::create_directories(deep);
    fs::copy_file(LUMIVAR_MODULE, deep / "Lumivar.aex");
    const std::string path = text_of(folder) + kFarDown + "/Lumivar.aex";
    {
        OSAPI::LoadedModule module;
        ASSERT_TRUE(module.load(path.c_str())) << module.failure().c_str();
        const auto entry = module.find("EntryPointFunc");
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(OSAPI::module_path(reinterpret_cast<const void*>(entry)).c_str(), path);
        EXPECT_TRUE(OSAPI::is_loaded(path.c_str()));
    }
    EXPECT_FALSE(OSAPI::is_loaded(path.c_str()));
}

TEST(WindowsModules, PathIsEmptyWhereTheLoaderHasNothing) {
    const auto on_the_heap = std::make_unique<int>();
    EXPECT_EQ(OSAPI::module_path(on_the_heap.get()).len(), 0U);
}

TEST(WindowsModules, LoadingFindsFunctionsAndSaysWhyItFails) {
    OSAPI::LoadedModule module;
    ASSERT_TRUE(module.load("kernel32.dll"));
    EXPECT_NE(module.find("GetACP"), nullptr);
    EXPECT_EQ(module.find("NoSuchFunction"), nullptr);
    EXPECT_TRUE(OSAPI::is_loaded("kernel32.dll"));
    OSAPI::LoadedModule missing;
    EXPECT_FALSE(missing.load("C:/no/such.aex"));
    EXPECT_GT(missing.failure().len(), 5U);
    EXPECT_FALSE(OSAPI::is_loaded("C:/no/such.aex"));
}

// A machine's code page is whatever its user chose; Wine's is this one outside of any language.
TEST(SystemText, HasAQuestionMarkForWhatTheCodePageLacks) {
    ASSERT_EQ(GetACP(), 1252U) << "the test knows what this code page has no characters for";
    EXPECT_EQ(OSAPI::system_text("plain"), String("plain"));
    EXPECT_EQ(OSAPI::system_text(""), String());
    EXPECT_EQ(OSAPI::system_text("\u00C9toile \u20AC"), String("\xC9toile \x80"));
    EXPECT_EQ(OSAPI::system_text("星 \U0001F31F"), String("? ??"));
    // Not the letter that looks most alike.
    EXPECT_EQ(OSAPI::system_text("\u0101"), String("?"));
}
