// One frame at the three depths of a host, as a file that every processor reads alike.
#pragma once

#include <filesystem>

#include "support/picture.h"

namespace processors {

/// What one processor drew. Alpha stands first in every pixel, as hosts have it.
struct FrameFile {
    /// Length in pixels of the shortest segment that a star moved along; infinite without any.
    double shortest = 0;
    support::Picture light;        ///< the float pixels
    support::Picture codes_of_8;   ///< 0..255
    support::Picture codes_of_16;  ///< 0..32768
};

/// Both throw `std::runtime_error`; reading a written file gives back the very values.
void write_frame(const std::filesystem::path& path, const FrameFile& frame);
FrameFile read_frame(const std::filesystem::path& path);

}  // namespace processors
