// What `lumivar render` is asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "camera_arguments.h"
#include "command_line.h"
#include "magnitudes.h"
#include "picture_arguments.h"
#include "shot_plan.h"

namespace lumivar {

struct RenderArguments {
    std::string scene;
    std::string picture;
    ShotRequest shots;
    int depth = 32;
    std::string size;
    std::vector<std::string> settings;
    std::string plugin;
    std::string catalogue;
    PictureArguments picture_arguments;
    std::optional<int> cube_side;
    std::optional<int> jobs;
    std::string preview;
    bool resume = false;
    bool skip_existing = false;
    std::string progress = "text";
    bool json = false;
    bool quiet = false;
    MagnitudeArguments magnitudes;
    CameraArguments camera;
};

/// Adds the arguments and the help; they are stored in `arguments`, which must live until the
/// command has run.
void add_render_arguments(Command& command, RenderArguments& arguments);

/// What these words behind `lumivar render` say. Throws `UsageError` for what it would not take.
RenderArguments parse_render_arguments(const std::vector<std::string>& words);

}  // namespace lumivar
