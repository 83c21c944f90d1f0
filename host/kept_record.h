// Whether a plug-in left a record of the host's as it was.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace host {

/// Remembers a record's bytes, padding included; the record must outlive it.
template <class Record>
class KeptRecord {
    static_assert(std::is_trivially_copyable_v<Record>);

public:
    explicit KeptRecord(Record& record) : record_(record) {
        std::memcpy(bytes_, &record, sizeof record);
    }
    /// Whether it was written to since; it is then as before again.
    bool restore() {
        const auto* const now = reinterpret_cast<const std::byte*>(&record_);
        const bool written = !std::equal(std::begin(bytes_), std::end(bytes_), now);
        std::memcpy(&record_, bytes_, sizeof record_);
        return written;
    }

private:
    Record& record_;
    std::byte bytes_[sizeof(Record)];
};

}  // namespace host
