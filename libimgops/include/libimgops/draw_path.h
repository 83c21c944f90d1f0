// Which of the two draw paths is in use.
#pragma once

/// The plain path defines the pixels. The fast one visits the same pixels of the same stars. A
/// pixel differs at most
///  - by a millionth of the frame's largest value;
///  - by 6e-7 / L of the star's own brightest light, where that is more and the star moves by L
///    pixels between two camera samples: the plain path's own rounding is as large there. Where
///    several such stars light a pixel, their shares add up;
///  - by 2e-5 of the frame's largest value where a streak crosses the camera's plane;
///  - by n x 6e-8 of it where n equal segments lie on one place, from 17 on: a sum of equal parts
///    rounds the same way every time;
///  - in a frame that shows nothing but the tails of streaks from 10^7 pixels away and farther, by
///    a millionth of their own brightest light.
/// The second holds with a C library whose `erff` takes the steps of Sun's, as that of glibc 2.36
/// does.
enum class DrawPath { Plain, Fast };

/// Fast, unless `set_draw_path` said otherwise.
DrawPath draw_path();
/// For tests and benchmarks; holds for the whole process. Not while a frame is drawn.
void set_draw_path(DrawPath path);
