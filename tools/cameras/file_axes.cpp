#include "file_axes.h"

#include "rotation_order.h"

namespace lumivar {
namespace {

// Row vectors: the rows say where x, y and z go.
constexpr host::Matrix kHalfTurnAboutX = {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
constexpr host::Matrix kZUpToYUp = {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
constexpr host::Matrix kYUpToZUp = {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1};

host::Matrix half_turned(const host::Matrix& matrix) {
    return product(product(kHalfTurnAboutX, matrix), kHalfTurnAboutX);
}

}  // namespace

host::Matrix world_matrix(const host::Matrix& camera_to_world, UpAxis up) {
    return half_turned(up == UpAxis::Z ? product(camera_to_world, kZUpToYUp) : camera_to_world);
}

host::Matrix file_matrix(const host::Matrix& layer_to_world, UpAxis up) {
    const host::Matrix matrix = half_turned(layer_to_world);
    return up == UpAxis::Z ? product(matrix, kYUpToZUp) : matrix;
}

}  // namespace lumivar
