// What a worker process does: it draws frames and writes their pictures, one while the next is
// drawn.
#pragma once

#include <host/frame.h>
#include <host/scene.h>

#include <filesystem>
#include <vector>

#include "frame_fingerprints.h"
#include "picture_file.h"
#include "player.h"
#include "shot_plan.h"
#include "worker_pool.h"

namespace lumivar {

/// What becomes of a picture that is there already.
enum class Existing {
    Replace,
    Resume,  ///< kept where it is whole and made of the same things, by its fingerprint
    Keep     ///< kept whatever it is
};

/// The frames of a run, for all workers alike.
struct FrameWork {
    const std::vector<host::Scene>& scenes;  ///< that the shots name
    const std::vector<Shot>& shots;
    const FrameFingerprints& fingerprints;
    host::RenderOptions options;
    PictureContent content;
    Existing existing = Existing::Replace;
    /// Where each shot's picture for the preview film goes, by `film_picture`, and what it shows;
    /// empty: there is no film. A frame that is kept is drawn for it all the same.
    std::filesystem::path film_folder = {};
    PictureContent film_content = {};
};

/// Settles the items that `link` brings: each is the place of a shot. The reports are those of
/// `FrameReport`. A frame that cannot be drawn fails alone; what cannot be written fails for all.
void work_on_frames(WorkerLink& link, Player& player, const FrameWork& work);

}  // namespace lumivar
