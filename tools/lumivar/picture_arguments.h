// What the command line and the scene say of how a picture is to look.
#pragma once

#include <host/scene.h>
#include <host/world.h>

#include <optional>
#include <string>

#include "command_line.h"
#include "picture_file.h"

namespace lumivar {

struct PictureArguments {
    std::optional<double> exposure;
    std::string view;
    std::optional<double> halo;
    std::optional<int> bits;
    std::string ocio;
    std::string ocio_display;
    std::string ocio_view;
    std::string ocio_space;
    bool raw = false;
    std::string compression;
    bool half = false;
};

/// What a scene says of it.
struct PictureWishes {
    std::optional<double> exposure;
    std::optional<std::string> view;
    std::optional<double> halo;
};

/// The wishes of a scene. Throws `Failure` for a halo that takes more light than there is.
PictureWishes picture_wishes(const host::Scene& scene);

/// Adds the arguments; they are stored in `arguments`, which must live until the command has run.
void add_picture_arguments(Command& command, PictureArguments& arguments);

/// What the file at `path` is to hold. What the arguments leave open, the scene says, and then
/// this:
/// `.png` and `.jpg` of a float frame have the photo view with its halo, of an 8- or 16-bit frame,
/// which is cut off at white already, the plain view; `.exr` and `.tif` hold linear light. `.tif`
/// holds a picture for looking at where the arguments ask for one, with 16 bits a channel.
///
/// `environment_config` is the OpenColorIO configuration that the environment names, or empty; it
/// counts where nothing else says a view. Throws `Failure` and `UsageError`.
PictureContent picture_content(const PictureArguments& arguments, const PictureWishes& wishes,
                               const std::string& path, host::Depth depth,
                               const std::string& environment_config);

/// How a picture was made, in words: "photo view, exposure +1.5 stops, halo 1"; of linear light and
/// raw codes, that.
std::string content_text(const PictureContent& content);

}  // namespace lumivar
