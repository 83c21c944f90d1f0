// Sorts more records than fit into memory.
//
// Records are collected in memory until it is full, then sorted and written to a file: a run. At
// the end the runs are merged, in several passes where there are many of them. Where all records
// fit into memory no file is made.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "database/spill_file.h"
#include "working_folder.h"

namespace lumivar {

/// What a sort may use. Tests give less, so that few records make many runs and several passes.
struct SortLimits {
    std::size_t bytes_in_memory = std::size_t{96} << 20U;
    std::size_t runs_at_once = 128;  ///< that are merged together, 2 at least
};

/// Sorts records of one size, whatever they are, by numbers that come with them.
class RecordSorter {
public:
    /// Runs lie in a hidden folder beside `output`, which the records are sorted for.
    RecordSorter(std::size_t record_bytes, const std::filesystem::path& output,
                 const SortLimits& limits);
    ~RecordSorter();
    RecordSorter(const RecordSorter&) = delete;
    RecordSorter& operator=(const RecordSorter&) = delete;

    /// Adds one; not after `next` has been called. Throws `Failure` "cannot write OUTPUT: ...".
    void add(std::uint64_t key, const void* record);
    /// The records by rising keys, those of equal keys as they were added; null at the end. The
    /// bytes stay until the next call. Throws `Failure` as `add` does.
    const std::byte* next();

private:
    class Merge;
    struct Run {
        std::uint64_t offset;   ///< in the file
        std::uint64_t entries;  ///< a key and its record each
    };
    struct Place {
        std::uint64_t key;
        std::uint32_t index;  ///< among the entries in memory
    };

    const std::byte* entry(std::size_t index) const;
    void sort_places();
    void write_run();
    void start_reading();
    void merge_runs();
    std::unique_ptr<SpillFile> new_file();

    std::size_t entry_bytes_;
    SortLimits limits_;
    std::filesystem::path output_;
    std::size_t most_entries_;
    std::vector<std::byte> entries_;
    std::vector<Place> places_;
    std::vector<Place> scratch_;
    std::size_t next_place_ = 0;
    std::unique_ptr<WorkingFolder> folder_;
    int files_ = 0;
    std::unique_ptr<SpillFile> file_;
    std::vector<Run> runs_;
    std::unique_ptr<Merge> merge_;
    bool reading_ = false;
};

/// The same for records of one type.
template <class Record>
class ExternalSort {
    static_assert(std::is_trivially_copyable_v<Record>);

public:
    explicit ExternalSort(const std::filesystem::path& output, const SortLimits& limits = {})
        : sorter_(sizeof(Record), output, limits) {}

    void add(std::uint64_t key, const Record& record) { sorter_.add(key, &record); }
    /// Puts the next record into `record`; false at the end.
    bool next(Record& record) {
        const std::byte* bytes = sorter_.next();
        if (bytes == nullptr) {
            return false;
        }
        std::memcpy(&record, bytes, sizeof record);
        return true;
    }

private:
    RecordSorter sorter_;
};

/// A key that rises as the number does. Minus infinity comes first, plus infinity last but for
/// values that are not numbers, which come before all or after all by their sign; -0 and 0 are
/// equal.
inline std::uint64_t rising_key(double number) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;
    const auto bits = std::bit_cast<std::uint64_t>(number == 0.0 ? 0.0 : number);
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

}  // namespace lumivar
