// Draws a frame with the real renderer from the records of the reference renderer, so that the same
// scene can be put to both.
#pragma once

#include <libimgops/draw_path.h>
#include <libimgops/records.h>

#include <vector>

#include "support/picture.h"
#include "support/reference_renderer.h"

/// The camera record of the same sample.
camera product_camera(const reference::Camera& camera);

/// The settings as a host shell fills them from the same controls.
StarRendererData product_settings(const reference::Settings& settings);

/// The real renderer's float frame by a draw path: linear red, green and blue. The catalogue is one
/// with distances, held in memory. The frame counts as lit from the start: until it is, the fast
/// path lets the plain one draw.
support::Picture product_frame(const std::vector<reference::Star>& stars,
                               const reference::Settings& settings,
                               const std::vector<reference::Camera>& cameras, DrawPath path);
