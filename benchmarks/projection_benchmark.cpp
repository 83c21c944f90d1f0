// What the plain projection costs a star, for each of the three projections.
#include <libimgops/projection.h>
#include <libimgops/records.h>

#include <benchmark/benchmark.h>

#include <random>
#include <utility>
#include <vector>

namespace {

void plain_projection(benchmark::State& state) {
    const auto projection = static_cast<op_stars_projection>(state.range(0));
    std::mt19937 random(20261121);
    std::uniform_real_distribution<double> lon(0, 360), sin_lat(-1, 1);
    std::vector<std::pair<double, double>> stars;
    for (int i = 0; i < 10000; ++i) {
        stars.emplace_back(lon(random), std::asin(sin_lat(random)) * 57.29577951308232);
    }
    camera cam;
    const Matrix4<double> m =
        projection == Persp
            ? cam.xform * Matrix4<double>::perspective(cam.focal, cam.near_clip, cam.far_clip)
            : cam.xform;
    const double aspect = 1920.0 / 1080.0;
    for (auto _ : state) {
        for (const auto& [l, b] : stars) {
            Vector2 out;
            benchmark::DoNotOptimize(world_to_screen(l, b, -1.0, 100.0, m, projection, 1920, 1080,
                                                     -aspect, aspect, -1.0, 1.0, out));
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(stars.size()));
}
BENCHMARK(plain_projection)->Arg(Persp)->Arg(HemiSph)->Arg(AzEqu);

}  // namespace
