// Frames to picture files.
//
// `.exr` and `.tif` carry linear light: the floats of a float frame bit for bit, in 32-bit
// channels; the codes of an 8- or 16-bit frame divided by 255 or 32768. `.png` and `.jpg` are for
// looking at: clamped to 0..1, encoded to sRGB, 8 bits a channel. They hold no alpha, as the frames
// are opaque.
//
// `raw` writes the host's integer codes as they are instead (depths 8 and 16 only): 8-bit codes
// into 8-bit channels, 16-bit codes (0..32768) into 16-bit channels. JPEG has 8-bit channels only,
// and its compression changes codes; EXR has no such channels at all.
#pragma once

#include <host/world.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace lumivar {

/// A finished frame as the host holds it: rows from the top, pixels of alpha, red, green, blue in
/// the machine's byte order. Not owned.
struct FrameView {
    const void* pixels = nullptr;  ///< row 0
    std::ptrdiff_t row_bytes = 0;
    int width = 0;
    int height = 0;
    host::Depth depth = host::Depth::Float;
};

/// What the file says about itself: each detail goes into an attribute of its own ("lumivar:KEY")
/// where the format has such, and all of them with the title into the description.
struct PictureInfo {
    std::string title;
    std::vector<std::pair<std::string, std::string>> details;
    /// For programs, in "lumivar:settings" where the format has such attributes; empty: none.
    /// Nothing may compare or hash it: the order within differs from run to run.
    std::string settings;
};

/// Throws `UsageError` when `path` has no known ending or depth and `raw` do not go with it. To be
/// asked before the work of a frame.
void check_picture_request(const std::filesystem::path& path, host::Depth depth, bool raw);

/// Writes the picture, whole or not at all (see `AtomicFile`). Throws `Failure`.
void write_picture(const std::filesystem::path& path, const FrameView& frame,
                   const PictureInfo& info, bool raw);

}  // namespace lumivar
