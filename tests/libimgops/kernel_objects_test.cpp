// What the compiler made of the kernels' sources.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/command_output.h"

namespace {

/// What a tool says of each kernel source's object in the room's library, line by line.
std::map<std::string, std::vector<std::string>> lines_by_object(const std::string& tool) {
    std::istringstream lines(support::command_output(tool + " '" LUMIVAR_IMGOPS_LIBRARY "'"));
    static const std::regex header(".*\\b(kernels_\\w+)\\.cpp\\.o\\b.*:.*");
    static const std::regex other(".*\\.cpp\\.o\\b.*:.*");
    std::map<std::string, std::vector<std::string>> found;
    std::vector<std::string>* current = nullptr;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        // Few of a hundred thousand lines do, and the expressions take long.
        const bool names_object = line.find(".cpp.o") != std::string::npos;
        if (names_object && std::regex_match(line, match, header)) {
            current = &found[match[1]];
        } else if (names_object && std::regex_match(line, other)) {
            current = nullptr;
        } else if (current != nullptr) {
            current->push_back(line);
        }
    }
    return found;
}

}  // namespace

// A function that the linker may take from any object would bring one processor's instructions to
// all others.
TEST(KernelObjects, ShareNoFunctionWithOthers) {
    const auto objects = lines_by_object("nm --defined-only --format=posix");
    EXPECT_GE(objects.size(), 3U);
    std::size_t symbols = 0;
    for (const auto& [object, lines] : objects) {
        for (const std::string& line : lines) {
            ++symbols;
            std::istringstream words(line);
            std::string name, type;
            words >> name >> type;
            // The way to the run-time's handler of exceptions is data.
            const bool is_shared = type == "W" || type == "V" || type == "u";
            EXPECT_TRUE(!is_shared || name == "DW.ref.__gxx_personality_v0")
                << object << ": " << name;
        }
    }
    EXPECT_GT(symbols, 0U);
}

// A product that is not rounded before it is added to something differs in its last bits, from
// processor to processor.
TEST(KernelObjects, RoundEveryProduct) {
    const auto objects = lines_by_object("objdump --disassemble --no-show-raw-insn");
    static const std::regex product("\\bv?mulps\\b|\\bfmul\\b");
    static const std::regex fused("\\bvfn?m(add|sub)|\\bfn?m(add|sub)\\b|\\bfml[as]\\b");
    std::size_t products = 0;
    for (const auto& [object, lines] : objects) {
        for (const std::string& line : lines) {
            const auto has = [&](const char* part) { return line.find(part) != std::string::npos; };
            if (!has("mul") && !has("fm") && !has("fnm")) {
                continue;  // neither a product nor a fused one
            }
            products += std::regex_search(line, product) ? 1 : 0;
            EXPECT_FALSE(std::regex_search(line, fused)) << object << ": " << line;
        }
    }
    EXPECT_GT(products, 100U);
}
