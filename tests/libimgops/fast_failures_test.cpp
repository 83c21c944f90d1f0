// What the fast path leaves behind when a star or the source throws in mid-frame: what the plain
// path does.
#include <gtest/gtest.h>
#include <libimgops/renderer.h>

#include <stdexcept>
#include <vector>

#include "plain_fast_scene.h"
#include "support/memory_stars.h"

namespace {

using namespace plain_fast;
using support::CatalogueStar;

/// A source of which one record cannot be read.
class TornStars : public support::MemoryStars {
public:
    TornStars(const Scene& scene, std::size_t torn)
        : MemoryStars(scene.magic, scene.stars), torn_(torn) {}
    const star* next() override {
        if (place() == torn_) {
            throw std::runtime_error("cannot be read");
        }
        return MemoryStars::next();
    }

private:
    std::size_t torn_;
};

/// Draws up to the record that cannot be read.
Drawn draw_torn(const Scene& scene, std::size_t torn, DrawPath path) {
    const PathInUse in_use(path);
    const Canvas canvas(scene);
    TornStars input(scene, torn);
    StarRenderer renderer = canvas.renderer(input);
    Drawn left;
    try {
        renderer.render_stars(left.drew);
    } catch (const std::runtime_error&) {
        left.failure = "torn";
    }
    left.place = input.place();
    left.frame = canvas.frame;
    return left;
}

/// A frame with spots of a pixel, and a second camera sample from which places are so far to the
/// lower left that the first column of a row overflows, which its guard refuses.
Scene refusing_scene(RandomNumbers& random, int stars) {
    Scene scene = default_scene(random, 40, 24);
    scene.data.spot_size_x = scene.data.spot_size_y = 50;
    scatter_stars(scene, random, stars);
    camera far = scene.cams.front();
    for (int row = 0; row < 4; ++row) {
        far.xform(row, 0) *= 1e16;
        far.xform(row, 1) *= 1e6;
    }
    scene.cams.push_back(far);
    return scene;
}

}  // namespace

TEST(TornSource, LeavesTheLightOfAllStarsBefore) {
    RandomNumbers random(51);
    for (const std::size_t torn : {2U, 100U, 300U, 513U, 899U}) {
        for (const bool moves : {false, true}) {
            Scene scene = default_scene(random, 64, 36);
            if (moves) {
                pan(scene, random, 3, 5);
            }
            scatter_stars(scene, random, 900);
            const Drawn plain = draw_torn(scene, torn, DrawPath::Plain);
            const Drawn fast = draw_torn(scene, torn, DrawPath::Fast);
            EXPECT_EQ(plain.failure, "torn");
            EXPECT_EQ(fast.failure, "torn");
            EXPECT_EQ(fast.place, torn);
            EXPECT_EQ(fast.place, plain.place);
            EXPECT_EQ(fast.drew, plain.drew);
            EXPECT_LE(difference(plain, fast, std::vector<bool>(64 * 36)).ordinary, kOrdinaryBound);
            EXPECT_TRUE(torn < 100 || plain.drew);
        }
    }
}

// The first segment of a star lights pixels, the second is refused: the star has no light to
// report.
TEST(RefusedStar, LeavesTheFlagAlone) {
    RandomNumbers random(41);
    int refused = 0;
    for (int i = 0; i < 400; ++i) {
        Scene scene = refusing_scene(random, 30);
        const Drawn once = draw(scene, DrawPath::Plain);
        if (once.failure.empty()) {
            continue;
        }
        // That star alone, which stays first; two segments share its light.
        const CatalogueStar star = scene.stars[once.place - 2];
        scene.stars = {star};
        scene.stars[0].luminance = 2 * star.luminance;
        scene.cams.insert(scene.cams.begin(), scene.cams.front());
        const Drawn plain = draw(scene, DrawPath::Plain);
        const Drawn fast = draw(scene, DrawPath::Fast);
        EXPECT_EQ(plain.failure, fast.failure);
        EXPECT_EQ(plain.place, fast.place);
        EXPECT_EQ(plain.drew, fast.drew);
        EXPECT_TRUE(plain.frame.same_bits(fast.frame));
        refused += !fast.failure.empty() && !fast.drew && !fast.frame.is_blank() ? 1 : 0;
    }
    EXPECT_GT(refused, 0);
}

// A far end to the lower left makes a row's first column overflow, which its guard refuses: with
// the same words, after the same light. Some 1e10 columns a row, less the spot's reach times as
// many, come to between 2^31, where columns end, and the 2^32 that is lost in a midpoint 5e16
// pixels off.
TEST(Guards, RefuseAsOnThePlainPath) {
    RandomNumbers random(41);
    int refused = 0;
    for (int i = 0; i < 400; ++i) {
        Scene scene = refusing_scene(random, 20);
        CatalogueStar star;
        set_angles(star, direction_of(scene.cams.front(), random.between(-1.2, -0.4),
                                      random.between(-0.9, -0.5)));
        star.luminance = 0.0005F;
        scene.stars.insert(scene.stars.begin() + 10, star);
        const Drawn plain = draw(scene, DrawPath::Plain);
        const Drawn fast = draw(scene, DrawPath::Fast);
        EXPECT_EQ(plain.failure, fast.failure);
        EXPECT_EQ(plain.drew, fast.drew);
        EXPECT_EQ(plain.place, fast.place) << "behind the refused star";
        EXPECT_LE(difference(plain, fast, std::vector<bool>(40 * 24)).ordinary, kOrdinaryBound);
        refused += plain.failure == "ix >= 0 && ix < dst.width" ? 1 : 0;
    }
    EXPECT_GT(refused, 0);
}
