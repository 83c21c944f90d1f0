// What a camera file cannot say of itself.
#pragma once

#include <optional>
#include <string>

#include "camera_file.h"
#include "rotation_order.h"

namespace lumivar {

struct CameraReading {
    double frames_per_second = 24.0;  ///< for formats that count frames
    double first_frame = 0.0;         ///< the number of the frame at second 0, for these
    RotationOrder rotation_order;     ///< for formats with angles
    std::optional<UpAxis> up;         ///< nothing: what the file says, else y
    double parsecs_per_unit = 1.0;
};

/// Parsecs in a unit: a name of `host::kLengthUnits`, or a number above 0. Throws `UsageError`.
double parsecs_of_unit(const std::string& name);

/// "y" or "z". Throws `UsageError`.
UpAxis up_axis_of(const std::string& name);

}  // namespace lumivar
