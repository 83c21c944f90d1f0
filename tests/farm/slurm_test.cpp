// What Slurm's commands print, and the farm command where there is no Slurm.
#include "slurm.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "tools/failure_of.h"
#include "tools/tool_run.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Tasks = std::set<std::size_t>;

TEST(Slurm, TasksWaitRunOrAreGone) {
    const lumivar::FarmTasks tasks = lumivar::parse_slurm_tasks(
        "CLUSTER: far\n0 R None\n1 CG None\n12 PD Priority\n13 CF None\n14 RQ None\n"
        "2 CD None\n3 F NonZeroExitCode\n4 NF None\n5 TO TimeLimit\n6 OOM OutOfMemory\n"
        "7 CA None\n8 PR None\nN/A R None\n\n");
    EXPECT_EQ(tasks.running, (Tasks{0, 1, 14}));
    EXPECT_EQ(tasks.waiting, (Tasks{12, 13}));
    EXPECT_EQ(tasks.cancelled, Tasks{7});
    EXPECT_EQ(tasks.held_by, "");
    EXPECT_EQ(lumivar::parse_slurm_tasks("0 PD Resources\n1 PD JobHeldAdmin\n").held_by,
              "JobHeldAdmin");
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

TEST_F(FarmCommand, RefusesWhatEveryTaskWouldRefuse) {
    command("sbatch", "touch submitted");
    const std::vector<std::vector<std::string>> useless = {
        {"--depht", "8"},  {"--half", "--raw"}, {"--preview", "a.mp4"}, {"-ob.####.exr"},
        {"--size", "big"}, {"--bits", "16"},    {"--set", "oops"},      {"one more"}};
    for (const std::vector<std::string>& words : useless) {
        std::vector<std::string> more = {"--frames", "0-9", "--"};
        more.insert(more.end(), words.begin(), words.end());
        const ToolResult result = farm(more);
        EXPECT_EQ(result.code, 2) << words.front() << ": " << result.err;
    }
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"sbatch"});
}

/// A Slurm that runs every task at once, as job 77 of another cluster.
constexpr const char* kAtOnce = R"(for last; do :; done
    echo "$@" >>arguments
    for word; do case $word in --array=*) list=${word#--array=};; esac; done
    for task in $(echo "$list" | sed 's/,/ /g'); do SLURM_ARRAY_TASK_ID=$task sh "$last"; done
    echo '77;far')";

TEST_F(FarmCommand, EndsAsALocalRunDoes) {
    options.program = LUMIVAR_PROGRAM;  // which the tasks start again
    options.environment.push_back("SQUEUE_USERS=nobody");
    const std::string arguments_file = folder / "arguments";
    command("sbatch", "cd '" + folder.path() + "'\n" + kAtOnce);
    command("squeue", "echo \"$SQUEUE_USERS $*\" >>'" + arguments_file +
                          "'; echo 'slurm_load_jobs error: Invalid job id specified' >&2; exit 1");
    const ToolResult result = farm({"--frames", "0-5", "--chunk", "4", "--partition", "long", "--",
                                    "--size", "32x18", "--half"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.err.find("; scancel -M far 77 ends it"), std::string::npos) << result.err;
    // But for the time that it took.
    const std::string head = folder / "a.####.exr" +
                             ": 32x18, float, frame 0 (0.000 s) to frame 5 (0.208 s), catalogue "
                             "hipparcos.stars (117955 stars), linear light, half, ";
    EXPECT_EQ(result.out.rfind(head, 0), 0U) << result.out;
    EXPECT_NE(result.out.find(" s\n  slowest frames   to draw  to write\n  frame "),
              std::string::npos)
        << result.out;
    const std::string told = read_file(arguments_file);
    EXPECT_EQ(told.rfind("--parsable --array=0,1 --partition=long ", 0), 0U) << told;
    EXPECT_NE(told.find("\n --noheader "), std::string::npos) << "nobody's jobs: " << told;
    EXPECT_NE(told.find(" --job 77 -M far\n"), std::string::npos) << told;
    fs::remove(arguments_file);
    EXPECT_EQ(names_in(folder.path()),
              (std::vector<std::string>{"a.0000.exr", "a.0001.exr", "a.0002.exr", "a.0003.exr",
                                        "a.0004.exr", "a.0005.exr", "sbatch", "squeue"}));
    const json again =
        json::parse(farm({"--frames", "0-5", "--json", "--", "--size", "32x18", "--half"}).out);
    EXPECT_EQ(again["frames"]["asked"], 6);
    EXPECT_EQ(again["frames"]["rendered"], 0);
    EXPECT_EQ(again["frames"]["kept"], 6);
    EXPECT_EQ(again["missing"], "");
}

TEST_F(FarmCommand, LooksForThePicturesOfTasksThatSayNothing) {
    // Two frames are there, which may be anybody's.
    write_file(folder / "a.0001.exr", "a picture");
    write_file(folder / "a.0002.exr", "a picture");
    command("sbatch", "echo 77");
    command("squeue", "echo 0 CD None; echo 1 CD None");
    const std::vector<std::string> wanted = {"--frames", "1-3", "--chunk",    "2",
                                             "--tries",  "1",   "--lateness", "0"};
    ToolResult result = farm(wanted);
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("lumivar: frames 3 are missing; the logs are in "), std::string::npos)
        << result.err;
    write_file(folder / "a.0003.exr", "a picture");
    result = farm(wanted);
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("lumivar: frames 1-3 have pictures, but their tasks ended without "
                              "saying which they made; "),
              std::string::npos)
        << result.err;
}

TEST_F(FarmCommand, SaysWhatSlurmSays) {
    command("sbatch", "echo 'sbatch: error: invalid partition specified: none' >&2; exit 1");
    const ToolResult result = farm({"--frames", "0-2"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "lumivar: Slurm did not take the job: sbatch: error: invalid partition "
              "specified: none\n");
    EXPECT_EQ(names_in(folder.path()), std::vector<std::string>{"sbatch"}) << "nothing is left";
    command("sbatch", "echo 'Invalid job array specification' >&2; exit 1");
    EXPECT_NE(farm({"--frames", "0-2"}).err.find("; more frames in a --chunk make fewer tasks\n"),
              std::string::npos);
}

}  // namespace
