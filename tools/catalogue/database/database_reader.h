// Reads the records of a star database in their order, a block at a time.
//
// It does not map the file: of a database of any size only one block is in memory.
#pragma once

#include <libimgops/star_record.h>
#include <osapi/files.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace lumivar {

class DatabaseReader {
public:
    /// Reads the header. Throws `Failure` when the file is no star database or cannot be read.
    explicit DatabaseReader(const std::filesystem::path& path);

    /// 1, or 2 where the distances count.
    int version() const { return version_; }
    /// The file's size.
    std::uint64_t bytes() const { return bytes_; }
    /// Whole records after the header. A file that is cut within its header has none.
    std::uint64_t stars() const { return bytes_ < sizeof(star) ? 0 : bytes_ / sizeof(star) - 1; }
    /// Bytes after the last whole record, which no reader looks at. Where the header is cut short
    /// it is all of the file.
    std::uint64_t trailing_bytes() const { return bytes_ % sizeof(star); }

    /// The records that follow, little-endian as they lie in the file; none at the end. They stay
    /// until the next call. Throws `Failure`, also when the file has become shorter meanwhile.
    std::span<const star> next_block();

private:
    std::string path_;
    int version_;
    OSAPI::FileDescriptor file_;
    std::uint64_t bytes_ = 0;
    std::uint64_t left_ = 0;  ///< stars not yet handed out
    std::vector<star> block_;
};

}  // namespace lumivar
