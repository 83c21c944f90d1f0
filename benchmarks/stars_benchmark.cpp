// Stars that leave no light: what the scan of the catalogue and the projection cost.
#include "pair.h"

#include <libimgops/byte_order.h>
#include <libimgops/projection.h>

#include <memory>

namespace {

using bench::Scene;

std::unique_ptr<Scene> scene_of(const std::vector<star>& stars) {
    return std::make_unique<Scene>(bench::WIDTH, bench::HEIGHT, stars);
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
    constexpr int SEGMENTS = 16;
    static const auto scene = [] {
        auto made = scene_of(bench::behind_sky(200000));
        bench::pan(made->cameras, SEGMENTS);
        return made;
    }();
    scan(state, path, *scene, SEGMENTS + 1);
}
BENCHMARK_PAIR(unseen_sample);

/// Per star and camera sample: the exact places, as each path has them from the same code. The
/// plain path finds a star's direction for every sample, the fast one once.
void projected_sample(benchmark::State& state, DrawPath path, op_stars_projection projection) {
    constexpr int SAMPLES = 17;
    struct Place {
        double lon, lat, distance;
    };
    static const std::vector<Place> places = [] {
        std::vector<Place> made;
        for (const star& s : bench::whole_sky(10000)) {
            made.push_back(
                {ledouble_to_cpu(&s.lon), ledouble_to_cpu(&s.lat), ledouble_to_cpu(&s.distance)});
        }
        return made;
    }();
    const StarRendererData data = bench::default_settings(bench::WIDTH, bench::HEIGHT);
    const camera cam;
    const Matrix4<double> m =
        projection == Persp
            ? cam.xform * Matrix4<double>::perspective(cam.focal, cam.near_clip, cam.far_clip)
            : cam.xform;
    Vector2 out;
    for (auto _ : state) {
        for (const Place& s : places) {
            if (path == DrawPath::plain) {
                for (int sample = 0; sample < SAMPLES; ++sample) {
                    benchmark::DoNotOptimize(
                        world_to_screen(s.lon, s.lat, s.distance, data.parallax_crush, m,
                                        projection, bench::WIDTH, bench::HEIGHT, data.window_x0,
                                        data.window_x1, data.window_y0, data.window_y1, out));
                    benchmark::DoNotOptimize(out);
                }
                continue;
            }
            const VectorN<double, 4> point =
                star_point(s.lon, s.lat, s.distance, data.parallax_crush);
            for (int sample = 0; sample < SAMPLES; ++sample) {
                benchmark::DoNotOptimize(point_to_screen(
                    point, m, projection, bench::WIDTH, bench::HEIGHT, data.window_x0,
                    data.window_x1, data.window_y0, data.window_y1, out));
                benchmark::DoNotOptimize(out);
            }
        }
    }
    bench::report(state, SAMPLES * static_cast<double>(places.size()), {});
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
