// The planes around what a camera sample can see, by which the kernels reject stars.
#pragma once

#include <base/array.h>
#include <libimgops/records.h>

#include "kernels/kernels.h"

/// Writes the planes of each camera sample's frustum, moved outward by the largest spot's light, to
/// `planes`: `kPlanes` a sample. `mats` as the renderer has them; `reach_x`, `reach_y`: of the
/// brightest star's light, pixels.
void find_frustum_planes(const StarRendererData& data, const StarFramebuffer& fb,
                         const Array<Matrix4<double>>& mats, double reach_x, double reach_y,
                         star_kernels::Plane* planes);
