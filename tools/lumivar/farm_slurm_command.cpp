// lumivar farm slurm
#include <base/string.h>
#include <host/printable.h>
#include <host/scene.h>
#include <osapi/program.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "atomic_file.h"
#include "chunks.h"
#include "counted.h"
#include "failure.h"
#include "farm_commands.h"
#include "frame_range.h"
#include "picture_arguments.h"
#include "progress.h"
#include "render_arguments.h"
#include "render_request.h"
#include "render_shots.h"
#include "render_summary.h"
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
    int lateness = 90;  ///< seconds
    bool json = false;
    SlurmNeeds needs;
    bool dry_run = false;
};

/// Options of a render that the farm decides itself, or that make one file of all frames.
constexpr const char* kOwnOptions[] = {"-o",     "--output",   "--frame",   "--frames",
                                       "--time", "--resume",   "--jobs",    "--skip-existing",
                                       "--json", "--progress", "--preview", "--help"};

/// The render of all frames, as its tasks do it chunk by chunk. Throws `UsageError` for what no
/// task could use: each would fail, as often as it is tried.
RenderArguments render_arguments(const FarmSlurmArguments& arguments) {
    if (arguments.scene == "-") {
        throw UsageError("a farm reads the scene many times; give a file instead of -");
    }
    for (const std::string& option : arguments.options) {
        const std::string name = option.substr(0, option.find('='));
        if (std::find(std::begin(kOwnOptions), std::end(kOwnOptions), name) !=
            std::end(kOwnOptions)) {
            throw UsageError(name +
                             " is not for the options behind --; the farm's own options say it");
        }
    }
    std::vector<std::string> words = {arguments.scene, "-o", arguments.output, "--frames",
                                      arguments.frames};
    words.insert(words.end(), arguments.options.begin(), arguments.options.end());
    return parse_render_arguments(words);
}

/// The pictures of the shot. Throws `UsageError` also for what their format does not hold.
std::vector<Shot> shots_of_render(const RenderArguments& render) {
    const host::Scene scene = host::load_scene(render.scene, resolve_star);
    const char* const ocio = std::getenv("OCIO");
    picture_content(render.picture_arguments, picture_wishes(scene), render.picture,
                    host::Depth{render.depth}, ocio != nullptr ? ocio : "");
    for (const std::string& setting : render.settings) {
        parse_setting(setting);
    }
    if (!render.size.empty()) {
        parse_size(render.size);
    }
    return shots_of(render, scene.composition);
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

std::vector<int> frames_of(const std::vector<Shot>& shots) {
    std::vector<int> frames;
    for (const Shot& shot : shots) {
        // A cube has six pictures of a frame.
        if (frames.empty() || frames.back() != shot.frame.value_or(0)) {
            frames.push_back(shot.frame.value_or(0));
        }
    }
    return frames;
}

void tell(const std::string& text) {
    std::fprintf(stderr, "lumivar: %s\n", host::printable(text).c_str());
}

/// What is told of a job that is under way.
class JobTale {
public:
    JobTale(std::string state, const std::vector<std::vector<int>>& chunks)
        : state_(std::move(state)), chunks_(chunks), last_log_(Clock::now()) {}

    void submitted(const std::string& job, std::size_t count) {
        line_.wipe();
        tell("job " + job + " with " + counted(count, "chunk", "chunks") + "; " +
             slurm_cancel_command(job) +
             " ends it, and the same command goes on later; logs are in " + state_);
    }
    void looked(std::size_t settled, const FarmTasks& tasks) {
        std::string text = progress_text(settled, chunks_.size(), 0.0, "chunks") + ", " +
                           std::to_string(tasks.running.size()) + " running, " +
                           std::to_string(tasks.waiting.size()) + " waiting";
        text += tasks.held_by.empty() ? "" : " (" + tasks.held_by + ")";
        line_.show(text);
        // In a log as `lumivar render` writes one.
        if (!line_.is_shown() && Clock::now() - last_log_ >= std::chrono::seconds(10)) {
            last_log_ = Clock::now();
            tell(text);
        }
    }
    void failed(std::size_t chunk, const ChunkResult& result) {
        line_.wipe();
        tell("frames " + frame_range_text(chunks_[chunk]) + ": " + result.why);
    }

private:
    using Clock = std::chrono::steady_clock;

    std::string state_;
    const std::vector<std::vector<int>>& chunks_;
    ProgressLine line_;
    Clock::time_point last_log_;
};

/// Watches over the job to its end.
std::vector<ChunkResult> run_job(const FarmSlurmArguments& arguments, const fs::path& state,
                                 const std::vector<std::vector<int>>& chunks) {
    FarmEngine engine;
    engine.submit = [&](const std::vector<std::size_t>& due) {
        return submit_to_slurm((state / "script.sh").string(), arguments.needs, due);
    };
    engine.tasks = tasks_in_slurm;
    JobTale tale(state.string(), chunks);
    WatchEvents events;
    events.submitted = [&tale](const std::string& job, std::size_t count) {
        tale.submitted(job, count);
    };
    events.looked = [&tale](std::size_t settled, const FarmTasks& tasks) {
        tale.looked(settled, tasks);
    };
    events.failed = [&tale](std::size_t chunk, const ChunkResult& result) {
        tale.failed(chunk, result);
    };
    WatchRules rules;
    rules.tries = arguments.tries;
    rules.lateness = std::chrono::seconds(arguments.lateness);
    return watch_shot(engine, state, chunks, rules, events);
}

/// What came of the shot's frames.
struct ShotEnd {
    RunSummary summary;                    ///< with the frames that are missing
    std::vector<int> untold;               ///< have pictures, of which nobody said what they show
    const ChunkResult* useless = nullptr;  ///< a chunk whose options cannot be used
};

ShotEnd end_of(const std::vector<ChunkResult>& results, const std::vector<std::vector<int>>& chunks,
               const std::vector<Shot>& shots) {
    ShotEnd end;
    std::error_code error;
    for (std::size_t chunk = 0; chunk < results.size(); ++chunk) {
        const ChunkResult& result = results[chunk];
        std::vector<RunSummary> tries;
        for (const std::string& text : result.summaries) {
            if (std::optional<RunSummary> one = parse_summary(text)) {
                tries.push_back(std::move(*one));
            }
        }
        RunSummary part = together_in_turn(tries);
        if (result.succeeded) {
            part.failed.clear();
        }
        add_part(end.summary, part);
        end.useless = result.is_useless ? &result : end.useless;
        if (result.succeeded) {
            continue;
        }
        std::set<int> missing;
        if (result.missing) {
            missing.insert(result.missing->begin(), result.missing->end());
        } else {
            for (const Shot& shot : shots) {
                if (shot.frame && !fs::exists(shot.path, error)) {
                    missing.insert(*shot.frame);
                }
            }
        }
        for (const int frame : chunks[chunk]) {
            if (missing.count(frame) != 0) {
                end.summary.missing.push_back(frame);
            } else if (!result.missing) {
                end.untold.push_back(frame);
            }
        }
    }
    return end;
}

/// Throws where the shot is not whole.
void require_whole(const ShotEnd& end, const fs::path& state) {
    const std::string remedy =
        "; the logs are in " + state.string() + ", and the same command renders what is missing";
    if (end.useless != nullptr) {
        throw UsageError("no task can use this: " + end.useless->why);
    }
    if (!end.summary.missing.empty()) {
        throw Failure("frames " + frame_range_text(end.summary.missing) + " are missing" + remedy);
    }
    if (!end.untold.empty()) {
        throw Failure("frames " + frame_range_text(end.untold) +
                      " have pictures, but their tasks ended without saying which they made" +
                      remedy);
    }
}

void farm_slurm_command(const FarmSlurmArguments& arguments) {
    if (arguments.chunk < 1 || arguments.tries < 1 || arguments.needs.cpus.value_or(1) < 1) {
        throw UsageError("--chunk, --tries and --cpus take 1 or more");
    }
    if (arguments.lateness < 0) {
        throw UsageError("--lateness takes 0 seconds or more");
    }
    const RenderArguments render = render_arguments(arguments);
    const std::vector<Shot> shots = shots_of_render(render);
    const std::vector<std::vector<int>> chunks =
        chunks_of(frames_of(shots), static_cast<std::size_t>(arguments.chunk));
    if (arguments.dry_run) {
        const fs::path state = fs::absolute(arguments.output).parent_path() / "lumivar-farm.0";
        std::printf("%s", slurm_script(job_of(arguments, state, chunks.size())).c_str());
        return;
    }
    check_output_path(shots.front().path);
    const auto start = std::chrono::steady_clock::now();
    const fs::path state = make_state_folder(arguments.output);
    std::vector<ChunkResult> results;
    std::error_code ignored;
    try {
        std::string lines;
        for (const std::vector<int>& chunk : chunks) {
            lines += frame_range_text(chunk) + "\n";
        }
        write_text(state / kChunksFile, lines);
        write_text(state / "script.sh", slurm_script(job_of(arguments, state, chunks.size())));
        results = run_job(arguments, state, chunks);
    } catch (const Failure&) {
        fs::remove_all(state, ignored);  // no task is under way that would need it
        throw;
    }
    ShotEnd end = end_of(results, chunks, shots);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    end.summary.scene = arguments.scene;
    end.summary.output = arguments.output;
    end.summary.asked = shots.size();
    end.summary.seconds = seconds.count();
    if (arguments.json) {
        std::printf("%s\n", summary_json(end.summary).c_str());
    } else {
        std::printf("%s", summary_text(end.summary, shots).c_str());
    }
    std::fflush(stdout);
    require_whole(end, state);
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
    command.add("--lateness", arguments->lateness,
                "How many seconds a task's result may come late over the shared file system; 90 if "
                "nothing is said, which is enough for NFS");
    command.add("--partition", arguments->needs.partition, "Slurm's partition");
    command.add("--cpus", arguments->needs.cpus, "Cores of a task, and its worker processes");
    command.add("--memory", arguments->needs.memory, "Memory of a task, such as 4G");
    command.add("--time", arguments->needs.time, "Longest time of a task, such as 1:00:00");
    command.add_flag("--dry-run", arguments->dry_run, "Print the batch script and submit nothing");
    command.add_flag("--json", arguments->json, "Print the result as a JSON object");
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
