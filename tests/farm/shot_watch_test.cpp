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
        engine.tasks = [](const std::string&) { return lumivar::FarmTasks(); };
        events.submitted = [](const std::string&, std::size_t) {};
        events.looked = [](std::size_t, const lumivar::FarmTasks&) {};
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
    EXPECT_FALSE(results[1].missing);
    EXPECT_EQ(results[1].why, "its task ended without a word");
}

TEST(ShotWatch, WaitsForTasksThatAreThere) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {""}}};
    int looks = 0;
    farm.engine.tasks = [&](const std::string&) {
        // Far beyond the time that a result may be late.
        if (++looks == 60) {
            write_file(farm.folder / lumivar::result_file(0), "\n0\n");
        }
        lumivar::FarmTasks tasks;
        (looks % 2 == 0 ? tasks.waiting : tasks.running).insert(0);
        return tasks;
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    EXPECT_EQ(looks, 60);
}

TEST(ShotWatch, BearsAnEngineThatDoesNotAnswerForAWhile) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {""}}};
    int looks = 0;
    farm.engine.tasks = [&](const std::string&) -> lumivar::FarmTasks {
        if (++looks < 4) {
            throw lumivar::Failure("Slurm does not answer");
        }
        write_file(farm.folder / lumivar::result_file(0), "\n0\n");
        return {};
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    farm.tries.clear();
    farm.engine.tasks = [](const std::string&) -> lumivar::FarmTasks {
        throw lumivar::Failure("Slurm does not answer");
    };
    const auto results = farm.watch();
    EXPECT_FALSE(results[0].succeeded);
    EXPECT_EQ(results[0].why, "Slurm does not answer");
}

TEST(ShotWatch, WaitsForAResultThatIsShownLate) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {""}}};
    farm.rules.lateness = milliseconds(60000);
    int looks = 0;
    farm.engine.tasks = [&](const std::string&) {
        // The task is gone from the first look on.
        if (++looks == 30) {
            write_file(farm.folder / lumivar::result_file(0), "\n0\n");
        }
        return lumivar::FarmTasks();
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    EXPECT_EQ(farm.submitted.size(), 1U);
}

TEST(ShotWatch, LeavesCancelledChunksAlone) {
    Farm farm;
    farm.rules.lateness = milliseconds(60000);  // a cancelled one is not waited for
    farm.outcomes = {{0, {"\n0\n"}}, {1, {""}}, {2, {"\n143\n"}}};
    farm.engine.tasks = [](const std::string&) {
        lumivar::FarmTasks tasks;
        tasks.cancelled = {1, 2};
        return tasks;
    };
    const auto results = farm.watch();
    EXPECT_EQ(farm.submitted.size(), 1U);
    EXPECT_TRUE(results[0].succeeded);
    EXPECT_EQ(results[1].why, "its task was cancelled");
    EXPECT_EQ(results[2].why, "exit status 143");
}

TEST(ShotWatch, DoesNotTryAgainWhatCannotBeDone) {
    Farm farm;
    farm.outcomes = {{0, {"\n0\n"}}, {1, {"2\n"}}, {2, {"\n0\n"}}};
    const auto results = farm.watch();
    EXPECT_EQ(farm.submitted.size(), 1U);
    EXPECT_FALSE(results[1].succeeded);
    EXPECT_TRUE(results[1].is_useless);
}

TEST(ShotWatch, KeepsWhatEachTryTold) {
    Farm farm;
    farm.chunks = {{1, 2}};
    const std::string first = R"({"frames":{"rendered":1},"missing":"2"})";
    const std::string second = R"({"frames":{"rendered":1},"missing":""})";
    farm.outcomes = {{0, {first + "\n1\n", "", second + "\n0\n"}}};
    EXPECT_EQ(farm.watch()[0].summaries, (std::vector<std::string>{first, second}));
}

TEST(ShotWatch, BearsThatAChunkIsNotTakenAgainAtOnce) {
    Farm farm;
    farm.chunks = {{1}};
    farm.outcomes = {{0, {"\n1\n", "\n0\n"}}};
    farm.rules.silence = milliseconds(60000);
    const auto submit = farm.engine.submit;
    int calls = 0;
    farm.engine.submit = [&](const std::vector<std::size_t>& due) {
        if (++calls == 2 || calls == 3) {
            throw lumivar::Failure("Slurm did not take the job");
        }
        return submit(due);
    };
    EXPECT_TRUE(farm.watch()[0].succeeded);
    EXPECT_EQ(calls, 4);
    // Nothing is under way before the first: the user is told at once.
    farm.tries.clear();
    calls = 1;
    EXPECT_THROW(farm.watch(), lumivar::Failure);
    EXPECT_EQ(calls, 2);
    // What was tried once is not lost for a job that is not taken any more.
    farm.tries.clear();
    farm.rules.silence = milliseconds(5);
    calls = 0;
    farm.engine.submit = [&](const std::vector<std::size_t>& due) {
        if (++calls > 1) {
            throw lumivar::Failure("Slurm did not take the job");
        }
        return submit(due);
    };
    EXPECT_EQ(farm.watch()[0].why, "Slurm did not take the job");
}

}  // namespace
