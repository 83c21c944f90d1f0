// The accounts of an import: what became of every row.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tables/row_fault.h"

namespace lumivar {

class Account {
public:
    void keep() { ++kept_; }
    /// `place` is where the row stands: kept for the first one of each kind.
    void skip(FaultKind kind, const std::string& place);

    std::uint64_t read() const { return kept_ + skipped_; }
    std::uint64_t kept() const { return kept_; }
    std::uint64_t skipped() const { return skipped_; }
    std::uint64_t skipped(FaultKind kind) const;
    /// Of those the ones that somebody could mend.
    std::uint64_t faulty() const { return faulty_; }

    /// "12: no magnitude (first: FILE:8)" for each reason, with `before` before and `between` them;
    /// nothing when every row was kept.
    std::string reasons(const char* before, const char* between) const;

private:
    struct Entry {
        std::uint64_t rows = 0;
        std::string first;
    };
    std::array<Entry, kFaultKinds> entries_;
    std::uint64_t kept_ = 0;
    std::uint64_t skipped_ = 0;
    std::uint64_t faulty_ = 0;
};

}  // namespace lumivar
