#include "shot_watch.h"

#include <gtest/gtest.h>

#include <map>

#include "failure.h"
#include "slurm_script.h"
#include "support/scratch.h"

namespace {

using std::chrono::milliseconds;

/// An engine whose tasks do at once what is written down for them.
class Farm {
public:
    Farm() {
        engine.submit = [this](const std::vector<std::size_t>& due) {
            submitted.push_back(due);
            for (const std::size_t chunk : due) {
                const std::string result = outcomes[chunk][tries[chunk]++];
                if (!result.empty()) {
                    write_file(folder / lumivar::result_file(chunk), result);
                }
            }
            return std::to_string(submitted.size());
        };
        engine.active = [](const std::string&) { return std::set<std::size_t>(); };
        events.submitted = [](const std::string&, std::size_t) {};
        events.looked = [](std::size_t, std::size_t) {};
        events.failed = [this](std::size_t chunk, const lumivar::ChunkResult&) {
            failed.push_back(chunk);
        };
        rules.between_looks = milliseconds(1);
        rules.lateness = milliseconds(20);
        rules.silence = milliseconds(20);
    }
    std::vector<lumivar::ChunkResult> watch() {
        return lumivar::watch_shot(engine, folder.path(), chunks, rules, events);
    }

    ScratchFolder folder;
    lumivar::FarmEngine engine;
    lumivar::WatchEvents events;
    lumivar::WatchRules rules;
    std::vector<std::vector<int>> chunks = {{1, 2}, {3, 4}, {5}};
    /// Of each chunk's tries; empty: the task is lost.
    std::map<std::size_t, std::vector<std::string>> outcomes;
    std::map<std::size_t, std::size_t> tries;
    std::vector<std::vector<std::size_t>> submitted;
    std::vector<std::size_t> failed;
};

using Rounds = std::vector<std::vector<std::size_t>>;

TEST(ShotWatch, HandsOverAgainWhatFailedOrWasLost) {
    Farm farm;
    farm.outcomes = {{0, {"\n0\n"}}, {1, {"", "\n1\n", "\n0\n"}}, {2, {"\n1\n", "\n0\n"}}};
    const auto results = farm.watch();
    EXPECT_EQ(farm.submitted, (Rounds{{0, 1, 2}, {1, 2}, {1}}));
    for (const lumivar::ChunkResult& result : results) {
        EXPECT_TRUE(result.succeeded);
    }
    EXPECT_EQ(farm.failed.size(), 3U);
}

TEST(ShotWatch, GivesUpAfterTheTries) {
    Farm farm;
    farm.rules.tries = 2;
    farm.outcomes = {{0, {"\n0\n"}}, {1, {"", ""}}, {2, {"\n0\n"}}};
    const auto results = farm.watch();
    EXPECT_EQ(farm.submitted, (Rounds{{0, 1, 2}, {1}}));
    EXPECT_FALSE(results[1].succeeded);
    EXPECT_EQ(results[1].missing, (std::vector<int>{3, 4}));
    EXPECT_EQ(results[1].why, "its task ended without a word");
}

TEST(ShotWatch, WaitsForTasksThatAreThere) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {""}}};
    int looks = 0;
    farm.engine.active = [&](const std::string&) {
        // Far beyond the time that a result may be late.
        if (++looks == 60) {
            write_file(farm.folder / lumivar::result_file(0), "\n0\n");
        }
        return std::set<std::size_t>{0};
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    EXPECT_EQ(looks, 60);
}

TEST(ShotWatch, BearsAnEngineThatDoesNotAnswerForAWhile) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {""}}};
    int looks = 0;
    farm.engine.active = [&](const std::string&) -> std::set<std::size_t> {
        if (++looks < 4) {
            throw lumivar::Failure("Slurm does not answer");
        }
        write_file(farm.folder / lumivar::result_file(0), "\n0\n");
        return {};
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    farm.tries.clear();
    farm.engine.active = [](const std::string&) -> std::set<std::size_t> {
        throw lumivar::Failure("Slurm does not answer");
    };
    EXPECT_THROW(farm.watch(), lumivar::Failure);
}

}  // namespace
