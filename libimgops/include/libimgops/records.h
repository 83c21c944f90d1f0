// The plain records through which a host shell hands one frame to the star renderer.
#pragma once

#include <base/newmatrix.h>

#include <cstdint>

/// How the sky is laid onto the frame. Any 32-bit value may arrive; others than these are refused
/// by the projection.
enum op_stars_projection : std::int32_t {
    Persp = 0,    ///< pinhole perspective
    HemiSph = 1,  ///< the hemisphere ahead as a disk (orthographic)
    AzEqu = 2,    ///< fisheye: distance from the centre goes with the angle (azimuthal equidistant)
};

/// Which rows are drawn. Any other value than the first two means the odd rows.
enum op_stars_lines : std::int32_t {
    STARS_LINES_ALL = 0,
    STARS_LINES_EVEN = 1,
    STARS_LINES_ODD = 2,
};

/// One sample of the scene camera within the frame's shutter.
struct camera {
    /// World to camera, for row vectors; the camera looks along +z with y up.
    Matrix4<double> xform{1.0};
    // The three arguments of `Matrix4<double>::perspective`. The defaults are single-precision
    // numbers, widened: that is how projects without a camera have always been drawn.
    /// Focal length in halves of the frame's height: 2 x zoom / frame height.
    double focal = static_cast<double>(3.2F);
    double near_clip = static_cast<double>(0.1F);
    /// No far plane unless above 0.
    double far_clip = -1.0;
};

/// Settings of one frame; the renderer only reads them.
struct StarRendererData {
    /// The part of the image plane that fills the frame; y1 is the top row. The effect's window is
    /// -aspect, +aspect, -1, +1 with aspect = frame width / frame height.
    double window_x0 = 0;
    double window_x1 = 0;
    double window_y0 = 0;
    double window_y1 = 0;
    /// Gaussian radii of the spot, in thousandths of half the frame's width, on both axes.
    double spot_size_x = 0;
    double spot_size_y = 0;
    /// Stars with a catalogue luminance below this are not drawn.
    double threshold = 0;
    /// Ceiling on the luminance, after `bias_exponent`.
    double max_luminance = 0;
    double brightness = 0;
    /// 0 gives mid-grey, 1 the star's own colour; not limited to that.
    double saturation = 0;
    /// Power applied to the luminance.
    double bias_exponent = 0;
    /// Weight of `tint_color` in the star's colour.
    double tint_strength = 0;
    /// Hundredths taken off every star's inverse distance.
    double parallax_crush = 0;
    /// Used as it is, without decoding.
    VectorN<float, 3> tint_color{0, 0, 0};
    op_stars_projection projection = Persp;
    op_stars_lines lines = STARS_LINES_ALL;
    /// Stars have the distance of their record if the source has distances.
    bool use_depth = false;
};

/// View of the float image that stars are drawn into. It does not own the pixels. Channel c of
/// pixel (x, y) is c[pixel_stride * x + stride * y]:
///
///     r, g, b, a   first element of each channel in row 0; linear light, a is coverage
///     width        pixels per row
///     height       rows
///     stride       floats from one row to the next
///     pixel_stride floats from one pixel to the next
struct StarFramebuffer {
    float* r = nullptr;
    float* g = nullptr;
    float* b = nullptr;
    /// Light is added times 1 - a; where a is 1 or more the pixel stays as it is. Never written.
    float* a = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    int pixel_stride = 0;
};
