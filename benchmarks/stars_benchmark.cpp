// Stars that leave no light: what the scan of the catalogue and the projection cost.
#include <memory>
#include <vector>

#include "pair.h"
#include "places.h"

namespace {

using bench::Scene;

std::unique_ptr<Scene> scene_of(const std::vector<star>& stars) {
    return std::make_unique<Scene>(bench::kWidth, bench::kHeight, stars);
}

/// Draws all stars, none of which may leave light.
void scan(benchmark::State& state, DrawPath path, Scene& scene, double units_per_star = 1) {
    const bench::DrawBy by(path);
    if (scene.draw_stars()) {
        state.SkipWithError("a star of no light was drawn");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(scene.draw_stars());
    }
    bench::Needs needs;
    needs.read_bytes = sizeof(star) / units_per_star;
    bench::report(state, scene.sky.stars() * units_per_star, needs);
}

void below_threshold_star(benchmark::State& state, DrawPath path) {
    static const auto scene = scene_of(bench::faint_sky(2500000));
    scan(state, path, *scene);
}
BENCHMARK_PAIR(below_threshold_star);

void off_frame_star(benchmark::State& state, DrawPath path) {
    static const auto scene = scene_of(bench::off_frame_sky(1000000));
    scan(state, path, *scene);
}
BENCHMARK_PAIR(off_frame_star);

void behind_star(benchmark::State& state, DrawPath path) {
    static const auto scene = scene_of(bench::behind_sky(1000000));
    scan(state, path, *scene);
}
BENCHMARK_PAIR(behind_star);

/// Per star and camera sample: 17 samples, of stars that stay behind the camera.
void unseen_sample(benchmark::State& state, DrawPath path) {
    constexpr int kSegments = 16;
    static const auto scene = [] {
        auto made = scene_of(bench::behind_sky(200000));
        bench::pan(made->cameras, kSegments);
        return made;
    }();
    scan(state, path, *scene, kSegments + 1);
}
BENCHMARK_PAIR(unseen_sample);

/// Per star and camera sample.
void projected_sample(benchmark::State& state, DrawPath path, op_stars_projection projection) {
    const bench::Places places(10000, projection);
    if (!bench::agrees(state, places.agree() ? "" : "the places differ")) {
        return;
    }
    for (auto _ : state) {
        places.project(path);
    }
    bench::report(state, places.samples(), {});
}
void projected_sample_persp(benchmark::State& state, DrawPath path) {
    projected_sample(state, path, Persp);
}
void projected_sample_hemisph(benchmark::State& state, DrawPath path) {
    projected_sample(state, path, HemiSph);
}
void projected_sample_azequ(benchmark::State& state, DrawPath path) {
    projected_sample(state, path, AzEqu);
}
BENCHMARK_PAIR(projected_sample_persp);
BENCHMARK_PAIR(projected_sample_hemisph);
BENCHMARK_PAIR(projected_sample_azequ);

}  // namespace
