// What became of the chunks of a shot, by the files that their tasks leave.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumivar {

/// What a task has left.
struct ChunkResult {
    bool succeeded = false;  ///< every frame of the chunk is there
    std::size_t rendered = 0;
    std::size_t kept = 0;
    std::vector<int> missing;
    std::string why;  ///< of a failed one: the last line of its log
};

/// Nothing while there is no result of the chunk in the folder. `frames` are the chunk's: all of
/// them are missing where a failed task does not say more. Throws `Failure` when the file cannot be
/// read.
std::optional<ChunkResult> chunk_result(const std::filesystem::path& state, std::size_t chunk,
                                        const std::vector<int>& frames);

/// Of a task that ended without a result.
ChunkResult lost_chunk(const std::filesystem::path& state, std::size_t chunk,
                       const std::vector<int>& frames);

/// Removes what an earlier try has left.
void forget_result(const std::filesystem::path& state, std::size_t chunk);

}  // namespace lumivar
