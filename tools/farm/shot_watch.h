// Watches over the chunks of a shot on a farm until each is settled.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "chunk_results.h"
#include "farm_tasks.h"

namespace lumivar {

/// The engine, so that the watch can be tried without one.
struct FarmEngine {
    /// Hands these chunks over, together; the engine's name for them.
    std::function<std::string(const std::vector<std::size_t>& chunks)> submit;
    /// Where those of a name are. May throw `Failure` for a while.
    std::function<FarmTasks(const std::string& name)> tasks;
};

struct WatchRules {
    int tries = 3;  ///< of each chunk, 1 or more
    std::chrono::milliseconds between_looks{1000};
    /// How long a result may stay away after its task is gone: a shared file system shows it late,
    /// NFS up to a minute if nothing else is said where it is mounted.
    std::chrono::milliseconds lateness{90000};
    /// How long the engine may not answer.
    std::chrono::milliseconds silence{60000};
};

/// What the watch tells meanwhile.
struct WatchEvents {
    std::function<void(const std::string& name, std::size_t chunks)> submitted;
    /// `settled` of all chunks, and where the others are.
    std::function<void(std::size_t settled, const FarmTasks& tasks)> looked;
    std::function<void(std::size_t chunk, const ChunkResult& result)> failed;
};

/// Results by chunk. A chunk whose task failed or was lost is handed over again, up to the number
/// of tries; not one that was cancelled or that cannot be done. When the engine does not answer for
/// too long the watch ends, and what is not settled by then has failed for that reason.
///
/// Throws `Failure` when the engine does not take the chunks the first time.
std::vector<ChunkResult> watch_shot(const FarmEngine& engine, const std::filesystem::path& state,
                                    const std::vector<std::vector<int>>& chunks,
                                    const WatchRules& rules, const WatchEvents& events);

}  // namespace lumivar
