#include "running_command.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

namespace conformance {

struct RunningCommand::Board {
    std::atomic<unsigned> changes = 0;
    std::array<char, 120> name = {};
};

RunningCommand::RunningCommand() : shared_(sizeof(Board), /*shared=*/true) {
    // Between processes only what needs no lock is atomic.
    static_assert(std::atomic<unsigned>::is_always_lock_free);
    new (shared_.addr()) Board;
}

RunningCommand::Board& RunningCommand::board() const {
    return *std::launder(reinterpret_cast<Board*>(shared_.addr()));
}

void RunningCommand::set(std::string_view name) {
    auto& text = board().name;
    const std::string_view part = name.substr(0, text.size() - 1);
    *std::copy(part.begin(), part.end(), text.begin()) = '\0';
    board().changes.fetch_add(1, std::memory_order_release);
}

unsigned RunningCommand::changes() const { return board().changes.load(std::memory_order_acquire); }

std::string RunningCommand::name() const {
    // A module may have written anywhere.
    const auto& text = board().name;
    return {text.begin(), std::find(text.begin(), text.end(), '\0')};
}

}  // namespace conformance
