// The frames of frames_benchmark.cpp cut short, for docs/performance.md: part_FRAME_END. What one
// takes more than another is the part between their ends.
#include <algorithm>
#include <limits>
#include <memory>
#include <string>

#include "libimgops/fast/kernels/choice.h"
#include "pair.h"

namespace {

using bench::kHeight;
using bench::kWidth;
using bench::Scene;
using star_kernels::Kernels;

Scene& still() {
    static Scene scene(kWidth, kHeight, bench::whole_sky(2500000));
    return scene;
}
Scene& pan16() {
    static const auto scene = [] {
        auto made = std::make_unique<Scene>(kWidth, kHeight, bench::whole_sky(2500000));
        bench::pan(made->cameras, 16);
        return made;
    }();
    return *scene;
}
Scene& dense() {
    static Scene scene(kWidth, kHeight, bench::framed_sky(1000000, 0.2F / bench::kEnergy));
    return scene;
}

/// Clears the frame and gives it all stars.
void draw(benchmark::State& state, DrawPath path, Scene& scene) {
    const bench::DrawBy by(path);
    for (auto _ : state) {
        scene.frame.clear();
        benchmark::DoNotOptimize(scene.draw_stars());
    }
    bench::report(state, 1, {});
}

void draw_with(benchmark::State& state, DrawPath path, Scene& scene,
               double StarRendererData::*setting, double value) {
    const double usual = scene.settings.*setting;
    scene.settings.*setting = value;
    draw(state, path, scene);
    scene.settings.*setting = usual;
}

/// All stars are read and none passes the threshold.
void scanned(benchmark::State& state, DrawPath path, Scene& scene) {
    draw_with(state, path, scene, &StarRendererData::threshold,
              std::numeric_limits<double>::infinity());
}
/// So dark that no star reaches any pixel: the plain path has shaded and projected all above the
/// threshold before it knows.
void unlit(benchmark::State& state, DrawPath path, Scene& scene) {
    draw_with(state, path, scene, &StarRendererData::brightness, 1e-30);
}

const Kernels* usual_kernels = nullptr;

void draw_by(benchmark::State& state, DrawPath path, Scene& scene, const Kernels& kernels) {
    star_kernels::use(&kernels);
    draw(state, path, scene);
    star_kernels::use(usual_kernels);
}

/// Every star is tested, and rejected whatever came out.
void rejected(benchmark::State& state, DrawPath path, Scene& scene) {
    usual_kernels = star_kernels::in_use();
    Kernels kernels = *usual_kernels;
    kernels.outside = [](const float* lon, const float* lat, const float* weight, int count,
                         const star_kernels::Plane* planes, int samples,
                         unsigned char* is_outside) {
        usual_kernels->outside(lon, lat, weight, count, planes, samples, is_outside);
        std::fill_n(is_outside, count, static_cast<unsigned char>(1));
    };
    draw_by(state, path, scene, kernels);
}

/// Everything but the light of pixels.
void undrawn(benchmark::State& state, DrawPath path, Scene& scene) {
    usual_kernels = star_kernels::in_use();
    Kernels kernels = *usual_kernels;
    kernels.draw_spot = [](const star_kernels::Pixels&, const star_kernels::Spot& spot, float ry) {
        return ry + static_cast<float>(spot.y1 - spot.y0 + 1);
    };
    kernels.draw_streak = [](const star_kernels::Pixels&, const star_kernels::Streak& streak,
                             float ry) {
        return ry + static_cast<float>(streak.y1 - streak.y0 + 1);
    };
    kernels.draw_trail = [](const star_kernels::Pixels&, const star_kernels::Trail&) {};
    kernels.fetch = [](const star_kernels::Pixels&, int, int) { return false; };
    draw_by(state, path, scene, kernels);
}

using Run = void (*)(benchmark::State&, DrawPath, Scene&);

void add(const std::string& name, Run run, DrawPath path, Scene& (*scene)()) {
    benchmark::RegisterBenchmark((name + (path == DrawPath::Plain ? "/plain" : "/fast")).c_str(),
                                 [=](benchmark::State& state) { run(state, path, scene()); });
}

const bool parts_are_registered = [] {
    const struct {
        const char* name;
        Scene& (*scene)();
    } frames[] = {{"part_still_", still}, {"part_pan16_", pan16}, {"part_dense_", dense}};
    for (const auto& [name, scene] : frames) {
        add(std::string(name) + "scanned", scanned, DrawPath::Plain, scene);
        add(std::string(name) + "scanned", scanned, DrawPath::Fast, scene);
        add(std::string(name) + "unlit", unlit, DrawPath::Plain, scene);
        add(std::string(name) + "rejected", rejected, DrawPath::Fast, scene);
        add(std::string(name) + "undrawn", undrawn, DrawPath::Fast, scene);
    }
    return true;
}();

}  // namespace
