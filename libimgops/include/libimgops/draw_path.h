// Which of two codes draws.
#pragma once

/// The plain code defines the pixels. The fast one visits the same pixels of the same stars; a
/// pixel differs by a millionth of the frame's largest value at most, or by 2e-5 of it where a
/// streak crosses the camera's plane. Two exceptions: a frame that shows nothing but the tails of
/// streaks from 10^7 pixels away and farther may differ by a millionth of their own brightest
/// light; and thousands of stars on one place, nearly equal, may come farther apart, since their
/// sums round alike.
enum class DrawPath { plain, fast };

/// Fast, unless `set_draw_path` said otherwise.
DrawPath draw_path();
/// For tests and benchmarks; holds for the whole process. Not while a frame is drawn.
void set_draw_path(DrawPath path);
