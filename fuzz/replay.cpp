// Gives a harness every file of the folders named, once: what a fuzzer has found stays tried. Says
// how many there were, and fails when a folder has none.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "harness.h"
#include "support/scratch.h"

namespace {

std::vector<std::string> files_in(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> folders(argv + 1, argv + argc);
    if (folders.empty()) {
        std::fputs("usage: replay FOLDER...\n", stderr);
        return 2;
    }
    for (const std::string& folder : folders) {
        const std::vector<std::string> files = files_in(folder);
        for (const std::string& file : files) {
            // Standard output shows which file was tried last when the program ends within.
            std::printf("%s\n", file.c_str());
            std::fflush(stdout);
            // A block of just this size: a sanitizer sees what is read behind it.
            const std::string bytes = read_file(file);
            const std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(block.data(), block.size());
        }
        std::printf("%s: %zu files\n", folder.c_str(), files.size());
        if (files.empty()) {
            return 1;
        }
    }
    return 0;
}
