// How the cost of a frame grows, for the plot of docs/performance.md: name/path/argument.
#include <memory>

#include "pair.h"

namespace {

using bench::kHeight;
using bench::kWidth;
using bench::Scene;

std::unique_ptr<Scene> sky_scene(u32 stars) {
    return std::make_unique<Scene>(kWidth, kHeight, bench::whole_sky(stars));
}

void draw(benchmark::State& state, DrawPath path, Scene& scene) {
    const bench::DrawBy by(path);
    for (auto _ : state) {
        benchmark::DoNotOptimize(scene.draw());
    }
    bench::report(state, 1, {});
}

/// Stars all over the sky.
void growth_stars(benchmark::State& state, DrawPath path) {
    draw(state, path, *sky_scene(static_cast<u32>(state.range(0))));
}
/// Width of a frame of 16 : 9 that half a million stars are drawn on.
void growth_width(benchmark::State& state, DrawPath path) {
    const int width = static_cast<int>(state.range(0));
    Scene scene(width, width * 9 / 16, bench::whole_sky(500000));
    draw(state, path, scene);
}
/// Star Spot Size in tenths, of half a million stars.
void growth_spot_size(benchmark::State& state, DrawPath path) {
    const auto scene = sky_scene(500000);
    scene->settings.spot_size_x = scene->settings.spot_size_y =
        static_cast<double>(state.range(0)) / 10;
    draw(state, path, *scene);
}
/// Segments of the 5 degree pan, of a hundred thousand stars.
void growth_segments(benchmark::State& state, DrawPath path) {
    const auto scene = sky_scene(100000);
    bench::pan(scene->cameras, static_cast<int>(state.range(0)));
    draw(state, path, *scene);
}

/// Hundredths of a degree that a pan of 16 segments turns by, of half a million stars.
void growth_pan(benchmark::State& state, DrawPath path) {
    const auto scene = sky_scene(500000);
    bench::pan(scene->cameras, 16, static_cast<double>(state.range(0)) / 100);
    draw(state, path, *scene);
}

/// Both paths over the same arguments.
#define GROWTH(name, ...)                                                          \
    BENCHMARK_CAPTURE(name, plain, DrawPath::Plain)->ArgsProduct({{__VA_ARGS__}}); \
    BENCHMARK_CAPTURE(name, fast, DrawPath::Fast)->ArgsProduct({{__VA_ARGS__}})

GROWTH(growth_stars, 25000, 100000, 400000, 2500000);
GROWTH(growth_width, 480, 960, 1920, 3840);
GROWTH(growth_spot_size, 10, 25, 50, 100, 200);
GROWTH(growth_segments, 1, 4, 16, 50, 100);
GROWTH(growth_pan, 2, 5, 10, 20, 50, 100, 200, 500);

}  // namespace
