#include "growth.h"

#include <algorithm>
#include <future>

namespace conformance {
namespace {

// Enough for what is kept to be complete.
constexpr int kRounds = 32;

std::uint64_t above(std::uint64_t after, std::uint64_t before) {
    return after > before ? after - before : 0;
}

/// Does it in a thread of its own: what the allocator keeps at hand for a thread, and would count
/// as handed out or serve losses from unseen, goes back when the thread ends.
void do_apart(const std::function<void()>& round) { std::async(std::launch::async, round).get(); }

Growth measured(const std::function<void()>& round) {
    do_apart(round);
    OSAPI::memory_in_use();  // it keeps what it needs for the next time
    Growth least;
    for (int i = 0; i < kRounds; ++i) {
        const OSAPI::MemoryInUse before = OSAPI::memory_in_use();
        const int descriptors = OSAPI::open_descriptors();
        do_apart(round);
        const OSAPI::MemoryInUse after = OSAPI::memory_in_use();
        const Growth now = {above(after.heap, before.heap), above(after.mapped, before.mapped),
                            std::max(0, OSAPI::open_descriptors() - descriptors)};
        least = i == 0 ? now
                       : Growth{std::min(least.heap, now.heap), std::min(least.mapped, now.mapped),
                                std::min(least.descriptors, now.descriptors)};
        if (least.none()) {
            break;
        }
    }
    return least;
}

}  // namespace

Growth least_growth(const std::function<void()>& round) {
    // In a new thread too, for which nothing is at hand yet.
    return std::async(std::launch::async, [&] { return measured(round); }).get();
}

std::string text_of(const Growth& growth) {
    std::string text;
    const auto add = [&](std::uint64_t amount, const char* what) {
        if (amount != 0) {
            text += (text.empty() ? "" : " and ") + std::to_string(amount) + " " + what;
        }
    };
    add(growth.heap, "bytes of heap");
    add(growth.mapped, "bytes of address space");
    add(static_cast<std::uint64_t>(growth.descriptors), "file descriptors");
    return text.empty() ? "nothing lost" : text + " lost each time";
}

}  // namespace conformance
