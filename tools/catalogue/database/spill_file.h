// A file for what does not fit into memory; it has no name, so that nothing of it outlives the
// program.
#pragma once

#include <osapi/files.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace lumivar {

class SpillFile {
public:
    /// Makes the file at `path`, which is free, and takes its name away at once. `complaint`: how
    /// its failures begin, such as "cannot write a.stars". Throws `Failure`.
    SpillFile(const std::filesystem::path& path, std::string complaint);

    /// Throw `Failure`.
    void append(std::span<const std::byte> bytes);
    void read(std::uint64_t offset, std::span<std::byte> bytes);
    std::uint64_t bytes() const { return bytes_; }

private:
    std::string complaint_;
    OSAPI::FileDescriptor file_;
    std::uint64_t bytes_ = 0;
};

}  // namespace lumivar
