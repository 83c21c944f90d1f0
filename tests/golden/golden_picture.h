// Golden pictures as files: light in the channels R, G, B and what an honest renderer may be off in
// allowance.R, allowance.G, allowance.B.
#pragma once

#include <string>

#include "support/picture.h"
#include "support/reference_renderer.h"

namespace golden {

/// Writes a compressed OpenEXR file of 32-bit floats. Throws `std::runtime_error`.
void write_picture(const std::string& path, const reference::Rendering& rendering);

/// Reads such a file. Throws `std::runtime_error`, also when a channel is missing.
reference::Rendering read_picture(const std::string& path);

/// The channels R, G, B of any picture file. Throws `std::runtime_error`.
support::Picture read_light(const std::string& path);

}  // namespace golden
