// A small fixed workload whose instructions are counted, case by case: each case is a function of
// its own, named count_CASE_PATH. Prints what each did: case, path, units.
//
// The fast path runs the kernels for AVX2: the counting machine knows no wider ones.
#include "scene.h"
#include "segments.h"

#include "libimgops/kernels/choice.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using bench::DrawBy;
using bench::Scene;
using bench::SegmentScene;

/// Everything is made before anything is counted.
struct Workload {
    Workload()
        : faint(bench::WIDTH, bench::HEIGHT, bench::faint_sky(200000)),
          off_frame(bench::WIDTH, bench::HEIGHT, bench::off_frame_sky(50000)),
          panned(bench::WIDTH, bench::HEIGHT, bench::behind_sky(10000)),
          spots(bench::even_segments(0, 4000)),
          streaks(bench::even_segments(30, 400)),
          crossing(bench::crossing_segments(20)) {
        bench::pan(panned.cameras, SEGMENTS);
    }
    static constexpr int SEGMENTS = 16;
    Scene faint, off_frame, panned;
    SegmentScene spots, streaks, crossing;
};

std::unique_ptr<Workload> work;

void draw(Scene& scene, DrawPath path) {
    const DrawBy by(path);
    scene.draw_stars();
}

}  // namespace

// In C, so that the counts have plain names.
#define COUNTED(name) extern "C" __attribute__((noinline)) void name()

COUNTED(count_below_threshold_star_plain);
COUNTED(count_below_threshold_star_fast);
COUNTED(count_off_frame_star_plain);
COUNTED(count_off_frame_star_fast);
COUNTED(count_unseen_sample_plain);
COUNTED(count_unseen_sample_fast);
COUNTED(count_still_pixel_plain);
COUNTED(count_still_pixel_fast);
COUNTED(count_streak_pixel_plain);
COUNTED(count_streak_pixel_fast);
COUNTED(count_crossing_pixel_plain);
COUNTED(count_crossing_pixel_fast);

void count_below_threshold_star_plain() { draw(work->faint, DrawPath::plain); }
void count_below_threshold_star_fast() { draw(work->faint, DrawPath::fast); }
void count_off_frame_star_plain() { draw(work->off_frame, DrawPath::plain); }
void count_off_frame_star_fast() { draw(work->off_frame, DrawPath::fast); }
void count_unseen_sample_plain() { draw(work->panned, DrawPath::plain); }
void count_unseen_sample_fast() { draw(work->panned, DrawPath::fast); }
void count_still_pixel_plain() { work->spots.draw(DrawPath::plain); }
void count_still_pixel_fast() { work->spots.draw(DrawPath::fast); }
void count_streak_pixel_plain() { work->streaks.draw(DrawPath::plain); }
void count_streak_pixel_fast() { work->streaks.draw(DrawPath::fast); }
void count_crossing_pixel_plain() { work->crossing.draw(DrawPath::plain); }
void count_crossing_pixel_fast() { work->crossing.draw(DrawPath::fast); }

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
    const struct {
        const char* name;
        double units;
        void (*plain)();
        void (*fast)();
    } cases[] = {
        {"below_threshold_star", static_cast<double>(work->faint.sky.stars()),
         count_below_threshold_star_plain, count_below_threshold_star_fast},
        {"off_frame_star", static_cast<double>(work->off_frame.sky.stars()),
         count_off_frame_star_plain, count_off_frame_star_fast},
        {"unseen_sample", work->panned.sky.stars() * (Workload::SEGMENTS + 1.0),
         count_unseen_sample_plain, count_unseen_sample_fast},
        {"still_pixel", work->spots.visited_pixels(), count_still_pixel_plain,
         count_still_pixel_fast},
        {"streak_pixel", work->streaks.visited_pixels(), count_streak_pixel_plain,
         count_streak_pixel_fast},
        {"crossing_pixel", work->crossing.visited_pixels(), count_crossing_pixel_plain,
         count_crossing_pixel_fast},
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
