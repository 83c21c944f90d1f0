// Writes a star database, which appears whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "atomic_file.h"
#include "database/star_sink.h"

namespace lumivar {

class DatabaseWriter : public StarSink {
public:
    /// `version`: that of the file, 1 or 2. Throws `Failure` as `AtomicFile` does.
    explicit DatabaseWriter(const std::filesystem::path& path, int version = kLatestStarVersion);

    /// Appends a star. Throws `Failure` when the disk is full, or the database: a reader counts
    /// records, the header among them, in 32 bits.
    void add(const CatalogueStar& star, unsigned input) override;
    /// Appends a record as it is, but for its reserved byte, which becomes 0.
    void add_record(const star& record);
    /// How many stars it holds.
    std::uint64_t stars() const { return stars_; }
    /// Puts the database in its place. Throws `Failure`; call it once, last.
    void publish();

private:
    star& next_record();
    void flush();

    std::string shown_;  ///< the path as the user wrote it
    AtomicFile file_;
    std::vector<star> block_;
    std::size_t used_ = 0;  ///< records of the block that wait to be written
    std::uint64_t stars_ = 0;
};

}  // namespace lumivar
