// The module's registration, read as a host reads it: by the system's own calls, without running
// the module.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

std::string registration_resource() {
    const HMODULE module = LoadLibraryExW(std::filesystem::path(LUMIVAR_MODULE).c_str(), nullptr,
                                          LOAD_LIBRARY_AS_DATAFILE);
    if (module == nullptr) {
        throw std::runtime_error("the module cannot be opened");
    }
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(16000), L"PiPL");
    if (found == nullptr) {
        throw std::runtime_error("the module has no such resource");
    }
    const void* const bytes = LockResource(LoadResource(module, found));
    const std::string resource(static_cast<const char*>(bytes), SizeofResource(module, found));
    FreeLibrary(module);
    return resource;
}

/// Lowest byte first.
std::uint32_t number(const std::string& bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
        value = value << 8U | static_cast<unsigned char>(bytes.at(at + i));
    }
    return value;
}

}  // namespace

// Codes stand backwards, numbers with their lowest byte first; lengths count the zeros that fill
// the last word.
TEST(WindowsRegistration, HasThePropertiesThatTheHostReadsInOrder) {
    const std::pair<std::string, std::string> expected[] = {
        {"dnik", "TKFe"},
        {"eman", "\x07Lumivar"s},
        {"gtac", "\x0ASimulation\0"s},
        {"4668", "EntryPointFunc\0\0"s},
        {"RVPe", "\0\0\x02\0"s},
        {"RVSe", "\0\0\x0D\0"s},
        {"REVe", "\x01\0\x10\0"s},
        {"FNIe", "\0\0\0\0"s},
        {"OLGe", "\0\0\x08\x03"s},
        {"2LGe", "\x07\x14\0\0"s},
        {"ANMe", "\x12Lumivar Star Field\0"s},  // saved projects know the effect by it
        {"LFea", "\0\0\0\0"s},
    };
    const std::string resource = registration_resource();
    EXPECT_EQ(number(resource, 0, 2), 1U);
    EXPECT_EQ(number(resource, 2, 4), 0U) << "version of the format";
    ASSERT_EQ(number(resource, 6, 4), std::size(expected)) << "number of properties";
    std::size_t at = 10;
    for (const auto& [key, data] : expected) {
        EXPECT_EQ(resource.substr(at, 4), "MIB8") << key;
        EXPECT_EQ(resource.substr(at + 4, 4), key);
        EXPECT_EQ(number(resource, at + 8, 4), 0U) << key;
        ASSERT_EQ(number(resource, at + 12, 4), data.size()) << key;
        EXPECT_EQ(resource.substr(at + 16, data.size()), data) << key;
        at += 16 + data.size();
    }
    EXPECT_EQ(resource.size(), at);
}
