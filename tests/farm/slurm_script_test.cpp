// The batch script, and what a shell makes of it.
#include "slurm_script.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "chunk_results.h"
#include "shell_words.h"
#include "support/scratch.h"
#include "tools/failure_of.h"

namespace {

namespace fs = std::filesystem;

/// A program in place of the command line, that prints its arguments and ends with a status.
std::string fake_program(const ScratchFolder& folder, int status) {
    const std::string path = folder / "it's a program";
    write_file(path,
               "#!/bin/sh\nfor a in \"$@\"; do printf '[%s]' \"$a\"; done\necho\n"
               "echo 'last words' >&2\nexit " +
                   std::to_string(status) + "\n");
    chmod(path.c_str(), 0755);
    return path;
}

lumivar::ChunkJob job_in(const ScratchFolder& folder, int status) {
    lumivar::ChunkJob job;
    job.program = fake_program(folder, status);
    job.folder = folder.path();
    job.state = folder / "state $HOME";
    job.scene = "a \"shot\".json";
    job.output = "a %04d 'b'.exr";
    job.options = {"--set", "Tint Color=#ffc880", "$(touch oops)"};
    job.chunks = 3;
    fs::create_directory(job.state);
    write_file(job.state + "/chunks.txt", "1-10\n11-20\n21-25x2\n");
    return job;
}

int run_task(const ScratchFolder& folder, const lumivar::ChunkJob& job, const std::string& task) {
    write_file(folder / "script.sh", lumivar::slurm_script(job));
    return std::system(("SLURM_ARRAY_TASK_ID=" + task + " sh " + (folder / "script.sh")).c_str());
}

TEST(SlurmScript, RendersTheFramesOfItsTask) {
    const ScratchFolder folder;
    const lumivar::ChunkJob job = job_in(folder, 0);
    EXPECT_EQ(run_task(folder, job, "2"), 0);
    EXPECT_EQ(read_file(job.state + "/result.2.txt"),
              "[render][a \"shot\".json][-o][a %04d 'b'.exr][--frames][21-25x2][--resume][--json]"
              "[--progress][none][--jobs][1][--set][Tint Color=#ffc880][$(touch oops)]\n0\n");
    EXPECT_FALSE(fs::exists(folder / "oops"));
    EXPECT_FALSE(fs::exists(job.state + "/result.2.part"));
    const auto result = lumivar::chunk_result(job.state, 2);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->succeeded);
}

TEST(SlurmScript, TellsHowItsTaskFailed) {
    const ScratchFolder folder;
    const lumivar::ChunkJob job = job_in(folder, 1);
    EXPECT_NE(run_task(folder, job, "0"), 0);
    const auto result = lumivar::chunk_result(job.state, 0);
    ASSERT_TRUE(result);
    EXPECT_FALSE(result->succeeded);
    EXPECT_EQ(result->why, "last words");
    EXPECT_FALSE(result->missing) << "it did not say which";
    EXPECT_FALSE(result->is_useless);
    lumivar::forget_result(job.state, 0);
    EXPECT_FALSE(lumivar::chunk_result(job.state, 0));
    EXPECT_EQ(lumivar::lost_chunk(job.state, 0, "it is gone").why, "it is gone");
}

TEST(ChunkResult, HasWhatTheRenderTold) {
    const ScratchFolder folder;
    const std::string told =
        R"({"frames":{"asked":4,"rendered":1,"kept":2,"failed":[]},"missing":"9"})";
    write_file(folder / "result.7.txt", told + "\n1\n");
    const auto result = lumivar::chunk_result(folder.path(), 7);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->summaries, std::vector<std::string>{told});
    ASSERT_TRUE(result->missing);
    EXPECT_EQ(*result->missing, std::vector<int>{9});
    EXPECT_EQ(result->why, "exit status 1");
}

TEST(SlurmScript, AsksForWhatATaskNeeds) {
    lumivar::ChunkJob job;
    job.chunks = 5;
    job.needs = {"long", 8, "4G", "1:00:00"};
    const std::string script = lumivar::slurm_script(job);
    for (const char* line :
         {"#SBATCH --array=0-4\n", "#SBATCH --partition=long\n", "#SBATCH --cpus-per-task=8\n",
          "#SBATCH --mem=4G\n", "#SBATCH --time=1:00:00\n"}) {
        EXPECT_NE(script.find(line), std::string::npos) << line;
    }
    job.needs = {};
    EXPECT_EQ(lumivar::slurm_script(job).find("--mem"), std::string::npos);
    job.needs.partition = "two words";
    EXPECT_EQ(failure_of([&] { lumivar::slurm_script(job); }),
              "--partition \"two words\" is no word that Slurm takes");
    job.needs = {};
    job.scene = "a\nb";
    EXPECT_NE(failure_of([&] { lumivar::slurm_script(job); }), "no failure");
}

TEST(ShellWords, KeepEveryCharacter) {
    EXPECT_EQ(lumivar::quoted("it's"), "'it'\\''s'");
    EXPECT_EQ(lumivar::quoted_words({"", "a b", "$x"}), "'' 'a b' '$x'");
}

}  // namespace
