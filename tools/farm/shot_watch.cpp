#include "shot_watch.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <thread>

#include "failure.h"

namespace lumivar {
namespace {

using Clock = std::chrono::steady_clock;

class Watch {
public:
    Watch(const FarmEngine& engine, const std::filesystem::path& state,
          const std::vector<std::vector<int>>& chunks, const WatchRules& rules,
          const WatchEvents& events)
        : engine_(engine),
          state_(state),
          chunks_(chunks),
          rules_(rules),
          events_(events),
          results_(chunks.size()),
          tries_(chunks.size()) {}

    std::vector<ChunkResult> run() {
        std::vector<std::size_t> due(chunks_.size());
        std::iota(due.begin(), due.end(), std::size_t{0});
        while (!due.empty()) {
            hand_over(due);
            due = settle(due);
        }
        return results_;
    }

private:
    void hand_over(const std::vector<std::size_t>& due) {
        for (const std::size_t chunk : due) {
            forget_result(state_, chunk);
            ++tries_[chunk];
        }
        name_ = engine_.submit(due);
        events_.submitted(name_, due.size());
    }

    /// Waits for these chunks; those that are to be tried again.
    std::vector<std::size_t> settle(const std::vector<std::size_t>& due) {
        std::set<std::size_t> open(due.begin(), due.end());
        std::vector<std::size_t> again;
        std::map<std::size_t, Clock::time_point> gone;
        while (!open.empty()) {
            std::this_thread::sleep_for(rules_.between_looks);
            const std::optional<std::set<std::size_t>> active = look();
            for (auto chunk = open.begin(); chunk != open.end();) {
                std::optional<ChunkResult> result = chunk_result(state_, *chunk, chunks_[*chunk]);
                if (!result && active && active->count(*chunk) == 0) {
                    const auto since = gone.try_emplace(*chunk, Clock::now()).first->second;
                    if (Clock::now() - since >= rules_.lateness) {
                        result = lost_chunk(state_, *chunk, chunks_[*chunk]);
                    }
                }
                if (!result) {
                    ++chunk;
                    continue;
                }
                take(*chunk, *result, again);
                chunk = open.erase(chunk);
            }
            events_.looked(settled_, active ? active->size() : 0);
        }
        std::sort(again.begin(), again.end());
        return again;
    }

    std::optional<std::set<std::size_t>> look() {
        try {
            const std::set<std::size_t> active = engine_.active(name_);
            silent_since_.reset();
            return active;
        } catch (const Failure&) {
            silent_since_ = silent_since_.value_or(Clock::now());
            if (Clock::now() - *silent_since_ >= rules_.silence) {
                throw;
            }
            return std::nullopt;
        }
    }

    void take(std::size_t chunk, const ChunkResult& result, std::vector<std::size_t>& again) {
        // Frames of an earlier try count too: this one found them there.
        results_[chunk] = result;
        if (!result.succeeded) {
            events_.failed(chunk, result);
            if (tries_[chunk] < rules_.tries) {
                again.push_back(chunk);
                return;
            }
        }
        ++settled_;
    }

    const FarmEngine& engine_;
    const std::filesystem::path& state_;
    const std::vector<std::vector<int>>& chunks_;
    const WatchRules& rules_;
    const WatchEvents& events_;
    std::vector<ChunkResult> results_;
    std::vector<int> tries_;
    std::string name_;
    std::size_t settled_ = 0;
    std::optional<Clock::time_point> silent_since_;
};

}  // namespace

std::vector<ChunkResult> watch_shot(const FarmEngine& engine, const std::filesystem::path& state,
                                    const std::vector<std::vector<int>>& chunks,
                                    const WatchRules& rules, const WatchEvents& events) {
    return Watch(engine, state, chunks, rules, events).run();
}

}  // namespace lumivar
