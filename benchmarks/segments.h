// Segments for the rasterisers, drawn by either path without the stars around them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "scene.h"

namespace bench {

/// `count` segments of `length` pixels, all over the frame and in all directions, with the energies
/// of the sky's stars above the default threshold.
std::vector<DrawnSegment> even_segments(float length, int count);
/// The first `count` of those segments of the 16-segment pan that cross the camera's plane.
std::vector<DrawnSegment> crossing_segments(std::size_t count);

/// Draws segments in one colour and one size of spot.
class SegmentScene {
public:
    SegmentScene(std::vector<DrawnSegment> segments, float spot = kSpot);
    /// Adds all segments to the frame.
    void draw(DrawPath path);
    /// As `Scene::difference`; also if the count of visited pixels does not hold.
    std::string difference(double peak_share);
    double visited_pixels() const;

private:
    std::string miscount();

    std::vector<DrawnSegment> segments_;
    float spot_;
    std::vector<float> colour_tables_;
    FloatFrame frame_;
};

}  // namespace bench
