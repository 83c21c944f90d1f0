#include "frame_fingerprints.h"

#include <base/string.h>
#include <osapi/files.h>
#include <osapi/program.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "diagnosis.h"
#include "failure.h"
#include "picture_file.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

using nlohmann::json;

/// Without what stands in the text for people: blanks, comments, the order of members.
std::string canonical(const std::string& scene_text) {
    return json::parse(scene_text, nullptr, true, true).dump();
}

std::string text_of(const std::vector<host::CameraSample>& samples) {
    std::string text;
    for (const host::CameraSample& sample : samples) {
        text += String::fmt("%.17g %.17g", sample.time, sample.zoom).c_str();
        for (const double element : sample.layer_to_world) {
            text += String::fmt(" %.17g", element).c_str();
        }
        text += '\n';
    }
    return text;
}

/// Changes whenever the file is written or replaced, and perhaps when it is not.
std::string identity_of(const fs::path& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return "gone";
    }
    std::error_code error;
    const auto written = fs::last_write_time(path, error).time_since_epoch().count();
    return std::to_string(status.st_dev) + " " + std::to_string(status.st_ino) + " " +
           std::to_string(status.st_size) + " " + std::to_string(written);
}

/// One that cannot be read has none: its frames are not drawn, which says more.
std::string content_of(const fs::path& catalogue) {
    try {
        return file_fingerprint(catalogue);
    } catch (const Failure&) {
        return "";
    }
}

}  // namespace

FrameFingerprints::FrameFingerprints(const RunInputs& inputs, const Player& player,
                                     const host::Scene& scene, const std::vector<Shot>& shots)
    : player_(player), scene_(scene) {
    Fingerprint run;
    // Its build: halo, view and camera are its own work.
    run.add("program", file_fingerprint(OSAPI::program_path().c_str()));
    run.add("module", file_fingerprint(player.module_file()));
    run.add("scene", canonical(inputs.scene_text));
    run.add("camera", text_of(inputs.camera));
    for (const auto& [name, value] : inputs.options) {
        run.add(name, value);
    }
    run_ = run.text();
    for (const Shot& shot : shots) {
        const fs::path path = catalogue_of(shot);
        if (!path.empty() && catalogues_.count(path) == 0) {
            // In this order: what is written meanwhile shows later as another identity.
            const std::string identity = identity_of(path);
            catalogues_[path] = {content_of(path), identity};
        }
    }
}

fs::path FrameFingerprints::catalogue_of(const Shot& shot) const {
    return chosen_catalogue(player_.session(), scene_, shot.time).value_or(fs::path());
}

std::string FrameFingerprints::of(const Shot& shot) const {
    Fingerprint frame;
    frame.add("run", run_);
    frame.add("time", std::to_string(shot.time.value) + "/" + std::to_string(shot.time.scale));
    frame.add("frame", shot.frame ? std::to_string(*shot.frame) : "");
    frame.add("face", shot.face);
    frame.add("kind", std::to_string(static_cast<int>(*picture_format(shot.path))));
    const auto catalogue = catalogues_.find(catalogue_of(shot));
    frame.add("catalogue", catalogue == catalogues_.end() ? "" : catalogue->second.fingerprint);
    return frame.text();
}

void FrameFingerprints::require_unchanged_catalogues() const {
    for (const auto& [path, content] : catalogues_) {
        if (identity_of(path) != content.identity && content_of(path) != content.fingerprint) {
            throw Failure("the star catalogue " + path.string() +
                          " was changed while frames were drawn from it");
        }
    }
}

}  // namespace lumivar
