#include "camera_opening.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "chan_file.h"
#include "csv_file.h"
#include "failure.h"
#include "gltf_file.h"
#include "usd_cameras.h"
#include "whole_text.h"

namespace lumivar {
namespace {

bool is_there(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

std::string ending_of(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return ending;
}

CameraFile read_camera_file(const CameraChoice& choice, const CameraReading& reading) {
    const std::string& path = choice.file;
    if (is_usd_name(path)) {
        return read_usd_cameras(path, choice.name);
    }
    const std::string ending = ending_of(path);
    if (ending == ".chan") {
        return read_chan(whole_text(path), path, reading);
    }
    if (ending == ".csv") {
        return read_camera_csv(whole_text(path), path, reading);
    }
    if (ending == ".gltf" || ending == ".glb") {
        return read_gltf(path, choice.name);
    }
    throw Failure(path +
                  ": the ending of its name tells no camera file; .chan, .csv, .gltf, .glb, .usd, "
                  ".usda, .usdc and .usdz do");
}

/// Leaves the one that is named.
void choose_camera(std::vector<FileCamera>& cameras, const CameraChoice& choice) {
    std::vector<std::string> names;
    names.reserve(cameras.size());
    for (const FileCamera& camera : cameras) {
        names.push_back(camera.name);
    }
    std::erase_if(cameras, [&](const FileCamera& camera) { return camera.name != choice.name; });
    if (cameras.empty()) {
        fail_unknown_camera(choice.file, choice.name, names);
    }
}

[[noreturn]] void fail_without_camera(const CameraChoice& choice,
                                      const std::vector<std::string>& warnings) {
    throw Failure(choice.file + ": there is no camera in it" +
                  (warnings.empty() ? "" : "; " + warnings.front()));
}

}  // namespace

CameraChoice parse_camera_choice(const std::string& text) {
    if (is_there(text)) {
        return {text, ""};
    }
    for (std::size_t colon = text.find(':'); colon != std::string::npos;
         colon = text.find(':', colon + 1)) {
        if (is_there(text.substr(0, colon))) {
            return {text.substr(0, colon), text.substr(colon + 1)};
        }
    }
    return {text, ""};
}

CameraPaths read_camera_paths(const CameraChoice& choice, const CameraReading& reading) {
    CameraFile file = read_camera_file(choice, reading);
    if (file.cameras.empty()) {
        fail_without_camera(choice, file.warnings);
    }
    // The reader of USD has chosen already: it takes the last name of a prim path too.
    if (!choice.name.empty() && !is_usd_name(choice.file)) {
        choose_camera(file.cameras, choice);
    }
    CameraPaths paths;
    for (FileCamera& camera : file.cameras) {
        camera.up = reading.up.value_or(camera.up);
        try {
            paths.paths.push_back(world_path(camera, reading.parsecs_per_unit, choice.file));
        } catch (const Failure& failure) {
            if (file.cameras.size() == 1) {
                throw;
            }
            paths.warnings.push_back(left_out_warning(camera.name, failure, choice.file));
        }
    }
    paths.warnings.insert(paths.warnings.end(), file.warnings.begin(), file.warnings.end());
    if (paths.paths.empty()) {
        fail_without_camera(choice, paths.warnings);
    }
    return paths;
}

const CameraPath& only_path(const CameraPaths& paths, const CameraChoice& choice) {
    if (paths.paths.size() > 1) {
        std::string names;
        for (const CameraPath& path : paths.paths) {
            names.append(names.empty() ? "" : ", ").append(choice.file + ":" + path.name);
        }
        throw UsageError(choice.file + " has several cameras; name one of " + names);
    }
    return paths.paths.front();
}

}  // namespace lumivar
