// The module as a file: what the system reads of it before any of its code runs. Places and values
// as the published description of the format has them.
#include <gtest/gtest.h>
#include <support/scratch.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

class ModuleFile : public testing::Test {
protected:
    std::uint64_t number(std::size_t at, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = size; i-- > 0;) {
            value = value << 8U | static_cast<unsigned char>(bytes.at(at + i));
        }
        return value;
    }
    std::string text(std::size_t at) const { return bytes.c_str() + at; }

    /// Where in the file stands what the loaded module has at this address.
    std::size_t place(std::uint64_t address) const {
        for (std::size_t i = 0; i < number(header + 6, 2); ++i) {
            const std::size_t section = optional + number(header + 20, 2) + 40 * i;
            const std::uint64_t start = number(section + 12, 4);
            if (address >= start && address < start + number(section + 16, 4)) {
                return address - start + number(section + 20, 4);
            }
        }
        throw std::runtime_error("an address in no section");
    }
    std::uint64_t directory(std::size_t index) const {
        return number(optional + 112 + 8 * index, 4);
    }

    /// "LIBRARY FUNCTION" of each import.
    std::vector<std::string> imports() const {
        std::vector<std::string> found;
        for (std::size_t at = place(directory(1)); number(at + 12, 4) != 0; at += 20) {
            std::string library = text(place(number(at + 12, 4)));
            std::transform(library.begin(), library.end(), library.begin(),
                           [](unsigned char letter) { return std::tolower(letter); });
            for (std::size_t entry = place(number(at, 4)); number(entry, 8) != 0; entry += 8) {
                // Two bytes of a hint stand before the name.
                found.push_back(library + " " + text(place(number(entry, 4)) + 2));
            }
        }
        return found;
    }

    const std::string bytes = read_file(LUMIVAR_MODULE);
    const std::size_t header = number(0x3C, 4);
    const std::size_t optional = header + 24;
};

}  // namespace

TEST_F(ModuleFile, IsALibraryFor64BitsThatMayLieAnywhereAndExecutesNoData) {
    EXPECT_EQ(bytes.substr(header, 4), std::string("PE\0\0", 4));
    EXPECT_EQ(number(header + 4, 2), 0x8664U) << "x86_64";
    EXPECT_EQ(number(header + 22, 2) & 0x2000U, 0x2000U) << "a library";
    EXPECT_EQ(number(header + 22, 2) & 0x0001U, 0U) << "can be moved";
    EXPECT_EQ(number(optional, 2), 0x20BU) << "the 64-bit format";
    EXPECT_EQ(number(optional + 70, 2), 0x0020U + 0x0040U + 0x0100U)
        << "64 bits of addresses, moved at random, data not executed";
    EXPECT_NE(directory(5), 0U) << "what to change when it is moved";
}

TEST_F(ModuleFile, TellsNothingOfTheMachineThatBuiltIt) {
    EXPECT_EQ(number(header + 8, 4), 0U) << "time of the build";
    EXPECT_EQ(number(place(directory(0)) + 4, 4), 0U) << "time of the build, with the exports";
    EXPECT_EQ(number(header + 12, 4), 0U) << "symbols";
    EXPECT_EQ(number(header + 16, 4), 0U) << "number of symbols";
    EXPECT_EQ(directory(6), 0U) << "facts for debuggers";
    for (const char* path : {LUMIVAR_SOURCE_DIR, LUMIVAR_BINARY_DIR, "/usr/", "/home/", "/root/"}) {
        EXPECT_EQ(bytes.find(path), std::string::npos) << path;
    }
    EXPECT_NE(bytes.find("AE/LumivarAE.cpp"), std::string::npos) << "as messages name sources";
}

TEST_F(ModuleFile, EntryPointFuncIsTheOnlyExport) {
    const std::size_t exports = place(directory(0));
    EXPECT_EQ(text(place(number(exports + 12, 4))), "Lumivar.aex");
    EXPECT_EQ(number(exports + 20, 4), 1U) << "functions";
    ASSERT_EQ(number(exports + 24, 4), 1U) << "names";
    EXPECT_EQ(text(place(number(place(number(exports + 32, 4)), 4))), "EntryPointFunc");
}

TEST_F(ModuleFile, NeedsTheSystemAndItsCLibraryAlone) {
    const std::vector<std::string> all = imports();
    EXPECT_NE(std::find(all.begin(), all.end(), "kernel32.dll MapViewOfFile"), all.end());
    for (const std::string& import : all) {
        const std::string library = import.substr(0, import.find(' '));
        EXPECT_TRUE(library == "kernel32.dll" || library == "msvcrt.dll" ||
                    library.rfind("api-ms-win-crt-", 0) == 0)
            << import;
        for (const char* never :
             {"CreateProcess", "WinExec", "CreateFileA", "LoadLibraryA", "DeleteFile", "MoveFile",
              "system", "_spawn", "_exec", "_popen", "fopen", "remove"}) {
            EXPECT_NE(import.substr(library.size() + 1).rfind(never, 0), 0U) << import;
        }
    }
}
