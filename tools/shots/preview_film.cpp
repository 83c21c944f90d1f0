#include "preview_film.h"

#include <base/string.h>
#include <osapi/whole_file.h>

#include <cstddef>
#include <span>

#include "atomic_file.h"
#include "failure.h"
#include "program_run.h"

namespace lumivar {
namespace {

constexpr std::size_t kMostWords = std::size_t{1} << 20;
constexpr std::size_t kLargestFilm = std::size_t{1} << 32;

}  // namespace

void require_film_encoder() {
    if (!run_program({"ffmpeg", "-version"}, kMostWords).succeeded) {
        throw Failure(
            "--preview needs the program ffmpeg; install it (on Debian the package ffmpeg)");
    }
}

void check_film_name(const std::string& path) {
    if (!path.ends_with(".mp4")) {
        throw UsageError("--preview \"" + path + "\": the film's name ends with .mp4");
    }
}

std::string film_picture(std::size_t number) {
    return String::fmt("%06llu.png", static_cast<unsigned long long>(number)).c_str();
}

namespace {

/// As the encoder reads names: a folder's own % is doubled.
std::string numbered_pictures(const std::filesystem::path& folder) {
    std::string name;
    for (const char character : folder.string()) {
        name.append(character == '%' ? 2 : 1, character);
    }
    return name + "/%06d.png";
}

}  // namespace

void make_film(const std::filesystem::path& folder, std::pair<int, int> rate,
               const std::filesystem::path& film) {
    const std::filesystem::path made = folder / kFilmFile;
    const std::string size = "trunc(iw/2)*2:trunc(ih/2)*2";
    const ProgramRun run = run_program(
        {"ffmpeg",
         "-hide_banner",
         "-loglevel",
         "error",
         "-nostdin",
         "-y",
         "-framerate",
         std::to_string(rate.first) + "/" + std::to_string(rate.second),
         "-i",
         numbered_pictures(folder),
         "-vf",
         "crop=" + size + ":0:0,scale=out_color_matrix=bt709:out_range=tv,format=yuv420p",
         "-c:v",
         "libx264",
         "-crf",
         "16",
         "-preset",
         "medium",
         "-colorspace",
         "bt709",
         "-color_primaries",
         "bt709",
         "-color_trc",
         "iec61966-2-1",
         "-color_range",
         "tv",
         "-movflags",
         "+faststart",
         made.string()},
        kMostWords);
    if (!run.succeeded) {
        throw Failure("cannot make the film " + film.string() + ": ffmpeg " + run.how_ended +
                      (run.last_words.empty() ? "" : ": " + run.last_words));
    }
    try {
        const std::string bytes = OSAPI::read_whole(made.c_str(), kLargestFilm);
        AtomicFile file(film);
        file.write(std::as_bytes(std::span(bytes.data(), bytes.size())));
        file.publish();
    } catch (const StrXception& failure) {
        throw system_failure("cannot make the film " + film.string(), failure);
    }
}

}  // namespace lumivar
