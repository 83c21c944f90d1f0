// A short text in memory that a process shares with its children.
#pragma once

#include <osapi/mappings.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>
#include <string>
#include <string_view>

namespace OSAPI {

/// Written by a child, read by its parent: what it holds is there after a crash too, and writing it
/// wakes nobody. Made before the fork. One thread may write at a time.
class SharedText {
public:
    /// Throws "mmap(anonymous): ...".
    SharedText() : shared_(sizeof(Board), /*shared=*/true) {
        // Between processes only what needs no lock is atomic.
        static_assert(std::atomic<unsigned>::is_always_lock_free);
        new (shared_.addr()) Board;
    }

    /// Writes as much of the text as has room: at least 100 bytes.
    void set(std::string_view text) {
        auto& held = board().text;
        const std::string_view part = text.substr(0, held.size() - 1);
        *std::copy(part.begin(), part.end(), held.begin()) = '\0';
        board().changes.fetch_add(1, std::memory_order_release);
    }
    /// How often it was set; can be asked at any time. Wraps.
    unsigned changes() const { return board().changes.load(std::memory_order_acquire); }
    /// To be asked when the writer has ended.
    std::string text() const {
        // A writer that went wrong may have written over the terminator.
        const auto& held = board().text;
        return {held.begin(), std::find(held.begin(), held.end(), '\0')};
    }

private:
    struct Board {
        std::atomic<unsigned> changes = 0;
        std::array<char, 120> text = {};
    };
    Board& board() const { return *std::launder(reinterpret_cast<Board*>(shared_.addr())); }

    AnonMapping shared_;
};

}  // namespace OSAPI
