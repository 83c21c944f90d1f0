// Values that get back what they held before.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

namespace host {

/// Gives a variable another value for as long as this object lives.
template <class Value>
class Exchanged {
public:
    Exchanged(Value& variable, Value value)
        : variable_(variable), before_(std::exchange(variable, std::move(value))) {}
    ~Exchanged() { variable_ = std::move(before_); }
    Exchanged(const Exchanged&) = delete;
    Exchanged& operator=(const Exchanged&) = delete;

private:
    Value& variable_;
    Value before_;
};

/// Remembers a record's bytes, padding included; the record must outlive it.
template <class Record>
class KeptRecord {
    static_assert(std::is_trivially_copyable_v<Record>);

public:
    explicit KeptRecord(Record& record) : record_(record) {
        std::memcpy(bytes_, &record, sizeof record);
    }
    /// Restores the bytes; returns whether they had changed.
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
