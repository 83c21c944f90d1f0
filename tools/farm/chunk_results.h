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
    /// Of a failed one: what it was asked for cannot be done, now or later.
    bool is_useless = false;
    /// Of a failed one: the frames that it said are not there. Nothing if it did not come to say.
    std::optional<std::vector<int>> missing;
    std::string why;  ///< of a failed one: the last line of its log
    /// What each try printed, `lumivar render --json`, in their order.
    std::vector<std::string> summaries;
};

/// Nothing while there is no result of the chunk in the folder. Throws `Failure` when the file
/// cannot be read.
std::optional<ChunkResult> chunk_result(const std::filesystem::path& state, std::size_t chunk);

/// Of a task that ended without a result; `why` where its log says nothing.
ChunkResult lost_chunk(const std::filesystem::path& state, std::size_t chunk,
                       const std::string& why);

/// Removes what an earlier try has left.
void forget_result(const std::filesystem::path& state, std::size_t chunk);

}  // namespace lumivar
