// The star catalogue: an array of 32-byte records, handed out in place. The records themselves are
// never validated.
#pragma once

#include <base/words.h>
#include <libimgops/star_record.h>

/// A source of records with a cursor, which stands on the header at first. One user at a time.
///
/// Per frame: `is_valid` once, `next` for each further record, `reset` at the end. Nobody rewinds
/// implicitly, so a frame that ends early makes the next `is_valid` fail until `reset` is called.
class StarInput {
public:
    StarInput() = default;
    StarInput(const StarInput&) = delete;
    StarInput& operator=(const StarInput&) = delete;
    /// May throw: a source may own a mapping.
    virtual ~StarInput() noexcept(false);

    /// The current record; advances to the one after it. Not checked against the end: call it
    /// `nstars` times at most after a `reset`. The record lives as long as the source.
    virtual const star* next() = 0;
    /// Back to the header. The same records come again, at the same places in memory.
    virtual void reset() = 0;
    /// The current record and those behind it that lie in a row in memory: `count` says how many
    /// are wanted, at least 1, and becomes how many there are, which `next` has then handed out.
    virtual const star* next_in_row(u32& count);

    /// Records in the source, the header included.
    u32 nstars() const { return n; }
    /// Whether `is_valid` has met a version-2 header, whose records have distances.
    bool depth_valid() const { return depth_ok; }
    /// Takes the next record as header and returns whether it is one.
    bool is_valid();

protected:
    u32 n = 0;
    bool depth_ok = false;
};
