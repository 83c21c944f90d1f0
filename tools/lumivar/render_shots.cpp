#include "render_shots.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "cube_map.h"
#include "failure.h"
#include "frame_names.h"

namespace lumivar {

std::vector<Shot> shots_of(const RenderArguments& arguments, const host::Composition& composition) {
    if (!arguments.cube_side) {
        return plan_shots(arguments.shots, composition, FrameNames(arguments.picture));
    }
    constexpr int kLargestSide = 16384;
    if (*arguments.cube_side < 1 || *arguments.cube_side > kLargestSide) {
        throw UsageError("--cube-map takes the pixels of a face's side, 1 to " +
                         std::to_string(kLargestSide));
    }
    std::vector<Shot> shots;
    for (std::size_t face = 0; face < kCubeFaces.size(); ++face) {
        const FrameNames names(face_pattern(arguments.picture, kCubeFaces[face]));
        for (Shot& shot : plan_shots(arguments.shots, composition, names)) {
            shot.scene = face;
            shot.face = kCubeFaces[face];
            shots.push_back(std::move(shot));
        }
    }
    // Frame by frame, so that whole cubes appear one after the other.
    std::stable_sort(shots.begin(), shots.end(), [](const Shot& a, const Shot& b) {
        return a.time.seconds() < b.time.seconds();
    });
    return shots;
}

}  // namespace lumivar
