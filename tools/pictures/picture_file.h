// Frames to picture files.
//
// A file holds one of three things:
//
// - Linear light (`.exr`, `.tif`): the floats of a float frame bit for bit, in 32-bit channels; the
//   codes of an 8- or 16-bit frame divided by 255 or 32768. With alpha.
// - A picture for looking at (`.png`, `.jpg`, `.tif`): the light through a `Look`, encoded for a
//   display, 8 or 16 bits a channel. Without alpha, as the frames are opaque.
// - The host's integer codes as they are (`.png`, `.jpg`, `.tif`, depths 8 and 16 only): those of
//   8 bits in 8-bit channels, those of 16 bits (0..32768) in 16-bit channels. JPEG has 8-bit
//   channels only, and its compression changes codes; EXR has no such channels at all.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "atomic_file.h"
#include "frame_view.h"
#include "look.h"

namespace lumivar {

/// What compositing programs read of an `.exr`, in the format's standard attributes.
struct ShotInfo {
    std::optional<std::pair<int, int>> frame_rate;  ///< frames a second, as a fraction
    std::optional<int> frame;                       ///< its number
    /// From the composition's world to the camera's own axes (x right, y down, z away in both),
    /// row by row, for row vectors.
    std::optional<std::array<float, 16>> world_to_camera;
};

/// What the file says about itself: each detail goes into an attribute of its own ("lumivar:KEY")
/// where the format has such, and all of them with the title into the description.
struct PictureInfo {
    std::string title;
    std::vector<std::pair<std::string, std::string>> details;
    /// For programs, in "lumivar:settings" where the format has such attributes; empty: none.
    /// Nothing may compare or hash it: the order within differs from run to run.
    std::string settings;
    ShotInfo shot;
};

/// How `.exr` packs its rows; all but the last keep every bit.
enum class ExrCompression {
    None,
    Rle,   ///< runs of equal bytes
    Zips,  ///< deflate, each row by itself
    Zip,   ///< deflate, 16 rows together
    Piz,   ///< wavelets
    Dwaa   ///< cosines, with loss
};

/// What is written where nobody says otherwise: see docs/pictures.md for what was measured.
inline constexpr ExrCompression kUsualCompression = ExrCompression::Zips;

/// What a file is to hold.
struct PictureContent {
    bool raw = false;          ///< the host's integer codes
    std::optional<Look> look;  ///< otherwise a picture for looking at, or
    double linear_halo = 0.0;  ///< linear light; with a halo of this strength
    std::optional<ExrCompression> compression = std::nullopt;  ///< of an `.exr`, else the usual one
    bool half = false;  ///< an `.exr` with channels of 16 bits
};

/// The least of a frame's light, 1 as white, that is more than black in such a picture; 0 where
/// every light is, and where only a configuration of the colour management knows.
double least_visible_light(const PictureContent& content);

enum class PictureFormat { Exr, Tiff, Png, Jpeg };

/// By the ending of the name; nothing for one that is not known.
std::optional<PictureFormat> picture_format(const std::filesystem::path& path);

/// Throws `UsageError` when `path` has no known ending or cannot hold that. To be asked before the
/// work of a frame.
void check_picture_request(const std::filesystem::path& path, host::Depth depth,
                           const PictureContent& content);

/// Writes the picture into `file` as the ending of `path` says, and leaves its publishing to the
/// caller. Throws `Failure`.
void write_picture(AtomicFile& file, const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, const PictureContent& content);

/// The same, whole or not at all (see `AtomicFile`).
void write_picture(const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, const PictureContent& content);

}  // namespace lumivar
