// Which of the two draw paths is in use.
#pragma once

/// The plain path defines the pixels. The fast one visits the same pixels of the same stars; a
/// pixel differs by a millionth of the frame's largest value at most, or by 2e-5 of it where a
/// streak crosses the camera's plane. Two exceptions: a frame that shows nothing but the tails of
/// streaks from 10^7 pixels away and farther may differ by a millionth of their own brightest
/// light; and where thousands of nearly equal stars share one place, their sum may differ by more,
/// since the small differences add up.
enum class DrawPath { Plain, Fast };

/// Fast, unless `set_draw_path` said otherwise.
DrawPath draw_path();
/// For tests and benchmarks; holds for the whole process. Not while a frame is drawn.
void set_draw_path(DrawPath path);
