// How the fast path goes through the source: what it reads and where it leaves the cursor; and
// which frames it leaves to the plain path.
#include <base/scoped_ptr.h>
#include <gtest/gtest.h>
#include <libimgops/renderer.h>
#include <libimgops/starfile.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
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

/// Hands out rows of random lengths.
class PiecewiseStars : public MemoryStars {
public:
    using MemoryStars::MemoryStars;
    const star* next_in_row(u32& count) override {
        EXPECT_GE(count, 1U);
        count = std::min(count, 1 + random_.bits() % 40);
        const star* first = next();
        for (u32 i = 1; i < count; ++i) {
            next();
        }
        return first;
    }

private:
    RandomNumbers random_{1};
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
        PiecewiseStars input(scene.magic, scene.stars);
        const Canvas canvas(scene);
        StarRenderer renderer = canvas.renderer(input);
        bool drew = false;
        renderer.render_stars(drew);
        EXPECT_EQ(input.place(), input.nstars());
        EXPECT_EQ(drew, whole.drew);
        EXPECT_TRUE(canvas.frame.same_bits(whole.frame));
        EXPECT_FALSE(renderer.render_star(drew)) << "none is left";
        renderer.render_stars(drew);
        EXPECT_EQ(input.place(), input.nstars()) << "nothing is read again";
        EXPECT_TRUE(canvas.frame.same_bits(whole.frame));
    }
}

// A file's cursor is seen by the address of the record that it would hand out next.
TEST(FastLoop, LeavesTheCursorOfAFileWhereThePlainPathDoes) {
    const ScratchFolder folder;
    const std::string path = folder / "sky.stars";
    for (const double brightness : {0.25, 0.0, -0.0}) {
        Scene scene = busy_scene(1500);
        scene.data.brightness = brightness;
        support::write_catalogue(path, scene.magic, scene.stars);
        for (const DrawPath draw_path : support::kBothPaths) {
            const PathInUse in_use(draw_path);
            MMAPStarFile input(path.c_str());
            const star* first = input.next();
            input.reset();
            const Canvas canvas(scene);
            StarRenderer renderer = canvas.renderer(input);
            bool drew = false;
            renderer.render_stars(drew);
            EXPECT_EQ(input.next() - first, brightness == 0 ? 1 : 1501);
            EXPECT_EQ(drew, brightness != 0);
            EXPECT_EQ(canvas.frame.is_blank(), brightness == 0);
        }
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

// --- frames that the fast path leaves to the plain one ----------------------------------------

namespace {

/// A frame of 40 x 24 pixels in any layout: the places of the first pixel's floats, and the
/// distances from row to row and from pixel to pixel.
struct Layout {
    const char* what;
    std::ptrdiff_t a, r, g, b;
    int stride, pixel_stride;
};

struct Floats {
    explicit Floats(const Layout& of) : values(30000) {
        fb.a = &values[0] + of.a;
        fb.r = &values[0] + of.r;
        fb.g = &values[0] + of.g;
        fb.b = &values[0] + of.b;
        fb.width = 40;
        fb.height = 24;
        fb.stride = of.stride;
        fb.pixel_stride = of.pixel_stride;
    }
    std::vector<float> values;
    StarFramebuffer fb;
};

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

}  // namespace

TEST(OtherLayouts, AreDrawnByThePlainPath) {
    const Layout layouts[] = {{"three floats a pixel, coverage elsewhere", 10000, 0, 1, 2, 120, 3},
                              {"one plane a channel", 0, 1000, 2000, 3000, 40, 1},
                              {"coverage last", 3, 0, 1, 2, 160, 4},
                              {"blue before red", 0, 3, 2, 1, 160, 4},
                              {"five floats a pixel", 0, 1, 2, 3, 200, 5},
                              {"rows that overlap by a float", 0, 1, 2, 3, 159, 4},
                              {"rows that overlap", 0, 1, 2, 3, 30, 4},
                              {"rows that overlap backwards", 200, 201, 202, 203, -3, 4},
                              {"one coverage for all pixels", 20000, 1, 2, 3, 160, 4}};
    for (const int segments : {0, 3}) {
        const Scene scene = scene_for_layouts(segments);
        for (const Layout& layout : layouts) {
            SCOPED_TRACE(layout.what);
            Floats plain(layout), fast(layout);
            const kernel_sets::Counted counted;
            const Drawn p = draw_into(scene, DrawPath::Plain, plain.fb);
            const Drawn f = draw_into(scene, DrawPath::Fast, fast.fb);
            EXPECT_EQ(counted.calls().all(), 0);
            EXPECT_TRUE(p.drew && f.drew);
            EXPECT_EQ(p.place, f.place);
            EXPECT_EQ(p.failure, f.failure);
            EXPECT_EQ(std::memcmp(&plain.values[0], &fast.values[0], sizeof(float) * 30000), 0);
        }
    }
}

TEST(OtherLayouts, AreDrawnFastWhereOnlyRowsDiffer) {
    const Scene scene = scene_for_layouts(0);
    const Layout layouts[] = {{"no padding", 0, 1, 2, 3, 160, 4},
                              {"padding", 0, 1, 2, 3, 163, 4},
                              {"much padding", 0, 1, 2, 3, 1000, 4},
                              {"from the bottom up", 3840, 3841, 3842, 3843, -160, 4}};
    for (const Layout& layout : layouts) {
        Floats plain(layout), fast(layout);
        const Drawn p = draw_into(scene, DrawPath::Plain, plain.fb);
        const kernel_sets::Counted counted;
        const Drawn f = draw_into(scene, DrawPath::Fast, fast.fb);
        EXPECT_GT(counted.calls().spot, 20) << layout.what;
        EXPECT_TRUE(p.drew && f.drew);
        for (std::size_t i = 0; i < plain.values.size(); ++i) {
            ASSERT_NEAR(plain.values[i], fast.values[i], 1e-6) << layout.what;
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
