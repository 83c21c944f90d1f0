// The inner loops of the fast path, one set an instruction set.
//
// Every set is the same source, `kernel_source.h`, over another number of lanes, and all give the
// same bits: no fused multiply-add, the same polynomials, the same order of additions. They take
// plain data and include nothing of the rooms, so that no function compiled for one processor can
// stand in for the same function of another.
#pragma once

#include <cstddef>
#include <cstdint>

namespace star_kernels {

/// Of a pixel: coverage, red, green, blue.
inline constexpr int kFloatsPerPixel = 4;

/// Rows of such an image.
struct Pixels {
    float* first;        ///< coverage of pixel (0, 0)
    std::ptrdiff_t row;  ///< floats from one row to the next
    int width;           ///< pixels
    bool is_covered;     ///< else all coverage is 0 in the rows to draw
};

/// What a spot or a streak needs beyond its rows; all of the plain streak's constants.
struct Segment {
    float mid_x, mid_y;  ///< midpoint, pixels
    int x0, x1;          ///< first and last column of the clipped box
    int y0, y1;          ///< first and last of its rows to draw
    float energy;        ///< peak of the still spot
    float colour[3];     ///< linear light, finite
};

/// A spot that stays where it is. Rows span the whole box.
struct Spot : Segment {
    float w2, h2;  ///< squared Gaussian radii, square pixels
};

/// From here on the kernels take the error function for 1, which is 2 units in the last place off
/// at most.
inline constexpr float kErfIsOne = 3.75F;

/// Which of a streak's two error functions the kernels work out; the others are 1 and -1.
enum class ErrorFunctions {
    None,    ///< both ends are at least kErfIsOne / scale from the rows to draw
    Nearer,  ///< that of the nearer end: the ends are 2 kErfIsOne / scale or more apart
    Both,    ///< one unit in the last place from the C library's at most, in the plain order
};

/// A spot that moves.
struct Streak : Segment {
    float a_x, a_y;          ///< where it starts
    float slope;             ///< columns a row
    bool is_flat;            ///< every row is centred on mid_x instead of the line
    bool has_exact_columns;  ///< the offsets of columns 0 to x1 from mid_x surely need no rounding
    float half;              ///< half of a row's span, pixels
    float dir_x, dir_y;      ///< direction of length 1
    float along_x, along_y;  ///< spot_h^2 dir_x, spot_w^2 dir_y
    float q;                 ///< spot_h^2 dir_x^2 + spot_w^2 dir_y^2
    float half_way;          ///< length q / 2
    float scale;             ///< 1 / (spot_w spot_h sqrt q)
    float area;              ///< sqrt(pi) / 2 spot_w spot_h / sqrt q
    float energy_a_pixel;    ///< energy / length
    ErrorFunctions ends;
};

/// Streaks and columns of a trail at most.
inline constexpr int kMostInTrail = 16;
inline constexpr int kWidestTrail = 64;

/// Streaks that lie nearly on one another, where nothing is covered. All have one colour, with all
/// channels above 0, and both error functions. Offsets from their midpoints surely need no
/// rounding, of columns 0 to x1 and of rows 0 to y1.
struct Trail {
    Streak streaks[kMostInTrail];
    int count;
    int x0, y0, x1, y1;  ///< a box around theirs, not wider than kWidestTrail
};

/// A plane of the homogeneous space around a camera. The point (x, y, z, w) is surely on its far
/// side where
///     x nx + y ny + z nz + w nw  >  tolerance + w tolerance_w.
struct Plane {
    float nx, ny, nz, nw;
    float tolerance, tolerance_w;
};

/// Planes of one camera sample: the camera's own, with what is behind it on the far side; then
/// those through the camera and the frame's left, right, upper and lower side.
inline constexpr int kPlanes = 5;

/// How many stars `outside` takes at most; a multiple of every number of lanes.
inline constexpr int kStarsAtOnce = 512;

/// How well `outside` knows on which side of a plane a star is, in parts of |nx| + |ny| + |nz|, and
/// of w |nw| for the weight. With u = 2^-24, half a unit in the last place of 1, the side is off by
///     1.0e-6  each coordinate: a product of two functions of angles, 5e-7 each
///          u  that product
///          u  the plane's own numbers
///          u  coordinate x number
///         3u  the three additions
/// that is 1.4e-6. The weight's share is off by 5u: both numbers, less the tolerance, their product
/// and its addition. The rest is to spare: 4e-6 radians are a tenth of a pixel where a picture has
/// 25000 pixels a radian.
inline constexpr float kDirectionTolerance = 4e-6F;

struct Kernels {
    const char* name;
    int lanes;  ///< floats handled at once

    /// Adds rows y0 to y1 of the spot. `ry`: the first one's offset from the midpoint as the plain
    /// streak carries it; returns it for the row after the last.
    float (*draw_spot)(const Pixels& to, const Spot& spot, float ry);
    /// The same for a streak.
    float (*draw_streak)(const Pixels& to, const Streak& streak, float ry);
    /// Adds rows y0 to y1 of each streak of a trail, in their order: what `draw_streak` would add,
    /// to the bit, but each pixel is fetched once for all.
    void (*draw_trail)(const Pixels& to, const Trail& trail);
    /// Brings rows into the caches, ready to be written, and says whether any pixel of theirs has
    /// coverage. They stay as they are.
    bool (*fetch)(const Pixels& to, int y, int rows);

    /// Finds the stars that surely leave no light: those behind all `samples` cameras, and those
    /// ahead of all of them but beyond the same side of the frame. `lon`, `lat`: radians; `weight`:
    /// homogeneous weight. One byte a star, 1 for those outside. All four arrays hold kStarsAtOnce
    /// values; those behind `count` mean nothing.
    void (*outside)(const float* lon, const float* lat, const float* weight, int count,
                    const Plane* planes, int samples, unsigned char* is_outside);

    /// `count` pixels to codes 0 to 255, coverage full. Any alignment of `codes`.
    void (*to_8_bits)(const float* pixels, void* codes, std::size_t count);
    /// `count` pixels to codes 0 to 32768, coverage full.
    void (*to_16_bits)(const float* pixels, void* codes, std::size_t count);

    /// e^x, for numbers up to 0, and erf of `count` values. At most 1 and 2 units in the last place
    /// from the correctly rounded value; what is not a number has an erf that is none.
    void (*exp)(const float* x, float* result, std::size_t count);
    void (*erf)(const float* x, float* result, std::size_t count);
    /// The C library's erf: at most one unit in the last place from it, and nearly always the same
    /// bits.
    void (*library_erf)(const float* x, float* result, std::size_t count);
};

}  // namespace star_kernels
