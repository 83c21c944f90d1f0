#include "camera_file.h"

#include <cmath>
#include <numbers>

namespace lumivar {

FileLens FileLens::vertical_fov(double degrees) {
    return {Across::Height, 0.5 / std::tan(degrees * (std::numbers::pi / 360.0))};
}

FileLens FileLens::film(double focal_length, double horizontal_aperture) {
    return {Across::Width, focal_length / horizontal_aperture};
}

double FileLens::zoom(int width, int height) const {
    return ratio * (across == Across::Width ? width : height);
}

}  // namespace lumivar
