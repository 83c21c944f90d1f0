// The frame before and after the stars: clearing, and the host's integer pixels. Per frame.
#include "pair.h"

#include <AE/render.h>

#include <cstdlib>
#include <memory>

namespace {

using bench::HEIGHT;
using bench::WIDTH;

constexpr double PIXELS = static_cast<double>(WIDTH) * HEIGHT;
constexpr double FLOAT_BYTES = 16 * PIXELS;

/// Blanking is the same for both paths.
void clear_frame(benchmark::State& state) {
    static bench::FloatFrame frame(WIDTH, HEIGHT);
    for (auto _ : state) {
        frame.clear();
        benchmark::ClobberMemory();
    }
    bench::Needs needs;
    needs.written_bytes = FLOAT_BYTES;
    bench::report(state, 1, needs);
}
BENCHMARK(clear_frame);

template <class Code>
class Codes {
public:
    Codes() : codes_(std::size_t{4} * WIDTH * HEIGHT) {
        void* first = codes_.data();
        world_.data = static_cast<PF_Pixel*>(first);
        world_.width = WIDTH;
        world_.height = HEIGHT;
        world_.rowbytes = static_cast<A_long>(4 * WIDTH * sizeof(Code));
    }
    void convert(DrawPath path, const Kelv::Image& image) {
        const bench::DrawBy by(path);
        convert_image(image, sizeof(Code) == 1 ? PF_PixelFormat_ARGB32 : PF_PixelFormat_ARGB64,
                      &world_);
    }
    /// Whether both paths give codes that are one apart at most.
    bool agree(const Kelv::Image& image) {
        convert(DrawPath::plain, image);
        const std::vector<Code> plain = codes_;
        codes_.assign(codes_.size(), 0);
        convert(DrawPath::fast, image);
        for (std::size_t i = 0; i < codes_.size(); ++i) {
            if (std::abs(int{codes_[i]} - int{plain[i]}) > 1) {
                return false;
            }
        }
        return true;
    }

private:
    std::vector<Code> codes_;
    PF_EffectWorld world_ = {};
};

/// A frame of stars: mostly black, with all values up to above full scale.
template <class Code>
void convert(benchmark::State& state, DrawPath path) {
    static bench::Scene* const scene = [] {
        static bench::Scene made(WIDTH, HEIGHT, bench::whole_sky(2500000));
        made.draw();
        return &made;
    }();
    static Codes<Code> codes;
    static const bool agree = codes.agree(scene->frame.image());
    if (!bench::agrees(state, agree ? "" : "codes differ by more than one")) {
        return;
    }
    for (auto _ : state) {
        codes.convert(path, scene->frame.image());
        benchmark::ClobberMemory();
    }
    bench::Needs needs;
    needs.read_bytes = FLOAT_BYTES;
    needs.written_bytes = 4 * PIXELS * sizeof(Code);
    bench::report(state, 1, needs);
}

void convert_8(benchmark::State& state, DrawPath path) { convert<unsigned char>(state, path); }
BENCHMARK_PAIR(convert_8);

void convert_16(benchmark::State& state, DrawPath path) { convert<unsigned short>(state, path); }
BENCHMARK_PAIR(convert_16);

}  // namespace
