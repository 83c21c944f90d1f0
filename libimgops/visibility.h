// Which stars of a frame surely leave no light, seen from a distance: without their exact places.
#pragma once

#include <base/array.h>
#include <libimgops/records.h>

#include "kernels/kernels.h"

/// Appends the planes around the frame of each camera sample, moved outward by the largest spot's
/// light. `mats` as the renderer has them; `reach_x`, `reach_y`: of the brightest star's light,
/// pixels.
void find_planes_around_frame(const StarRendererData& data, const StarFramebuffer& fb,
                              const Array<Matrix4<double>>& mats, double reach_x, double reach_y,
                              Array<star_kernels::Plane>& planes);
