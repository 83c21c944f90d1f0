#include "usd_cameras.h"

#include <osapi/program.h>

#include <cstddef>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "failure.h"
#include "program_run.h"
#include "samples_json.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

/// A dozen cameras of as many samples as the converter makes.
constexpr std::size_t kMostBytes = std::size_t{1} << 29;

/// Empty when it is not set, or to nothing.
std::string from_environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Beside the program, as it is built and as it is installed.
fs::path converter() {
    const fs::path program = OSAPI::program_path().c_str();
    return program.parent_path().parent_path() / "lib" / "lumivar" / "usd_cameras.py";
}

}  // namespace

bool is_usd_name(const fs::path& file) {
    std::string ending = file.extension().string();
    for (char& c : ending) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return ending == ".usd" || ending == ".usda" || ending == ".usdc" || ending == ".usdz";
}

fs::path usd_environment() {
    const std::string named = from_environment("LUMIVAR_USD");
    if (!named.empty()) {
        return named;
    }
    const std::string data = from_environment("XDG_DATA_HOME");
    if (!data.empty()) {
        return fs::path(data) / "lumivar" / "usd";
    }
    const std::string home = from_environment("HOME");
    if (home.empty()) {
        throw Failure(
            "there is no home folder (HOME) to look for the reader of USD files in; name its "
            "folder in LUMIVAR_USD");
    }
    return fs::path(home) / ".local" / "share" / "lumivar" / "usd";
}

CameraFile read_usd_cameras(const fs::path& file, const std::string& name) {
    std::error_code error;
    const fs::path python = usd_environment() / "bin" / "python";
    if (!fs::exists(python, error)) {
        throw Failure(file.string() + ": USD files are read by usd-core, and there is none in " +
                      usd_environment().string() +
                      "; run scripts/install-usd once, or name its folder in LUMIVAR_USD");
    }
    const fs::path script = converter();
    if (!fs::exists(script, error)) {
        throw Failure(file.string() + ": cannot find the converter of USD cameras " +
                      script.string() + "; it belongs there, beside the program's own folder");
    }
    // -I: what the user's own Python settings bring along must not stand in for what is installed.
    std::vector<std::string> arguments = {python.string(), "-I", script.string()};
    if (!name.empty()) {
        arguments.push_back("--camera=" + name);
    }
    arguments.insert(arguments.end(), {"--", file.string()});
    const ProgramRun run = run_program(arguments, kMostBytes);
    if (!run.succeeded) {
        // The converter's own line names the file already.
        const bool names_file = run.last_words.starts_with(file.string() + ": ");
        throw Failure(
            names_file ? run.last_words
                       : file.string() + ": the converter of USD cameras " +
                             (run.last_words.empty() ? run.how_ended : "says: " + run.last_words));
    }
    return read_camera_json(run.out, file.string());
}

}  // namespace lumivar
