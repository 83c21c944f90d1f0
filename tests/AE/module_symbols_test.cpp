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

namespace {

// Of the C library: texts, numbers, blocks and diagnostic lines.
const std::set<std::string> kFromC = {
    "abort",   "atof",    "atoi",    "calloc",  "fflush",   "fprintf",  "fputc",    "fputs",
    "free",    "fwrite",  "malloc",  "memchr",  "memcmp",   "memcpy",   "memmove",  "memset",
    "printf",  "putchar", "puts",    "qsort",   "realloc",  "snprintf", "sscanf",   "stderr",
    "stdout",  "strcat",  "strchr",  "strcmp",  "strcpy",   "strcspn",  "strerror", "strlen",
    "strncat", "strncmp", "strncpy", "strpbrk", "strrchr",  "strspn",   "strstr",   "strtod",
    "strtof",  "strtok",  "strtol",  "strtoul", "vfprintf", "vsnprintf"};
const std::set<std::string> kFromMathematics = {
    "acos",  "asin",  "atan",  "atan2", "cbrt",   "ceil",  "cos",   "erf",
    "exp",   "exp2",  "fabs",  "fmax",  "fmin",   "fmod",  "frexp", "floor",
    "hypot", "ldexp", "log",   "log10", "log2",   "lrint", "modf",  "nearbyint",
    "pow",   "rint",  "round", "sin",   "sincos", "sqrt",  "tan",   "trunc"};
// What the databases need: folders are listed, files are opened, measured and mapped; the loader
// tells where the module is. The calls on open files come together.
const std::set<std::string> kFromTheSystem = {
    "close",   "closedir", "dladdr",  "fstat",      "fsync",  "ftruncate", "getpagesize", "lseek",
    "madvise", "mlock",    "mmap",    "munlock",    "munmap", "open",      "opendir",     "pread",
    "pwrite",  "read",     "readdir", "strcasecmp", "sync",   "write"};

bool is_allowed(std::string name) {
    // The compiler's own run-time, and names that it gives to functions of the C library.
    if (name.rfind('_', 0) == 0) {
        return true;
    }
    if (name.size() > 2 && name.compare(name.size() - 2, 2, "64") == 0) {
        name.resize(name.size() - 2);  // with large files
    }
    if (kFromC.count(name) == 1 || kFromMathematics.count(name) == 1 ||
        kFromTheSystem.count(name) == 1) {
        return true;
    }
    const bool is_single = !name.empty() && name.back() == 'f';
    return is_single && kFromMathematics.count(name.substr(0, name.size() - 1)) == 1;
}

}  // namespace

TEST(ModuleSymbols, NoProcessSocketOrClockIsWithinItsReach) {
    std::istringstream lines(
        command_output("nm --dynamic --undefined-only --format=posix '" LUMIVAR_MODULE "'"));
    std::set<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        names.insert(line.substr(0, line.find_first_of(" @")));
    }
    for (const std::string& name : names) {
        EXPECT_TRUE(is_allowed(name)) << name;
    }
    EXPECT_EQ(names.count("dladdr"), 1U) << "the list of imports is not what it should be";
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
