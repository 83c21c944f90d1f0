// lumivar farm slurm
#include <base/string.h>
#include <host/printable.h>
#include <host/scene.h>
#include <osapi/program.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "atomic_file.h"
#include "chunks.h"
#include "counted.h"
#include "failure.h"
#include "farm_commands.h"
#include "frame_names.h"
#include "frame_range.h"
#include "progress.h"
#include "shot_plan.h"
#include "shot_watch.h"
#include "slurm.h"
#include "slurm_script.h"
#include "star_resolver.h"

namespace lumivar {
namespace {

namespace fs = std::filesystem;

struct FarmSlurmArguments {
    std::string scene;
    std::vector<std::string> options;
    std::string output;
    std::string frames;
    int chunk = 10;
    int tries = 3;
    SlurmNeeds needs;
    bool dry_run = false;
};

/// Options of a render that the farm decides itself.
constexpr const char* kOwnOptions[] = {"-o",     "--output",   "--frame",         "--frames",
                                       "--time", "--resume",   "--skip-existing", "--jobs",
                                       "--json", "--progress", "--help"};

void check_options(const std::vector<std::string>& options) {
    for (const std::string& option : options) {
        const std::string name = option.substr(0, option.find('='));
        if (std::find(std::begin(kOwnOptions), std::end(kOwnOptions), name) !=
            std::end(kOwnOptions)) {
            throw UsageError(name +
                             " is not for the options behind --; the farm's own options say it");
        }
    }
}

/// A folder of this run alone, beside the pictures: tasks of an earlier one may still be under way.
fs::path make_state_folder(const fs::path& output) {
    const fs::path parent = fs::absolute(output).parent_path();
    for (int attempt = 0;; ++attempt) {
        fs::path folder = parent / ("lumivar-farm." + std::to_string(attempt));
        std::error_code error;
        if (fs::create_directory(folder, error)) {
            return folder;
        }
        if (error) {
            throw Failure("cannot make the folder " + folder.string() + ": " + error.message());
        }
    }
}

void write_text(const fs::path& path, const std::string& text) {
    AtomicFile file(path);
    file.write(std::as_bytes(std::span(text.data(), text.size())));
    file.publish();
}

ChunkJob job_of(const FarmSlurmArguments& arguments, const fs::path& state, std::size_t chunks) {
    ChunkJob job;
    job.program = OSAPI::program_path().c_str();
    job.folder = fs::current_path().string();
    job.state = state.string();
    job.scene = arguments.scene;
    job.output = arguments.output;
    job.options = arguments.options;
    job.chunks = chunks;
    job.needs = arguments.needs;
    return job;
}

std::vector<int> frames_of(const FarmSlurmArguments& arguments) {
    if (arguments.scene == "-") {
        throw UsageError("a farm reads the scene many times; give a file instead of -");
    }
    const host::Scene scene = host::load_scene(arguments.scene, resolve_star);
    std::vector<int> frames;
    for (const Shot& shot :
         plan_shots({{}, {}, arguments.frames}, scene.composition, FrameNames(arguments.output))) {
        frames.push_back(shot.frame.value_or(0));
    }
    return frames;
}

void tell(const std::string& text) {
    std::fprintf(stderr, "lumivar: %s\n", host::printable(text).c_str());
}

/// Watches over the job to its end.
std::vector<ChunkResult> run_job(const FarmSlurmArguments& arguments, const fs::path& state,
                                 const std::vector<std::vector<int>>& chunks) {
    FarmEngine engine;
    engine.submit = [&](const std::vector<std::size_t>& due) {
        return submit_to_slurm((state / "script.sh").string(), due);
    };
    engine.active = [](const std::string& job) {
        SlurmTasks tasks = tasks_in_slurm(job);
        tasks.waiting.merge(tasks.running);
        return tasks.waiting;
    };
    ProgressLine line;
    WatchEvents events;
    events.submitted = [&](const std::string& job, std::size_t count) {
        line.wipe();
        tell("job " + job + " with " + counted(count, "chunk", "chunks") + "; scancel " + job +
             " ends it, and the same command goes on later; logs are in " + state.string());
    };
    events.looked = [&](std::size_t settled, std::size_t active) {
        line.show(progress_text(settled, chunks.size(), 0.0, "chunks") + ", " +
                  std::to_string(active) + " waiting or running");
    };
    events.failed = [&](std::size_t chunk, const ChunkResult& result) {
        line.wipe();
        tell("frames " + frame_range_text(chunks[chunk]) + ": " + result.why);
    };
    WatchRules rules;
    rules.tries = arguments.tries;
    return watch_shot(engine, state, chunks, rules, events);
}

void farm_slurm_command(const FarmSlurmArguments& arguments) {
    if (arguments.chunk < 1 || arguments.tries < 1 || arguments.needs.cpus.value_or(1) < 1) {
        throw UsageError("--chunk, --tries and --cpus take 1 or more");
    }
    check_options(arguments.options);
    const std::vector<int> frames = frames_of(arguments);
    const std::vector<std::vector<int>> chunks =
        chunks_of(frames, static_cast<std::size_t>(arguments.chunk));
    if (arguments.dry_run) {
        const fs::path state = fs::absolute(arguments.output).parent_path() / "lumivar-farm.0";
        std::printf("%s", slurm_script(job_of(arguments, state, chunks.size())).c_str());
        return;
    }
    check_output_path(FrameNames(arguments.output).name_of(frames.front()));
    const auto start = std::chrono::steady_clock::now();
    const fs::path state = make_state_folder(arguments.output);
    std::string lines;
    for (const std::vector<int>& chunk : chunks) {
        lines += frame_range_text(chunk) + "\n";
    }
    write_text(state / kChunksFile, lines);
    write_text(state / "script.sh", slurm_script(job_of(arguments, state, chunks.size())));
    const std::vector<ChunkResult> results = run_job(arguments, state, chunks);

    std::size_t rendered = 0;
    std::size_t kept = 0;
    std::vector<int> missing;
    for (const ChunkResult& result : results) {
        rendered += result.rendered;
        kept += result.kept;
        missing.insert(missing.end(), result.missing.begin(), result.missing.end());
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %s in %s, %zu rendered, %zu there before, %.2f s\n", arguments.output.c_str(),
                counted(frames.size(), "frame", "frames").c_str(),
                counted(chunks.size(), "chunk", "chunks").c_str(), rendered, kept, seconds.count());
    std::fflush(stdout);
    if (!missing.empty()) {
        throw Failure("frames " + frame_range_text(missing) + " are missing; the logs are in " +
                      state.string() + ", and the same command renders what is missing");
    }
    std::error_code ignored;
    fs::remove_all(state, ignored);
}

}  // namespace

void add_farm_slurm_command(Command& farm) {
    auto arguments = std::make_shared<FarmSlurmArguments>();
    Command command = farm.add_command("slurm", "Render a shot as a job array of Slurm");
    command.add("SCENE", arguments->scene, "The scene, a file that every node sees").required();
    command.add("-o,--output", arguments->output, "The pictures, with #### or %04d in their name")
        .required();
    command.add("--frames", arguments->frames, "Frames such as 1001-1240, 1-100x2 or 1,5,9-12")
        .required();
    command.add("--chunk", arguments->chunk, "Frames of a task; 10 if nothing is said");
    command.add("--tries", arguments->tries, "How often a chunk is tried; 3 if nothing is said");
    command.add("--partition", arguments->needs.partition, "Slurm's partition");
    command.add("--cpus", arguments->needs.cpus, "Cores of a task, and its worker processes");
    command.add("--memory", arguments->needs.memory, "Memory of a task, such as 4G");
    command.add("--time", arguments->needs.time, "Longest time of a task, such as 1:00:00");
    command.add_flag("--dry-run", arguments->dry_run, "Print the batch script and submit nothing");
    command.add_rest("OPTIONS", arguments->options,
                     "Behind --: further options of lumivar render, for all chunks");
    command.footer(
        "Scene, pictures and this program must have the same paths on every node. Each task\n"
        "renders its frames with --resume: what an earlier try has made is kept. A task that\n"
        "fails or is lost is handed to Slurm again. docs/farm.md tells what other engines need.\n\n"
        "Examples:\n"
        "  lumivar farm slurm shot.json -o /shots/a.####.exr --frames 1001-1240 --cpus 8\n"
        "  lumivar farm slurm shot.json -o a.####.exr --frames 1-100 --chunk 5 -- --half\n"
        "  lumivar farm slurm shot.json -o a.####.exr --frames 1-100 --dry-run\n");
    command.run([arguments] { farm_slurm_command(*arguments); });
}

}  // namespace lumivar
