// The frame before and after the stars: clearing, and the host's integer pixels. Per frame.
#include <algorithm>
#include <cstdlib>

#include "host_frame.h"
#include "pair.h"

namespace {

using bench::kHeight;
using bench::kWidth;

constexpr double kPixels = static_cast<double>(kWidth) * kHeight;
constexpr double kFloatBytes = 16 * kPixels;

/// Blanking is the same for both paths.
void clear_frame(benchmark::State& state) {
    static bench::FloatFrame frame(kWidth, kHeight);
    for (auto _ : state) {
        frame.clear();
        benchmark::ClobberMemory();
    }
    bench::Needs needs;
    needs.written_bytes = kFloatBytes;
    bench::report(state, 1, needs);
}
BENCHMARK(clear_frame);

/// Whether both paths give codes that are one apart at most.
template <class Code>
bool agree(Kelv::Image& image) {
    bench::HostFrame<Code> plain(kWidth, kHeight), fast(kWidth, kHeight);
    {
        const bench::DrawBy by(DrawPath::Plain);
        plain.take(image);
    }
    fast.take(image);
    return std::equal(plain.codes().begin(), plain.codes().end(), fast.codes().begin(),
                      [](int a, int b) { return std::abs(a - b) <= 1; });
}

/// A frame of stars: mostly black, with all values up to above full scale.
template <class Code>
void convert(benchmark::State& state, DrawPath path) {
    static bench::Scene* const scene = [] {
        static bench::Scene made(kWidth, kHeight, bench::whole_sky(2500000));
        made.draw();
        return &made;
    }();
    static bench::HostFrame<Code> codes(kWidth, kHeight);
    static const bool same = agree<Code>(scene->frame.image());
    if (!bench::agrees(state, same ? "" : "codes differ by more than one")) {
        return;
    }
    const bench::DrawBy by(path);
    for (auto _ : state) {
        codes.take(scene->frame.image());
        benchmark::ClobberMemory();
    }
    bench::Needs needs;
    needs.read_bytes = kFloatBytes;
    needs.written_bytes = 4 * kPixels * sizeof(Code);
    bench::report(state, 1, needs);
}

void convert_8(benchmark::State& state, DrawPath path) { convert<unsigned char>(state, path); }
BENCHMARK_PAIR(convert_8);

void convert_16(benchmark::State& state, DrawPath path) { convert<unsigned short>(state, path); }
BENCHMARK_PAIR(convert_16);

}  // namespace
