// Fingerprints of the frames of a run: what a picture was made of, so that a later run knows
// whether it would make the same one.
//
// In it are all that the command line and the scene say, the camera that was brought, the plug-in's
// code, the content of the star catalogue, the frame's time and the kind of file. Names and times
// of files are not.
#pragma once

#include <host/camera.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "fingerprint.h"
#include "player.h"
#include "shot_plan.h"

namespace lumivar {

/// The name of a fingerprint among a picture's details.
inline constexpr char kFingerprintDetail[] = "fingerprint";

/// What is the same for all frames.
struct RunInputs {
    std::string scene_text;
    std::vector<host::CameraSample> camera;  ///< of a file that was brought; empty: none
    /// Options by name, as they were given; of one that may be repeated, each.
    std::vector<std::pair<std::string, std::string>> options;
};

class FrameFingerprints {
public:
    /// Reads the module and the catalogues that the shots use. All arguments but `inputs` must
    /// outlive the object. Throws `Failure`.
    FrameFingerprints(const RunInputs& inputs, const Player& player, const host::Scene& scene,
                      const std::vector<Shot>& shots);

    std::string of(const Shot& shot) const;

    /// Throws `Failure` when a catalogue has another content than when this object was made: frames
    /// of one run would show two skies. May be called from any thread.
    void require_unchanged_catalogues() const;

private:
    struct Content {
        std::string fingerprint;
        std::string identity;
    };

    std::filesystem::path catalogue_of(const Shot& shot) const;

    const Player& player_;
    const host::Scene& scene_;
    std::string run_;
    std::map<std::filesystem::path, Content> catalogues_;
};

}  // namespace lumivar
