// What the built module shows the host and what it needs.
#include <gtest/gtest.h>
#include <support/command_output.h>

#include <set>
#include <sstream>
#include <string>

using support::command_output;

TEST(ModuleSymbols, EntryPointFuncIsTheOnlyExport) {
    std::istringstream lines(
        command_output("nm --dynamic --defined-only --format=posix '" LUMIVAR_MODULE "'"));
    std::set<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        names.insert(line.substr(0, line.find(' ')));
    }
    EXPECT_EQ(names, std::set<std::string>{"EntryPointFunc"});
}

TEST(ModuleSymbols, NeedsTheRunTimeLibrariesAlone) {
    std::istringstream lines(command_output("readelf --dynamic --wide '" LUMIVAR_MODULE "'"));
    std::set<std::string> allowed = {"libstdc++.so", "libm.so", "libgcc_s.so", "libc.so"};
#ifdef LUMIVAR_SANITIZED
    allowed.insert({"libasan.so", "libubsan.so", "libdl.so", "libpthread.so", "librt.so"});
#endif
    int found = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("(NEEDED)") == std::string::npos) {
            continue;
        }
        ++found;
        const size_t start = line.find('[') + 1;
        const std::string name = line.substr(start, line.find(".so") + 3 - start);
        // The dynamic loader counts to the C library; its name tells the processor.
        const bool is_loader = name.rfind("ld-linux", 0) == 0 || name.rfind("ld64", 0) == 0;
        EXPECT_TRUE(is_loader || allowed.count(name) == 1) << name;
    }
    EXPECT_GT(found, 0);
}
