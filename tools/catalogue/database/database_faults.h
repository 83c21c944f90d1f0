// What is wrong with a star database: its file, and values that no star can have.
//
// A frame is drawn of any database whose first bytes are right; such values draw as garbage, or as
// nothing.
#pragma once

#include <libimgops/star_record.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "database/catalogue_star.h"
#include "database/database_reader.h"

namespace lumivar {

/// A cut header, bytes behind the last whole record, more stars than a reader can count: one line
/// each.
std::vector<std::string> file_faults(const DatabaseReader& database);

/// Counts the faults of stars, each kind by itself.
class StarFaults {
public:
    /// `version`: that of the database. The distances of version 1 are never read, so they may be
    /// anything.
    explicit StarFaults(int version);

    /// The next stars.
    void add(std::span<const star> records);
    /// "2 stars with a lon outside 0 to 360 degrees (first: star 6)": a line for each kind that was
    /// met. The first star is star 1.
    std::vector<std::string> lines() const;

private:
    /// One kind of fault.
    struct Kind {
        const char* what;
        bool (*is_met)(const CatalogueStar& star);
        std::uint64_t stars = 0;
        std::uint64_t first = 0;
    };

    void note(const CatalogueStar& star, std::uint64_t number);

    bool has_distances_;
    std::uint64_t stars_ = 0;
    std::vector<Kind> kinds_;
};

/// All faults of the database, first those of the file; none for a good one. Throws `Failure` when
/// it is no star database or cannot be read.
std::vector<std::string> database_faults(const std::filesystem::path& path);

}  // namespace lumivar
