// Whole frames: clear, draw, convert to 8 bits.
#include <memory>
#include <string>
#include <utility>

#include "pair.h"

namespace {

using bench::kHeight;
using bench::kWidth;
using bench::Scene;

// What the fast path promises, as parts of the frame's largest value.
constexpr double kStill = 1e-6;
constexpr double kCrossing = 2e-5;

/// A scene, whether its two frames agree, and what the machine needs for one of them.
struct Case {
    Case(std::unique_ptr<Scene> made, double peak_share)
        : scene(std::move(made)), difference(scene->difference(peak_share)) {
        const double pixels = static_cast<double>(scene->frame.floats()) / 4;
        needs.read_bytes = scene->sky.bytes() + 16 * pixels;
        needs.written_bytes = (16 + 4) * pixels;
        scene->for_each_segment([&](const bench::DrawnSegment& segment) {
            needs.exponentials +=
                bench::visited_pixels(scene->frame.view(), segment, scene->spot());
            return true;
        });
    }
    std::unique_ptr<Scene> scene;
    std::string difference;
    bench::Needs needs;
};

std::unique_ptr<Scene> sky_scene(int width, int height, u32 stars, int segments,
                                 double degrees = 5) {
    auto scene = std::make_unique<Scene>(width, height, bench::whole_sky(stars));
    if (segments > 0) {
        bench::pan(scene->cameras, segments, degrees);
    }
    return scene;
}

void draw(benchmark::State& state, DrawPath path, Case& frame) {
    if (!bench::agrees(state, frame.difference)) {
        return;
    }
    const bench::DrawBy by(path);
    for (auto _ : state) {
        benchmark::DoNotOptimize(frame.scene->draw());
    }
    state.counters["pixels"] = frame.needs.exponentials;
    bench::report(state, 1, frame.needs);
}

/// 2.5 million stars all over the sky, default controls, the camera holds still.
void frame_still(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 2500000, 0), kStill);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_still);

/// The same while the camera turns by 5 degrees in 16 segments.
void frame_pan16(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 2500000, 16), kCrossing);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_pan16);

/// The slow pan of most shots: 0.2 degrees, half a pixel a segment.
void frame_slow_pan(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 2500000, 16, 0.2), kStill);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_slow_pan);

/// A camera that hardly moves: 0.02 degrees.
void frame_drift(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 2500000, 16, 0.02), kStill);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_drift);

/// The catalogue that ships, rolling by 5 degrees: from no movement in the middle to half a pixel a
/// segment in the corners.
void frame_roll(benchmark::State& state, DrawPath path) {
    static Case frame = [] {
        auto scene = std::make_unique<Scene>(kWidth, kHeight, bench::shipped_sky());
        bench::roll(scene->cameras, 100, 5);
        return Case(std::move(scene), kStill);
    }();
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_roll);

/// A million stars on the frame, 220 pixels each on average: energy 0.2 and a reach of 6.4 pixels.
void frame_dense(benchmark::State& state, DrawPath path) {
    static Case frame(
        std::make_unique<Scene>(kWidth, kHeight, bench::framed_sky(1000000, 0.2F / bench::kEnergy)),
        kStill);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_dense);

/// As many samples as the controls allow, of a tenth of the sky.
void frame_101_samples(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 250000, 100), kCrossing);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_101_samples);

/// Spots of 96 pixels' radius, of a hundredth of the sky.
void frame_huge_spots(benchmark::State& state, DrawPath path) {
    static Case frame = [] {
        auto scene = sky_scene(kWidth, kHeight, 25000, 0);
        scene->settings.spot_size_x = scene->settings.spot_size_y = 100;
        return Case(std::move(scene), kStill);
    }();
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_huge_spots);

/// 3840 x 2160.
void frame_4k(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(2 * kWidth, 2 * kHeight, 2500000, 0), kStill);
    draw(state, path, frame);
}
BENCHMARK_PAIR(frame_4k);

/// `frame_still` with a star file that has to come from the disk.
void frame_still_cold(benchmark::State& state, DrawPath path) {
    static Case frame(sky_scene(kWidth, kHeight, 2500000, 0), kStill);
    if (!bench::agrees(state, frame.difference)) {
        return;
    }
    const bench::DrawBy by(path);
    bool was_cold = true;
    for (auto _ : state) {
        state.PauseTiming();
        was_cold = frame.scene->sky.drop_from_page_cache() && was_cold;
        state.ResumeTiming();
        benchmark::DoNotOptimize(frame.scene->draw());
    }
    state.SetLabel(was_cold ? "real time"
                            : "real time, WARM: the file system keeps the file in memory");
    // The disk's speed is not known.
    bench::report(state, 1, {});
}
BENCHMARK_CAPTURE(frame_still_cold, plain, DrawPath::Plain)->UseRealTime();
BENCHMARK_CAPTURE(frame_still_cold, fast, DrawPath::Fast)->UseRealTime();

}  // namespace
