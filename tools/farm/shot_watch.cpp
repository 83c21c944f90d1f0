#include "shot_watch.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "failure.h"

namespace lumivar {
namespace {

using Clock = std::chrono::steady_clock;

bool is_there(const FarmTasks& tasks, std::size_t chunk) {
    return tasks.waiting.count(chunk) != 0 || tasks.running.count(chunk) != 0;
}

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
        open_ = {due.begin(), due.end()};
        try {
            while (!due.empty()) {
                hand_over(due);
                due = settle(due);
            }
        } catch (const Failure& failure) {
            if (name_.empty()) {
                throw;  // nothing is under way
            }
            give_up(failure.what());
        }
        return results_;
    }

private:
    void hand_over(const std::vector<std::size_t>& due) {
        for (const std::size_t chunk : due) {
            forget_result(state_, chunk);
            ++tries_[chunk];
        }
        // A job that is under way is not lost for an answer that stays away once.
        const auto start = Clock::now();
        for (bool taken = false; !taken;) {
            try {
                name_ = engine_.submit(due);
                taken = true;
            } catch (const Failure&) {
                if (name_.empty() || Clock::now() - start >= rules_.silence) {
                    throw;
                }
                std::this_thread::sleep_for(rules_.between_looks);
            }
        }
        events_.submitted(name_, due.size());
    }

    /// Waits for these chunks; those that are to be tried again.
    std::vector<std::size_t> settle(const std::vector<std::size_t>& due) {
        std::set<std::size_t> out(due.begin(), due.end());
        std::vector<std::size_t> again;
        std::map<std::size_t, Clock::time_point> gone;
        while (!out.empty()) {
            std::this_thread::sleep_for(rules_.between_looks);
            const std::optional<FarmTasks> tasks = look();
            for (auto chunk = out.begin(); chunk != out.end();) {
                const bool cancelled = tasks && tasks->cancelled.count(*chunk) != 0;
                std::optional<ChunkResult> result = chunk_result(state_, *chunk);
                if (!result && cancelled) {
                    result = lost_chunk(state_, *chunk, "its task was cancelled");
                } else if (tasks && is_there(*tasks, *chunk)) {
                    gone.erase(*chunk);  // the engine itself may start it again
                } else if (!result && tasks) {
                    const auto since = gone.try_emplace(*chunk, Clock::now()).first->second;
                    if (Clock::now() - since >= rules_.lateness) {
                        result = lost_chunk(state_, *chunk, "its task ended without a word");
                    }
                }
                if (!result) {
                    ++chunk;
                    continue;
                }
                take(*chunk, std::move(*result), cancelled, again);
                chunk = out.erase(chunk);
            }
            if (tasks) {
                events_.looked(chunks_.size() - open_.size(), *tasks);
            }
        }
        std::sort(again.begin(), again.end());
        return again;
    }

    std::optional<FarmTasks> look() {
        try {
            FarmTasks tasks = engine_.tasks(name_);
            silent_since_.reset();
            return tasks;
        } catch (const Failure&) {
            silent_since_ = silent_since_.value_or(Clock::now());
            if (Clock::now() - *silent_since_ >= rules_.silence) {
                throw;
            }
            return std::nullopt;
        }
    }

    void take(std::size_t chunk, ChunkResult result, bool cancelled,
              std::vector<std::size_t>& again) {
        std::vector<std::string> summaries = std::move(results_[chunk].summaries);
        summaries.insert(summaries.end(), result.summaries.begin(), result.summaries.end());
        result.summaries = std::move(summaries);
        results_[chunk] = std::move(result);
        if (!results_[chunk].succeeded) {
            events_.failed(chunk, results_[chunk]);
            if (!cancelled && !results_[chunk].is_useless && tries_[chunk] < rules_.tries) {
                again.push_back(chunk);
                return;
            }
        }
        open_.erase(chunk);
    }

    void give_up(const std::string& why) {
        for (const std::size_t chunk : open_) {
            results_[chunk].missing.reset();
            results_[chunk].why = why;
        }
    }

    const FarmEngine& engine_;
    const std::filesystem::path& state_;
    const std::vector<std::vector<int>>& chunks_;
    const WatchRules& rules_;
    const WatchEvents& events_;
    std::vector<ChunkResult> results_;
    std::vector<int> tries_;
    std::string name_;
    std::set<std::size_t> open_;  ///< chunks that are not settled
    std::optional<Clock::time_point> silent_since_;
};

}  // namespace

std::vector<ChunkResult> watch_shot(const FarmEngine& engine, const std::filesystem::path& state,
                                    const std::vector<std::vector<int>>& chunks,
                                    const WatchRules& rules, const WatchEvents& events) {
    return Watch(engine, state, chunks, rules, events).run();
}

}  // namespace lumivar
