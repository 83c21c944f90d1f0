// What a camera file says, in its own axes and units.
#pragma once

#include <host/scene.h>

#include <optional>
#include <string>
#include <vector>

#include "failure.h"

namespace lumivar {

/// Which way is up in the world of a file. Right-handed both: with y up z points to the viewer,
/// with z up y points away. The camera itself looks along its own -z with y up in either.
enum class UpAxis { Y, Z };

/// How much a camera sees: the distance to the image plane in widths or in heights of the picture.
/// A film back tells its width: focal length / horizontal aperture, whatever the picture's shape.
struct FileLens {
    enum class Across { Width, Height };
    Across across = Across::Width;
    double ratio = 1.0;  ///< above 0

    /// `degrees` above 0 and below 180, from the bottom to the top of the picture.
    static FileLens vertical_fov(double degrees);
    /// Both in one unit, above 0.
    static FileLens film(double focal_length, double horizontal_aperture);
    /// The distance to the image plane in pixels of a picture.
    double zoom(int width, int height) const;
};

/// A camera at one moment.
struct FileCameraSample {
    double time = 0.0;               ///< seconds
    host::Matrix camera_to_world{};  ///< row vectors, the file's axes and unit; may hold a scale
    std::optional<FileLens> lens;    ///< nothing: the file says nothing of it
};

struct FileCamera {
    std::string name;
    UpAxis up = UpAxis::Y;
    std::vector<FileCameraSample> samples;  ///< at least one; times strictly increasing
};

/// All cameras of a file, in its order.
struct CameraFile {
    std::vector<FileCamera> cameras;
    std::vector<std::string> warnings;  ///< what the file has and a camera here cannot carry
};

/// Throws the `Failure` of a file that has cameras, but of other names.
[[noreturn]] void fail_unknown_camera(const std::string& file, const std::string& name,
                                      const std::vector<std::string>& names);

/// What is said of a camera that is left out of several, for a failure that names the file.
std::string left_out_warning(const std::string& name, const Failure& failure,
                             const std::string& file);

}  // namespace lumivar
