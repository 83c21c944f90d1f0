#include <osapi/growth.h>

#include <algorithm>
#include <future>
#include <numeric>
#include <vector>

namespace OSAPI {
namespace {

// Enough for what is kept to be complete, so that the late ones tell of losses alone: twice so
// many.
constexpr std::size_t kRounds = 32;
constexpr int kLateRounds = 8;

/// How much more there is than before, or less.
struct Change {
    std::int64_t heap = 0;
    std::int64_t mapped = 0;
    std::int64_t descriptors = 0;

    /// What there is more of.
    Growth growth() const {
        const auto above = [](std::int64_t amount) { return std::max(amount, std::int64_t{0}); };
        return {static_cast<std::uint64_t>(above(heap)), static_cast<std::uint64_t>(above(mapped)),
                static_cast<int>(above(descriptors))};
    }
};

/// Does it in a thread of its own: what the allocator keeps at hand for a thread, and would count
/// as handed out or serve losses from unseen, goes back when the thread ends.
void do_apart(const std::function<void()>& round) { std::async(std::launch::async, round).get(); }

Growth lesser(const Growth& one, const Growth& other) {
    return {std::min(one.heap, other.heap), std::min(one.mapped, other.mapped),
            std::min(one.descriptors, other.descriptors)};
}

Change plus(const Change& one, const Change& other) {
    return {one.heap + other.heap, one.mapped + other.mapped, one.descriptors + other.descriptors};
}

Change change_by(const std::function<void()>& round) {
    // Outside of what is measured: to count them takes memory for a while.
    const int descriptors = open_descriptors();
    const MemoryInUse before = memory_in_use();
    do_apart(round);
    const MemoryInUse after = memory_in_use();
    return {static_cast<std::int64_t>(after.heap - before.heap),
            static_cast<std::int64_t>(after.mapped - before.mapped),
            open_descriptors() - descriptors};
}

Growth measured(const std::function<void()>& round, std::size_t quiet) {
    memory_in_use();  // it keeps what it needs for the next time
    std::vector<Change> changes;
    changes.reserve(kRounds);
    // Of so many rounds, before the last ones.
    const auto lost_in = [&](std::ptrdiff_t rounds, std::ptrdiff_t before_last) {
        const auto end = changes.end() - before_last;
        return std::accumulate(end - rounds, end, Change{}, plus).growth();
    };
    Growth least;
    while (changes.size() < kRounds) {
        const Change change = change_by(round);
        const Growth now = change.growth();
        // The first round also fills what is kept.
        least = changes.size() <= 1 ? now : lesser(least, now);
        changes.push_back(change);
        if (changes.size() >= quiet && lost_in(static_cast<std::ptrdiff_t>(quiet), 0).none()) {
            return {};
        }
    }
    if (!least.none()) {
        return least;
    }
    // What goes to and fro may end on its way up, but not twice.
    Growth together = lesser(lost_in(kLateRounds, kLateRounds), lost_in(kLateRounds, 0));
    together.rounds = kLateRounds;
    return together;
}

}  // namespace

Growth growth_of(const std::function<void()>& round, std::size_t quiet) {
    // In a new thread too, for which nothing is at hand yet.
    return std::async(std::launch::async, [&] { return measured(round, quiet); }).get();
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
    return text.empty() ? "nothing lost"
                        : text + (growth.rounds == 1
                                      ? " lost each time"
                                      : " lost in " + std::to_string(growth.rounds) + " rounds");
}

}  // namespace OSAPI
