// What the plain streak costs a pixel: still spots, ordinary streaks, and streaks so long that the
// error functions are saturated nearly everywhere.
#include <libimgops/streak.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1080;

/// A float image with four channels a pixel: alpha, red, green, blue.
struct Frame {
    std::vector<float> pixels = std::vector<float>(std::size_t{4} * WIDTH * HEIGHT, 0.0F);
    StarFramebuffer view() {
        StarFramebuffer fb;
        fb.a = pixels.data();
        fb.r = fb.a + 1;
        fb.g = fb.a + 2;
        fb.b = fb.a + 3;
        fb.width = WIDTH;
        fb.height = HEIGHT;
        fb.stride = 4 * WIDTH;
        fb.pixel_stride = 4;
        return fb;
    }
};

struct Segment {
    Vector2 from;
    Vector2 to;
    float energy;
};

/// Segments of `length` pixels in all directions, with the magnitude law of a real catalogue: per
/// magnitude about three times as many stars.
std::vector<Segment> segments(float length, int count) {
    std::mt19937 random(20261121);
    std::uniform_real_distribution<float> x(0, WIDTH), y(0, HEIGHT), turn(0, 6.2831853F);
    std::exponential_distribution<float> brighter(1.1F);
    std::vector<Segment> result;
    for (int i = 0; i < count; ++i) {
        const Vector2 from(x(random), y(random));
        const float angle = turn(random);
        const float magnitude = 10.0F - brighter(random);
        result.push_back({from,
                          {from[0] + length * std::cos(angle), from[1] + length * std::sin(angle)},
                          20.0F * std::pow(10.0F, -0.4F * magnitude)});
    }
    return result;
}

/// Pixels that gain light when `segments` are drawn.
double lit_pixels(const std::vector<Segment>& segments) {
    double lit = 0;
    Frame frame;
    const StarFramebuffer fb = frame.view();
    for (const Segment& s : segments) {
        std::fill(frame.pixels.begin(), frame.pixels.end(), 0.0F);
        op_star_streak(fb, s.from, s.to, s.energy, {1, 1, 1}, 2.4F, 2.4F, STARS_LINES_ALL);
        for (std::size_t i = 1; i < frame.pixels.size(); i += 4) {
            lit += frame.pixels[i] > 0 ? 1 : 0;
        }
    }
    return lit;
}

void plain_streak(benchmark::State& state) {
    const auto length = static_cast<float>(state.range(0));
    const std::vector<Segment> all = segments(length, 2000);
    const std::vector<Segment> sample(all.begin(), all.begin() + 50);
    const double pixels_each = lit_pixels(sample) / static_cast<double>(sample.size());
    Frame frame;
    const StarFramebuffer fb = frame.view();
    for (auto _ : state) {
        for (const Segment& s : all) {
            benchmark::DoNotOptimize(
                op_star_streak(fb, s.from, s.to, s.energy, {1, 1, 1}, 2.4F, 2.4F, STARS_LINES_ALL));
        }
    }
    const double stars = static_cast<double>(state.iterations()) * static_cast<double>(all.size());
    state.counters["stars"] = benchmark::Counter(stars, benchmark::Counter::kIsRate);
    state.counters["lit pixels"] =
        benchmark::Counter(stars * pixels_each, benchmark::Counter::kIsRate);
}
BENCHMARK(plain_streak)->Arg(0)->Arg(3)->Arg(30)->Arg(300)->Unit(benchmark::kMillisecond);

}  // namespace
