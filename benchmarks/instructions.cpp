// A small fixed workload whose instructions are counted, case by case: each case is a function of
// its own, named count_CASE_PATH. Prints what each did: case, path, units.
//
// The fast path runs the kernels for AVX2: the counting machine knows no wider ones.
#include <cstdio>
#include <cstring>
#include <memory>

#include "host_frame.h"
#include "libimgops/fast/kernels/choice.h"
#include "places.h"
#include "scene.h"
#include "segments.h"

namespace {

using bench::DrawBy;
using bench::kHeight;
using bench::kWidth;
using bench::Scene;
using bench::SegmentScene;

/// Everything is made before anything is counted.
struct Workload {
    Workload()
        : faint(kWidth, kHeight, bench::faint_sky(200000)),
          off_frame(kWidth, kHeight, bench::off_frame_sky(50000)),
          panned(kWidth, kHeight, bench::behind_sky(10000)),
          slow_pan(kWidth, kHeight, bench::framed_sky(300, kFramed)),
          drift(kWidth, kHeight, bench::framed_sky(600, kFramed)),
          roll(kWidth, kHeight, bench::framed_sky(100, kFramed)),
          places(1000, Persp),
          spots(bench::even_segments(0, 4000)),
          streaks(bench::even_segments(30, 400)),
          short_streaks(bench::even_segments(9.4F, 1000)),
          tiny_streaks(bench::even_segments(0.2F, 1000)),
          crossing(bench::crossing_segments(20)),
          frame(kConvertedWidth, kConvertedHeight),
          codes_8(kConvertedWidth, kConvertedHeight),
          codes_16(kConvertedWidth, kConvertedHeight) {
        bench::pan(panned.cameras, kSegments);
        bench::pan(slow_pan.cameras, kSegments, 0.2);
        bench::pan(drift.cameras, kSegments, 0.02);
        bench::roll(roll.cameras, 100, 5);
    }
    static constexpr int kSegments = 16;
    static constexpr int kConvertedWidth = 480;
    static constexpr int kConvertedHeight = 270;
    /// Luminance of the stars on the frame: magnitude 5.8, in the middle of those that are drawn.
    static constexpr float kFramed = 0.005F;
    Scene faint, off_frame, panned, slow_pan, drift, roll;
    bench::Places places;
    SegmentScene spots, streaks, short_streaks, tiny_streaks, crossing;
    bench::FloatFrame frame;
    bench::HostFrame<unsigned char> codes_8;
    bench::HostFrame<unsigned short> codes_16;
};

std::unique_ptr<Workload> work;

void draw(Scene& scene, DrawPath path) {
    const DrawBy by(path);
    scene.draw_stars();
}

double visited_pixels(Scene& scene) {
    double visited = 0;
    scene.for_each_segment([&](const bench::DrawnSegment& segment) {
        visited += bench::visited_pixels(scene.frame.view(), segment, scene.spot());
        return true;
    });
    return visited;
}

template <class Frame>
void convert(Frame& to, DrawPath path) {
    const DrawBy by(path);
    to.take(work->frame.image());
}

}  // namespace

// Both paths' functions of a case, of what is done by `path`. In C, so that the counts have plain
// names.
#define COUNTED(name, done)                                            \
    extern "C" __attribute__((noinline)) void count_##name##_plain() { \
        constexpr DrawPath path = DrawPath::Plain;                     \
        done;                                                          \
    }                                                                  \
    extern "C" __attribute__((noinline)) void count_##name##_fast() {  \
        constexpr DrawPath path = DrawPath::Fast;                      \
        done;                                                          \
    }

COUNTED(below_threshold_star, draw(work->faint, path))
COUNTED(off_frame_star, draw(work->off_frame, path))
COUNTED(unseen_sample, draw(work->panned, path))
COUNTED(slow_pan_pixel, draw(work->slow_pan, path))
COUNTED(drift_pixel, draw(work->drift, path))
COUNTED(roll_pixel, draw(work->roll, path))
COUNTED(projected_sample, work->places.project(path))
COUNTED(still_pixel, work->spots.draw(path))
COUNTED(streak_pixel, work->streaks.draw(path))
COUNTED(short_streak_pixel, work->short_streaks.draw(path))
COUNTED(tiny_streak_pixel, work->tiny_streaks.draw(path))
COUNTED(crossing_pixel, work->crossing.draw(path))
COUNTED(converted_8_pixel, convert(work->codes_8, path))
COUNTED(converted_16_pixel, convert(work->codes_16, path))

int main() {
    for (const star_kernels::Kernels* const* set = star_kernels::built(); *set != nullptr; ++set) {
        if (std::strcmp((*set)->name, "avx2") == 0 && star_kernels::runs_here(**set)) {
            star_kernels::use(*set);
        }
    }
    if (star_kernels::in_use() == nullptr ||
        std::strcmp(star_kernels::in_use()->name, "avx2") != 0) {
        std::fputs("the kernels for AVX2 do not run here\n", stderr);
        return 1;
    }
    work = std::make_unique<Workload>();
    const double converted = double{Workload::kConvertedWidth} * Workload::kConvertedHeight;
#define CASE(name, units) \
    { #name, static_cast < double>(units), count_##name##_plain, count_##name##_fast }
    const struct {
        const char* name;
        double units;
        void (*plain)();
        void (*fast)();
    } cases[] = {
        CASE(below_threshold_star, work->faint.sky.stars()),
        CASE(off_frame_star, work->off_frame.sky.stars()),
        CASE(unseen_sample, work->panned.sky.stars() * (Workload::kSegments + 1.0)),
        CASE(slow_pan_pixel, visited_pixels(work->slow_pan)),
        CASE(drift_pixel, visited_pixels(work->drift)),
        CASE(roll_pixel, visited_pixels(work->roll)),
        CASE(projected_sample, work->places.samples()),
        CASE(still_pixel, work->spots.visited_pixels()),
        CASE(streak_pixel, work->streaks.visited_pixels()),
        CASE(short_streak_pixel, work->short_streaks.visited_pixels()),
        CASE(tiny_streak_pixel, work->tiny_streaks.visited_pixels()),
        CASE(crossing_pixel, work->crossing.visited_pixels()),
        CASE(converted_8_pixel, converted),
        CASE(converted_16_pixel, converted),
    };
    for (const auto& counted : cases) {
        counted.plain();
        counted.fast();
        std::printf("%s plain %.0f\n%s fast %.0f\n", counted.name, counted.units, counted.name,
                    counted.units);
    }
    work.reset();
    return 0;
}
