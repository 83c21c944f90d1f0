#include "cube_map.h"

#include <host/camera.h>

#include <cctype>
#include <cstddef>
#include <memory>
#include <utility>

#include "failure.h"

namespace lumivar {
namespace {

constexpr char kProjection[] = "Projection";

/// A face's axes, right, down and away, in those of the camera.
using Axes = std::array<std::array<double, 3>, 3>;
constexpr std::array<Axes, 6> kFaceAxes = {{
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},    // front
    {{{0, 0, -1}, {0, 1, 0}, {1, 0, 0}}},   // right
    {{{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}},  // back
    {{{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}}},   // left
    {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}}},   // up
    {{{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}},   // down
}};

/// The scene's camera, turned.
class FaceCamera : public host::Camera {
public:
    FaceCamera(std::shared_ptr<const host::Camera> base, const Axes& axes, int side)
        : base_(std::move(base)), axes_(axes), zoom_(side / 2.0) {}

    host::Matrix layer_to_world(double seconds) const override {
        const host::Matrix base = base_->layer_to_world(seconds);
        host::Matrix turned = base;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                turned[4 * row + column] = 0.0;
                for (std::size_t i = 0; i < 3; ++i) {
                    turned[4 * row + column] += axes_[row][i] * base[4 * i + column];
                }
            }
        }
        return turned;
    }
    /// Half the side: 45 degrees to each edge.
    double zoom(double) const override { return zoom_; }

private:
    std::shared_ptr<const host::Camera> base_;
    Axes axes_;
    double zoom_;
};

}  // namespace

std::vector<host::Scene> cube_scenes(const host::Scene& scene, int side) {
    const std::shared_ptr<const host::Camera> base =
        scene.camera ? scene.camera
                     : host::look_at_camera(0.0, 0.0, 0.0, host::Lens::zoom(side / 2.0));
    std::vector<host::Scene> scenes;
    scenes.reserve(kFaceAxes.size());
    for (const Axes& axes : kFaceAxes) {
        host::Scene face = scene;
        face.composition.width = side;
        face.composition.height = side;
        face.camera = std::make_shared<FaceCamera>(base, axes, side);
        std::erase_if(face.controls, [](const host::ControlSetting& setting) {
            return setting.name == kProjection;
        });
        face.controls.push_back({kProjection, "--cube-map", std::string("Persp")});
        scenes.push_back(std::move(face));
    }
    return scenes;
}

std::string face_pattern(const std::string& pattern, const std::string& face) {
    const std::size_t place = pattern.rfind(kFacePlace);
    const std::size_t slash = pattern.rfind('/');
    const auto is_letter = [&pattern](std::size_t at) {
        return at < pattern.size() && std::isalpha(static_cast<unsigned char>(pattern[at])) != 0;
    };
    if (place == std::string::npos || (slash != std::string::npos && place < slash) ||
        (place > 0 && is_letter(place - 1)) || is_letter(place + std::string(kFacePlace).size())) {
        throw UsageError("--cube-map writes six pictures: put FACE for the face into the name \"" +
                         pattern + "\", such as sky.FACE.####.exr");
    }
    std::string name = pattern;
    return name.replace(place, std::string(kFacePlace).size(), face);
}

}  // namespace lumivar
