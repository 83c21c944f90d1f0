// The lens halo in halved images, beside the same Gaussians drawn sample by sample in the frame
// itself.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "halo.h"

namespace {

using lumivar::LinearImage;

constexpr int kStars = 3000;

LinearImage starry(int width) {
    const int height = width * 9 / 16;
    LinearImage image{
        width, height,
        std::vector<float>(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height))};
    std::mt19937 random(1);
    for (int i = 0; i < kStars; ++i) {
        image.samples[random() % image.samples.size()] += 1.0F;
    }
    return image;
}

/// One Gaussian over all samples of a row or column, weights from the middle outward.
void add_line(const float* in, float* out, int count, std::ptrdiff_t stride,
              const std::vector<double>& weights) {
    const int reach = static_cast<int>(weights.size()) - 1;
    for (int x = 0; x < count; ++x) {
        double sum = 0.0;
        for (int n = std::max(-reach, -x); n <= std::min(reach, count - 1 - x); ++n) {
            sum += weights[static_cast<std::size_t>(std::abs(n))] *
                   static_cast<double>(in[(x + n) * stride]);
        }
        out[x * stride] += static_cast<float>(sum);
    }
}

void add_halo_plainly(LinearImage& image) {
    const LinearImage light = image;
    for (float& sample : image.samples) {
        sample *= 0.77F;
    }
    for (const lumivar::HaloPart& part : lumivar::kHaloParts) {
        const double sigma = part.sigma * image.width / 1920.0;
        std::vector<double> weights;
        double total = 0.0;
        for (int n = 0; n <= 4.5 * sigma; ++n) {
            weights.push_back(std::exp(-0.5 * n * n / (sigma * sigma)));
            total += (n == 0 ? 1.0 : 2.0) * weights.back();
        }
        for (double& weight : weights) {
            weight /= total;
        }
        std::vector<float> rows(light.samples.size());
        for (int y = 0; y < image.height; ++y) {
            for (int c = 0; c < 3; ++c) {
                const std::ptrdiff_t at = std::ptrdiff_t{3} * y * image.width + c;
                add_line(&light.samples[static_cast<std::size_t>(at)],
                         &rows[static_cast<std::size_t>(at)], image.width, 3, weights);
            }
        }
        for (double& weight : weights) {
            weight *= part.share;
        }
        for (int x = 0; x < 3 * image.width; ++x) {
            add_line(&rows[static_cast<std::size_t>(x)],
                     &image.samples[static_cast<std::size_t>(x)], image.height,
                     std::ptrdiff_t{3} * image.width, weights);
        }
    }
}

void require_agreement(int width) {
    LinearImage plain = starry(width);
    LinearImage fast = plain;
    add_halo_plainly(plain);
    lumivar::add_halo(fast, 1.0);
    for (std::size_t i = 0; i < plain.samples.size(); ++i) {
        // The widest Gaussian of a star has a peak of 1.6e-5 here.
        if (!(std::fabs(plain.samples[i] - fast.samples[i]) <
              1e-6F + 0.01F * std::fabs(plain.samples[i]))) {
            std::fprintf(stderr, "the halos differ at sample %zu\n", i);
            std::exit(1);
        }
    }
}

template <class Halo>
void measure(benchmark::State& state, Halo halo) {
    const int width = static_cast<int>(state.range(0));
    require_agreement(std::min(width, 480));
    const LinearImage stars = starry(width);
    for (auto _ : state) {
        state.PauseTiming();
        LinearImage image = stars;
        state.ResumeTiming();
        halo(image);
        benchmark::DoNotOptimize(image.samples.data());
    }
}

void plain_halo(benchmark::State& state) { measure(state, add_halo_plainly); }
void fast_halo(benchmark::State& state) {
    measure(state, [](LinearImage& image) { lumivar::add_halo(image, 1.0); });
}

}  // namespace

// Widths of frames of 16 to 9.
BENCHMARK(plain_halo)->Arg(480)->Unit(benchmark::kMillisecond);
BENCHMARK(fast_halo)->Arg(480)->Arg(1920)->Arg(3840)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
