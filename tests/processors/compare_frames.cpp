// usage: compare_frames FOLDER FOLDER
// Judges the frames that two processors wrote; ends with 0 when they agree.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>

#include "agreement.h"

namespace {

namespace fs = std::filesystem;

std::vector<processors::NamedFrame> frames_in(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<processors::NamedFrame> frames;
    for (const fs::path& path : paths) {
        frames.push_back({path.stem().string(), processors::read_frame(path)});
    }
    return frames;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fputs("usage: compare_frames FOLDER FOLDER\n", stderr);
        return 2;
    }
    try {
        const processors::Agreement agreement =
            processors::compare_frames(frames_in(arguments[1]), frames_in(arguments[2]));
        for (const std::string& line : agreement.report) {
            std::printf("%s\n", line.c_str());
        }
        return agreement.passed ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "compare_frames: %s\n", error.what());
        return 2;
    }
}
