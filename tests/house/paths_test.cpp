// The documents name paths; each must exist, or the map lies.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "../support/scratch.h"

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = LUMIVAR_SOURCE_DIR;

/// Calls `use` for every source and header of the room.
template <class Use>
void for_each_source(const std::string& room, Use use) {
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / room)) {
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") {
            use(entry.path());
        }
    }
}

/// Every `back-quoted` text of the document that looks like a path of the tree, and every link that
/// stays in the tree.
std::set<std::string> paths_named_in(const fs::path& document) {
    static const std::set<std::string> rooms = {
        "base",  "osapi",      "libkelvimage", "libimgops", "AE",     "host", "check",   "tools",
        "tests", "benchmarks", "fuzz",         "data",      "scenes", "docs", "scripts", "cmake"};
    const std::string text = read_file(document);
    static const std::regex quoted("`([A-Za-z0-9_.\\-]+(?:/[A-Za-z0-9_.\\-]+)*/?)`");
    std::set<std::string> found;
    for (std::sregex_iterator it(text.begin(), text.end(), quoted), end; it != end; ++it) {
        const std::string path = (*it)[1];
        if (rooms.count(path.substr(0, path.find('/'))) != 0) {
            found.insert(path);
        }
    }
    static const std::regex link("\\]\\(([A-Za-z0-9_./\\-]+)\\)");
    for (std::sregex_iterator it(text.begin(), text.end(), link), end; it != end; ++it) {
        // Seen from the document's own folder.
        const fs::path target = document.parent_path() / (*it)[1].str();
        found.insert(target.lexically_normal().lexically_relative(kRoot).string());
    }
    return found;
}

}  // namespace

class Documents : public testing::TestWithParam<const char*> {};

TEST_P(Documents, NamePathsThatExist) {
    const fs::path document = kRoot / GetParam();
    ASSERT_TRUE(fs::exists(document));
    const std::set<std::string> named = paths_named_in(document);
    EXPECT_FALSE(named.empty());
    for (const std::string& path : named) {
        EXPECT_TRUE(fs::exists(kRoot / path)) << GetParam() << " names " << path;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Documents,
                         testing::Values("HACKING.md", "CONTRIBUTING.md", "README.md",
                                         "docs/catalogues.md", "docs/check.md",
                                         "docs/host-interface.md", "docs/performance.md",
                                         "docs/star-file.md"),
                         [](const auto& document) {
                             std::string name = document.param;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
                             return name;
                         });

// A room may include only from the rooms below it; the build sees to public headers, this sees to
// quoted paths that climb out of a room.
TEST(Rooms, IncludeOnlyFromBelow) {
    const std::vector<std::pair<std::string, std::set<std::string>>> allowed = {
        {"base", {"base"}},
        {"osapi", {"base", "osapi"}},
        {"libkelvimage", {"base", "osapi", "libkelvimage"}},
        {"libimgops", {"base", "osapi", "libimgops"}},
        {"AE", {"base", "osapi", "libkelvimage", "libimgops", "AE", "host_api"}},
    };
    static const std::regex include("#include [<\"]([A-Za-z_]+)/[^>\"]*[>\"]");
    static const std::set<std::string> system = {"sys", "netinet", "arpa", "malloc"};
    int checked = 0;
    for (const auto& [room, below] : allowed) {
        for_each_source(room, [&, room = room, below = below](const fs::path& source) {
            const std::string text = read_file(source);
            for (std::sregex_iterator it(text.begin(), text.end(), include), end; it != end; ++it) {
                const std::string target = (*it)[1];
                if (fs::is_directory(kRoot / room / target) ||
                    fs::is_directory(source.parent_path() / target)) {
                    continue;  // a folder of the room's own
                }
                EXPECT_TRUE(below.count(target) != 0 ||
                            (room == "osapi" && system.count(target) != 0))
                    << source << " includes " << (*it)[0];
                ++checked;
            }
        });
    }
    EXPECT_GT(checked, 10);
}

TEST(Rooms, LeaveWhatOneSystemAloneHasToTheSystemLayer) {
    const auto special = [](const fs::path& source) {
        const std::string text = read_file(source);
        for (const char* sign :
             {"\"/proc/", "__linux__", "__APPLE__", "<linux/", "<mach", "<sys/epoll.h>",
              "<sys/eventfd.h>", "<sys/inotify.h>", "<sys/prctl.h>", "<sys/sendfile.h>",
              "<sys/sysinfo.h>", "<sys/event.h>", "<sys/sysctl.h>"}) {
            if (text.find(sign) != std::string::npos) {
                return std::string(sign);
            }
        }
        return std::string();
    };
    EXPECT_NE(special(kRoot / "osapi/osapi-unix-program.cpp"), "");
    for (const char* room :
         {"base", "libkelvimage", "libimgops", "AE", "host", "check", "tools", "benchmarks"}) {
        for_each_source(room,
                        [&](const fs::path& source) { EXPECT_EQ(special(source), "") << source; });
    }
}
