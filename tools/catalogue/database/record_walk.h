// All records of a database, one after the other, with progress shown.
#pragma once

#include <cstdint>
#include <span>

#include "database/database_reader.h"
#include "progress.h"

namespace lumivar {

/// Calls `use` with all records, some thousand at a time. `before`: stars of other databases that
/// the progress has counted already. Throws `Failure` as the reader does, and what `use` throws.
template <class Use>
void for_each_block(DatabaseReader& database, Progress& progress, std::uint64_t before, Use use) {
    for (auto block = database.next_block(); !block.empty(); block = database.next_block()) {
        use(block);
        before += block.size();
        progress.update(before);
    }
}

/// Calls `use` with each record.
template <class Use>
void for_each_record(DatabaseReader& database, Progress& progress, std::uint64_t before, Use use) {
    for_each_block(database, progress, before, [&use](std::span<const star> block) {
        for (const star& record : block) {
            use(record);
        }
    });
}

/// The same for a database alone.
template <class Use>
void for_each_record(DatabaseReader& database, Use use) {
    Progress progress(database.stars(), "stars");
    for_each_record(database, progress, 0, use);
}

}  // namespace lumivar
