#include "camera_file.h"

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "failure.h"

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

void fail_unknown_camera(const std::string& file, const std::string& name,
                         const std::vector<std::string>& names) {
    std::string listed;
    for (const std::string& other : names) {
        listed.append(listed.empty() ? "\"" : ", \"").append(other).append("\"");
    }
    throw Failure(file + ": there is no camera \"" + name + "\" in it; it has " + listed);
}

std::string left_out_warning(const std::string& name, const Failure& failure,
                             const std::string& file) {
    std::string reason = failure.what();
    if (reason.starts_with(file + ": ")) {
        reason.erase(0, file.size() + 2);
    }
    return "the camera \"" + name + "\" is left out: " + reason;
}

}  // namespace lumivar
