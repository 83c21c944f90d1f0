// What Slurm's commands print, and the farm command where there is no Slurm.
#include "slurm.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "support/scratch.h"
#include "tools/failure_of.h"
#include "tools/tool_run.h"

namespace {

using Tasks = std::set<std::size_t>;

TEST(Slurm, TasksWaitOrRun) {
    const lumivar::SlurmTasks tasks =
        lumivar::parse_slurm_tasks("0 R\n1 CG\n12 PD\n13 CF\nN/A R\n\n");
    EXPECT_EQ(tasks.running, (Tasks{0, 1}));
    EXPECT_EQ(tasks.waiting, (Tasks{12, 13}));
}

class FarmCommand : public testing::Test {
protected:
    FarmCommand() { options.environment = {"PATH=" + folder.path() + ":/usr/bin:/bin"}; }
    ToolResult farm(std::vector<std::string> more) const {
        std::vector<std::string> arguments = {"farm", "slurm", LUMIVAR_SCENES "/orion-pan.json",
                                              "-o", folder / "a.####.exr"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_tool(arguments, options);
    }
    /// A command of Slurm's that does this.
    void command(const std::string& name, const std::string& script) {
        write_file(folder / name, "#!/bin/sh\n" + script + "\n");
        chmod((folder / name).c_str(), 0755);
    }

    ScratchFolder folder;
    ToolOptions options;
};

TEST_F(FarmCommand, PrintsTheScriptOnADryRun) {
    const ToolResult result =
        farm({"--frames", "0-9", "--chunk", "4", "--dry-run", "--", "--size", "64x36"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("#SBATCH --array=0-2\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(" '--size' '64x36' "), std::string::npos) << result.out;
    EXPECT_TRUE(names_in(folder.path()).empty());
}

TEST_F(FarmCommand, RefusesWhatItCannotUse) {
    EXPECT_EQ(farm({"--frames", "0-99"}).code, 2);
    EXPECT_EQ(farm({"--frames", "0-9", "--chunk", "0"}).code, 2);
    EXPECT_EQ(farm({"--frames", "0-9", "--", "--frames", "3"}).code, 2);
    EXPECT_EQ(run_tool({"farm", "slurm", "-", "-o", folder / "a.#.exr", "--frames", "0"}).code, 2);
    EXPECT_TRUE(names_in(folder.path()).empty());
}

TEST_F(FarmCommand, EndsAsALocalRunDoes) {
    options.program = LUMIVAR_PROGRAM;  // which the tasks start again
    // A Slurm that runs every task at once.
    command("sbatch", R"(for last; do :; done
        tasks=$(echo "$2" | sed 's/--array=//; s/,/ /g')
        for task in $tasks; do SLURM_ARRAY_TASK_ID=$task sh "$last"; done
        echo 77)");
    command("squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2; exit 1");
    const ToolResult result = farm({"--frames", "0-2", "--chunk", "2", "--", "--size", "32x18"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("a.####.exr: 3 frames in 2 chunks, 3 rendered, 0 there before"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(
        names_in(folder.path()),
        (std::vector<std::string>{"a.0000.exr", "a.0001.exr", "a.0002.exr", "sbatch", "squeue"}));
    EXPECT_NE(
        farm({"--frames", "0-2", "--", "--size", "32x18"}).out.find(" 0 rendered, 3 there before"),
        std::string::npos);
}

TEST_F(FarmCommand, SaysWhatSlurmSays) {
    command("sbatch", "echo 'sbatch: error: invalid partition specified: none' >&2; exit 1");
    const ToolResult result = farm({"--frames", "0-2"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "lumivar: Slurm did not take the job: sbatch: error: invalid partition "
              "specified: none\n");
}

}  // namespace
