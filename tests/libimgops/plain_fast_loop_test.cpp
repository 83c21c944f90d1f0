// How the fast path goes through the source: what it reads and where it leaves the cursor; and
// which frames it leaves to the plain path.
#include <base/scoped_ptr.h>
#include <gtest/gtest.h>
#include <libimgops/renderer.h>
#include <libimgops/starfile.h>

#include <cstddef>
#include <limits>

#include "kernels/kernel_sets.h"
#include "plain_fast_scene.h"
#include "star_scene.h"
#include "support/memory_stars.h"
#include "support/scratch.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;
using support::GuardedFrame;
using support::MemoryStars;

/// Hands out rows of random lengths, and remembers how many records were taken.
class PiecewiseStars : public StarInput {
public:
    explicit PiecewiseStars(const std::vector<CatalogueStar>& stars)
        : bytes_(support::catalogue_bytes(support::kVersion2, stars)),
          records_(bytes_.size() / sizeof(star)),
          random_(1) {
        std::memcpy(records_.data(), bytes_.data(), bytes_.size());
        n = static_cast<u32>(records_.size());
    }
    const star* next() override {
        u32 one = 1;
        return take(one);
    }
    void reset() override { taken_ = 0; }
    const star* next_in_row(u32& count) override {
        EXPECT_GE(count, 1U);
        const u32 some = 1 + random_.bits() % 40;
        count = some < count ? some : count;
        return take(count);
    }
    u32 taken() const { return taken_; }

private:
    const star* take(u32 count) {
        EXPECT_LE(taken_ + count, n) << "beyond the end";
        taken_ += count;
        return &records_[taken_ - count];
    }

    std::string bytes_;
    std::vector<star> records_;
    RandomNumbers random_;
    u32 taken_ = 0;
};

Scene busy_scene(int stars) {
    RandomNumbers random(11);
    Scene scene = default_scene(random, 64, 36);
    scatter_stars(scene, random, stars);
    return scene;
}

}  // namespace

TEST(FastLoop, ReadsEveryRecordOnceWhateverTheRowsAre) {
    // Around the number of stars that are gathered at a time.
    for (const int count : {0, 1, 2, 511, 512, 513, 1024, 3000}) {
        const Scene scene = busy_scene(count);
        const Drawn whole = draw(scene, DrawPath::Fast);
        EXPECT_EQ(whole.place, count + 1);

        const PathInUse fast(DrawPath::Fast);
        PiecewiseStars input(scene.stars);
        const Canvas canvas(scene);
        StarRenderer renderer = canvas.renderer(input);
        bool drew = false;
        renderer.render_stars(drew);
        EXPECT_EQ(input.taken(), input.nstars());
        EXPECT_EQ(drew, whole.drew);
        EXPECT_TRUE(canvas.frame.same_bits(whole.frame));
        EXPECT_FALSE(renderer.render_star(drew)) << "none is left";
        renderer.render_stars(drew);
        EXPECT_EQ(input.taken(), input.nstars()) << "nothing is read again";
        EXPECT_TRUE(canvas.frame.same_bits(whole.frame));
    }
}

TEST(FastLoop, ReadsNothingWithoutBrightness) {
    for (const double none : {0.0, -0.0}) {
        Scene scene = busy_scene(700);
        scene.data.brightness = none;
        for (const DrawPath path : {DrawPath::Plain, DrawPath::Fast}) {
            Drawn drawn = draw(scene, path);
            EXPECT_EQ(drawn.place, 1) << "the header";
            EXPECT_FALSE(drawn.drew);
            EXPECT_TRUE(drawn.frame.is_blank());
        }
    }
}

// A file's cursor is seen by the address of the record that it would hand out next.
TEST(FastLoop, LeavesTheCursorOfAFileWhereThePlainPathDoes) {
    const ScratchFolder folder;
    const std::string path = folder / "sky.stars";
    for (const double brightness : {0.25, 0.0}) {
        Scene scene = busy_scene(1500);
        scene.data.brightness = brightness;
        support::write_catalogue(path, scene.magic, scene.stars);
        std::ptrdiff_t places[2];
        int i = 0;
        for (const DrawPath draw_path : {DrawPath::Plain, DrawPath::Fast}) {
            const PathInUse in_use(draw_path);
            MMAPStarFile input(path.c_str());
            const star* first = input.next();
            input.reset();
            const Canvas canvas(scene);
            StarRenderer renderer = canvas.renderer(input);
            bool drew = false;
            renderer.render_stars(drew);
            places[i++] = input.next() - first;
        }
        EXPECT_EQ(places[1], places[0]);
        EXPECT_EQ(places[1], brightness == 0 ? 1 : 1501);
    }
}

TEST(FastLoop, TakesOverFromSingleStars) {
    const Scene scene = busy_scene(1200);
    const Drawn whole = draw(scene, DrawPath::Fast);
    for (const int singles : {1, 5, 511, 512, 1199, 1200}) {
        const PathInUse fast(DrawPath::Fast);
        MemoryStars input(scene.magic, scene.stars);
        const Canvas canvas(scene);
        StarRenderer renderer = canvas.renderer(input);
        bool drew = false;
        for (int i = 0; i < singles; ++i) {
            EXPECT_EQ(renderer.render_star(drew), i + 1 < 1200);
        }
        renderer.render_stars(drew);
        EXPECT_EQ(drew, whole.drew);
        EXPECT_EQ(input.place(), 1201);
        Drawn mixed;
        mixed.frame = canvas.frame;
        EXPECT_LE(difference(whole, mixed, std::vector<bool>(64 * 36)).ordinary, kOrdinaryBound);
    }
}

TEST(FastLoop, AddsToWhatARendererBeforeItLeft) {
    const Scene scene = busy_scene(900);
    const auto drawn_twice = [&](DrawPath path) {
        const PathInUse in_use(path);
        MemoryStars input(scene.magic, scene.stars);
        const Canvas canvas(scene);
        Drawn drawn;
        for (int round = 0; round < 2; ++round) {
            canvas.renderer(input).render_stars(drawn.drew);
            input.reset();
        }
        EXPECT_TRUE(drawn.drew);
        drawn.frame = canvas.frame;
        return drawn;
    };
    const Drawn fast = drawn_twice(DrawPath::Fast);
    const std::vector<bool> none(64 * 36);
    const Difference off = difference(drawn_twice(DrawPath::Plain), fast, none);
    EXPECT_LE(off.ordinary, kOrdinaryBound);
    const double once = difference(draw(scene, DrawPath::Plain), fast, none).peak;
    EXPECT_NEAR(off.peak, 2 * once, 1e-5 * once);
}

TEST(FastLoop, NeverClearsTheFlag) {
    Scene scene = busy_scene(10);
    for (CatalogueStar& star : scene.stars) {
        star.luminance = 0;
    }
    for (const bool before : {false, true}) {
        scene.drew_before = before;
        EXPECT_EQ(draw(scene, DrawPath::Fast).drew, before);
    }
}

// --- frames that the fast path leaves to the plain one ----------------------------------------

namespace {

/// A frame of floats, any layout.
struct Floats {
    explicit Floats(std::size_t count) : values(count) {}
    std::vector<float> values;
    StarFramebuffer fb;
};

/// Lays out a frame of 40 x 24.
using Layout = void (*)(Floats&);
void expect_plain_bits(const Scene& scene, Layout layout) {
    Floats plain(30000), fast(30000);
    layout(plain);
    layout(fast);
    const kernel_sets::Counted counted;
    const Drawn p = draw_into(scene, DrawPath::Plain, plain.fb);
    const Drawn f = draw_into(scene, DrawPath::Fast, fast.fb);
    EXPECT_EQ(counted.calls().all(), 0);
    EXPECT_EQ(p.drew, f.drew);
    EXPECT_EQ(p.place, f.place);
    EXPECT_EQ(p.failure, f.failure);
    EXPECT_EQ(std::memcmp(plain.values.data(), fast.values.data(), sizeof(float) * 30000), 0);
    EXPECT_TRUE(p.drew);
}

Scene scene_for_layouts(int segments) {
    RandomNumbers random(21);
    Scene scene = default_scene(random, 40, 24);
    scene.data.brightness = 3;
    if (segments > 0) {
        pan(scene, random, segments, 10);
    }
    scatter_stars(scene, random, 200);
    return scene;
}

void lay_out(Floats& floats, std::ptrdiff_t a, std::ptrdiff_t r, std::ptrdiff_t g, std::ptrdiff_t b,
             int stride, int pixel_stride) {
    float* first = floats.values.data();
    floats.fb.a = first + a;
    floats.fb.r = first + r;
    floats.fb.g = first + g;
    floats.fb.b = first + b;
    floats.fb.width = 40;
    floats.fb.height = 24;
    floats.fb.stride = stride;
    floats.fb.pixel_stride = pixel_stride;
}

}  // namespace

TEST(OtherLayouts, AreDrawnByThePlainPath) {
    for (const int segments : {0, 3}) {
        const Scene scene = scene_for_layouts(segments);
        // Three floats a pixel, coverage elsewhere.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 10000, 0, 1, 2, 120, 3); });
        // One plane a channel.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 0, 1000, 2000, 3000, 40, 1); });
        // Coverage last.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 3, 0, 1, 2, 160, 4); });
        // Blue before red.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 0, 3, 2, 1, 160, 4); });
        // Five floats a pixel.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 0, 1, 2, 3, 200, 5); });
        // Rows that reach into the next ones.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 0, 1, 2, 3, 159, 4); });
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 0, 1, 2, 3, 30, 4); });
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 200, 201, 202, 203, -3, 4); });
        // One coverage for the whole frame, beside the pixels.
        expect_plain_bits(scene, [](Floats& to) { lay_out(to, 20000, 1, 2, 3, 160, 4); });
    }
}

TEST(OtherLayouts, AreDrawnFastWhereOnlyRowsDiffer) {
    const Scene scene = scene_for_layouts(0);
    // From the bottom up.
    for (const int stride : {160, 163, 1000, -160}) {
        Floats plain(30000), fast(30000);
        for (Floats* to : {&plain, &fast}) {
            const std::ptrdiff_t first = stride < 0 ? -stride * 24 : 0;
            lay_out(*to, first, first + 1, first + 2, first + 3, stride, 4);
        }
        const Drawn p = draw_into(scene, DrawPath::Plain, plain.fb);
        const kernel_sets::Counted counted;
        const Drawn f = draw_into(scene, DrawPath::Fast, fast.fb);
        EXPECT_GT(counted.calls().spot, 20) << stride;
        EXPECT_TRUE(p.drew && f.drew);
        for (std::size_t i = 0; i < plain.values.size(); ++i) {
            ASSERT_NEAR(plain.values[i], fast.values[i], 1e-6) << stride;
        }
    }
}

TEST(OtherRows, AreDrawnByThePlainPath) {
    for (const op_stars_lines lines :
         {STARS_LINES_EVEN, STARS_LINES_ODD, static_cast<op_stars_lines>(7)}) {
        for (const int segments : {0, 3}) {
            Scene scene = scene_for_layouts(segments);
            scene.data.lines = lines;
            const kernel_sets::Counted counted;
            expect_same_bits(scene);
            EXPECT_EQ(counted.calls().all(), 0);
        }
    }
}

TEST(OtherProjections, FailAsOnThePlainPath) {
    for (const int projection : {3, -1, 1000}) {
        Scene scene = scene_for_layouts(0);
        scene.data.projection = static_cast<op_stars_projection>(projection);
        // Stars below the threshold come first: they do not fail.
        scene.data.threshold = static_cast<double>(scene.stars[5].luminance);
        for (int i = 0; i < 5; ++i) {
            scene.stars[static_cast<std::size_t>(i)].luminance = 0;
        }
        const Drawn plain = draw(scene, DrawPath::Plain);
        const Drawn fast = draw(scene, DrawPath::Fast);
        EXPECT_EQ(plain.failure.find("unknown projection in <"), 0U) << plain.failure;
        EXPECT_EQ(fast.failure, plain.failure);
        EXPECT_TRUE(fast.frame.same_bits(plain.frame));
        scene.data.threshold = std::numeric_limits<double>::infinity();
        EXPECT_EQ(draw(scene, DrawPath::Fast).failure, "") << "no star asks";
    }
}

// Rows and columns are kept in 16 bits.
TEST(OtherSizes, AreDrawnByThePlainPathBeyond16Bits) {
    for (const int width : {32767, 32768, 40000}) {
        RandomNumbers random(31);
        Scene scene = default_scene(random, width, 2);
        scene.data.spot_size_x = scene.data.spot_size_y = 0.2;
        scatter_stars(scene, random, 50);
        const kernel_sets::Counted counted;
        if (width > 32767) {
            expect_same_bits(scene);
            EXPECT_EQ(counted.calls().all(), 0);
        } else {
            EXPECT_GT(expect_promise(scene).peak, 0);
            EXPECT_GT(counted.calls().spot, 0);
        }
    }
}
