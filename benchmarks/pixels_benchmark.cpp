// What a visited pixel costs: spots that stay, ordinary streaks, and streaks across the camera's
// plane, which are so long that their error functions are saturated nearly everywhere.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pair.h"
#include "segments.h"

namespace {

using bench::SegmentScene;

/// Segments, whether both paths agree on them, and how many pixels they visit.
struct Case {
    Case(std::vector<bench::DrawnSegment> segments, double peak_share, float spot = bench::kSpot)
        : scene(std::move(segments), spot),
          difference(scene.difference(peak_share)),
          pixels(scene.visited_pixels()) {}
    SegmentScene scene;
    std::string difference;
    double pixels;
};

void draw(benchmark::State& state, DrawPath path, Case& segments) {
    if (!bench::agrees(state, segments.difference)) {
        return;
    }
    for (auto _ : state) {
        segments.scene.draw(path);
    }
    bench::Needs needs;
    needs.exponentials = 1;
    bench::report(state, segments.pixels, needs);
}

void still_pixel(benchmark::State& state, DrawPath path) {
    static Case spots(bench::even_segments(0, 20000), 1e-6);
    draw(state, path, spots);
}
BENCHMARK_PAIR(still_pixel);

void streak_pixel(benchmark::State& state, DrawPath path) {
    static Case streaks(bench::even_segments(30, 10000), 1e-6);
    draw(state, path, streaks);
}
BENCHMARK_PAIR(streak_pixel);

/// Segments of the 16-segment pan are about as long.
void short_streak_pixel(benchmark::State& state, DrawPath path) {
    static Case streaks(bench::even_segments(9.4F, 10000), 1e-6);
    draw(state, path, streaks);
}
BENCHMARK_PAIR(short_streak_pixel);

/// Segments of a slow move.
void tiny_streak_pixel(benchmark::State& state, DrawPath path) {
    static Case streaks(bench::even_segments(0.2F, 20000), 1e-6);
    draw(state, path, streaks);
}
BENCHMARK_PAIR(tiny_streak_pixel);

void crossing_pixel(benchmark::State& state, DrawPath path) {
    static Case streaks(bench::crossing_segments(300), 2e-5);
    draw(state, path, streaks);
}
BENCHMARK_PAIR(crossing_pixel);

void huge_spot_pixel(benchmark::State& state, DrawPath path) {
    static Case spots(bench::even_segments(0, 50), 1e-6, 96.0F);
    draw(state, path, spots);
}
BENCHMARK_PAIR(huge_spot_pixel);

}  // namespace
