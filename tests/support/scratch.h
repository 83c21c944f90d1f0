// A folder of its own for each test, and the process's open descriptors.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>

#ifndef _WIN32
#include <dirent.h>
#endif

/// A new empty folder, removed with all it holds when the object dies.
class ScratchFolder {
public:
    ScratchFolder() {
        const std::filesystem::path root = std::filesystem::temp_directory_path();
        std::random_device random;
        do {
            path_ = (root / ("lumivar-test-" + std::to_string(random()))).string();
        } while (!std::filesystem::create_directory(path_));
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }
    /// The path of `name` in the folder.
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out << bytes;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(in), {}};
}

#ifndef _WIN32
/// How many descriptors the process has open.
inline int open_descriptors() {
    DIR* table = opendir("/dev/fd");
    if (table == nullptr) {
        throw std::runtime_error("no descriptor table");
    }
    int count = 0;
    while (readdir(table) != nullptr) {
        ++count;
    }
    closedir(table);
    return count;
}
#endif
