#include "chunk_results.h"

#include <osapi/reason.h>
#include <osapi/whole_file.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "failure.h"
#include "frame_range.h"
#include "slurm_script.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

using nlohmann::json;

constexpr std::size_t kMostText = std::size_t{1} << 24;
/// With which `lumivar` refuses a command line.
constexpr const char* kUselessStatus = "2";

std::string whole_text(const fs::path& path) {
    try {
        return OSAPI::read_whole(path.c_str(), kMostText);
    } catch (const StrXception& failure) {
        throw system_failure("cannot read " + path.string(), failure);
    }
}

std::string last_line(const std::string& text) {
    std::istringstream lines(text);
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        last = line.empty() ? last : line;
    }
    return last;
}

/// The last words of a task's log, or `otherwise`.
std::string log_words(const fs::path& state, std::size_t chunk, const std::string& otherwise) {
    std::error_code error;
    const fs::path log = state / log_file(chunk);
    const std::string words = fs::exists(log, error) ? last_line(whole_text(log)) : "";
    return words.empty() ? otherwise : words;
}

}  // namespace

std::optional<ChunkResult> chunk_result(const fs::path& state, std::size_t chunk) {
    const fs::path path = state / result_file(chunk);
    std::error_code error;
    if (!fs::exists(path, error)) {
        return std::nullopt;
    }
    const std::string text = whole_text(path);
    const std::string status = last_line(text);
    ChunkResult result;
    result.succeeded = status == "0";
    result.is_useless = status == kUselessStatus;
    if (!result.succeeded) {
        result.why = log_words(state, chunk, "exit status " + status);
    }
    const std::string summary = text.substr(0, text.find('\n'));
    const json object = json::parse(summary, nullptr, false);
    // A command line that cannot be used prints no result.
    if (object.is_object() && object.contains("frames")) {
        result.summaries = {summary};
        const std::string missing = object.value("missing", "");
        if (!result.succeeded && !missing.empty()) {
            result.missing = parse_frame_range(missing, "missing frames");
        }
    }
    return result;
}

ChunkResult lost_chunk(const fs::path& state, std::size_t chunk, const std::string& why) {
    ChunkResult result;
    result.why = log_words(state, chunk, why);
    return result;
}

void forget_result(const fs::path& state, std::size_t chunk) {
    std::error_code ignored;
    fs::remove(state / result_file(chunk), ignored);
    fs::remove(state / log_file(chunk), ignored);
}

}  // namespace lumivar
