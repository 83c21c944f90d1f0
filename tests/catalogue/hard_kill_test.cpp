// Whoever writes a database may be killed at any moment, without a chance to clean up: then the old
// database is there, whole, or the new one is, and the next run removes what was left.
#include <gtest/gtest.h>
#include <libimgops/star_database_name.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/import_support.h"
#include "support/random_numbers.h"
#include "support/rounds.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using Names = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
using Duration = std::chrono::duration<double>;

constexpr const char* kOld = "the old database, of which no byte may change";

/// A command that writes the database OUT from the tables a.csv and b.csv.
struct Writer {
    const char* name;
    Names arguments;  ///< before "-o OUT"
};

void PrintTo(const Writer& writer, std::ostream* out) { *out << writer.name; }

/// A table of more rows than are written at once.
std::string table_text(unsigned seed) {
    RandomNumbers random(seed);
    std::string text = "ra_deg,dec_deg,vmag\n";
    constexpr int kRows = 9000;
    for (int row = 0; row < kRows; ++row) {
        text += std::to_string(random.whole(0, 359)) + "." + std::to_string(random.whole(0, 999)) +
                "," + std::to_string(random.whole(-89, 89)) + "," +
                std::to_string(random.whole(1, 15)) + "\n";
    }
    return text;
}

class HardKill : public testing::TestWithParam<Writer> {
protected:
    HardKill() {
        write_file(folder_ / "a.csv", table_text(1));
        write_file(folder_ / "b.csv", table_text(2));
        // The runs are copies of this process: what it has made once they need not make again.
        KeepingWatcher watcher;
        lumivar::import_catalogues({folder_ / "a.csv"}, out_, {}, watcher);
        run_to_its_end();
        new_ = read_file(out_);
        for (int i = 0; i < 3; ++i) {
            const Clock::time_point start = Clock::now();
            run_to_its_end();
            duration_ = std::min(duration_, Duration(Clock::now() - start));
        }
    }

    Names arguments() const {
        Names words = {"catalog"};
        for (const std::string& word : GetParam().arguments) {
            words.push_back(word.ends_with(".csv") ? folder_ / word : word);
        }
        words.insert(words.end(), {"-o", out_});
        return words;
    }
    void run_to_its_end() const {
        const ToolResult result = run_tool(arguments());
        ASSERT_EQ(result.code, 0) << result.err;
    }
    /// Kills a run, either at a moment of its whole length or, where the moments are fewer and
    /// matter more, soon after its unfinished file is there.
    ToolResult killed_run(RandomNumbers& random, bool late) const {
        ToolProcess run(arguments());
        const Clock::time_point start = Clock::now();
        double wait = random.between(0.0, 1.2 * duration_.count());
        if (late) {
            const std::string unfinished =
                folder_ / (".lumivar-work-" + std::to_string(run.id()) + "-0/content");
            while (!std::filesystem::exists(unfinished) && Clock::now() - start < 3 * duration_) {
            }
            wait = Duration(Clock::now() - start).count() +
                   random.between(0.0, 0.4 * duration_.count());
        }
        // Not by sleeping, which is too coarse.
        while (Duration(Clock::now() - start).count() < wait) {
        }
        run.send(SIGKILL);
        return run.wait();
    }

    ScratchFolder folder_;
    const std::string out_ = folder_ / "out.stars";
    std::string new_;
    Duration duration_ = std::chrono::hours(1);
};

TEST_P(HardKill, LeavesTheOldDatabaseOrTheNewOneAndTheNextRunCleansUp) {
    RandomNumbers random(20260101);
    int kills = 0;
    int orphans = 0;
    int kept = 0;
    const int rounds = support::rounds(50);
    for (int round = 0; round < rounds; ++round) {
        write_file(out_, kOld);
        const ToolResult result = killed_run(random, round % 2 == 1);
        kills += result.signal == SIGKILL ? 1 : 0;
        const std::string found = read_file(out_);
        kept += found == kOld ? 1 : 0;
        ASSERT_TRUE(found == kOld || found == new_)
            << "round " << round << ": " << found.size() << " bytes, neither old nor new";
        ASSERT_TRUE(found == new_ || result.signal == SIGKILL) << "it ended well without a result";
        const Names names = names_in(folder_.path());
        const auto databases = std::count_if(names.begin(), names.end(), [](const auto& name) {
            return is_star_database_name(name.c_str());
        });
        EXPECT_EQ(databases, 1) << "the plug-in would take another file for a database";
        orphans += names.size() > 3 ? 1 : 0;
        // What earlier rounds have left is gone: of this one alone there may be two folders.
        EXPECT_LE(names.size(), 5U) << "round " << round;
    }
    // Or nothing was tried.
    EXPECT_GT(kills, rounds / 3);
    EXPECT_GT(orphans, 0);
    EXPECT_GT(kept, 0);
    run_to_its_end();
    EXPECT_EQ(names_in(folder_.path()), (Names{"a.csv", "b.csv", "out.stars"}));
    EXPECT_EQ(read_file(out_), new_);
}

INSTANTIATE_TEST_SUITE_P(Writers, HardKill,
                         testing::Values(Writer{"Import", {"import", "a.csv", "b.csv"}},
                                         Writer{"ImportWithDuplicates",
                                                {"import", "a.csv", "b.csv", "--dedupe", "60"}}),
                         [](const auto& writer) { return std::string(writer.param.name); });

}  // namespace
