// What a frame takes of memory, and what happens when there is none. Replaces the allocation
// functions of the whole program. Leaks are for the sanitizer to find.
#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libimgops/renderer.h>
#include <support/failing_allocator.h>

#include <cstdlib>
#include <new>
#include <numeric>
#include <vector>

#include "plain_fast_scene.h"
#include "support/memory_stars.h"

namespace {

/// Allocations until one throws an assertion, as a defect would; below 0 for none.
int until_assertion = -1;

// By way of `malloc`, which the failing allocator sees.
void* allocated(std::size_t size) {
    const bool is_broken = until_assertion == 0;
    until_assertion -= until_assertion >= 0 ? 1 : 0;
    XASSERT(!is_broken);
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using namespace plain_fast;

struct Frame : Canvas {
    explicit Frame(const Scene& of) : Canvas(of), input(of.magic, of.stars) {}
    void draw() {
        bool drew = true;
        renderer(input).render_stars(drew);
    }

    support::MemoryStars input;
};

Scene scene_of(int stars, int width, int height, int segments) {
    RandomNumbers random(1);
    Scene scene = default_scene(random, width, height);
    if (segments > 0) {
        pan(scene, random, segments, 5);
    }
    scatter_stars(scene, random, stars);
    return scene;
}

/// The sizes of all blocks that a frame ever takes.
std::vector<std::size_t> blocks_of_frame(const Scene& scene) {
    const PathInUse fast(DrawPath::Fast);
    Frame frame(scene);
    const FailingAllocator allocator;
    frame.draw();
    return allocator.requests();
}

}  // namespace

TEST(FrameMemory, StaysUnder4MiBAFrame) {
    for (const Scene& scene : {scene_of(2000, 1920, 1080, 0), scene_of(2000, 1920, 1080, 100),
                               scene_of(100, 32767, 40, 0), scene_of(100, 40, 32767, 1)}) {
        const std::vector<std::size_t> blocks = blocks_of_frame(scene);
        EXPECT_LT(blocks.size(), 200U) << "the allocator remembers 256";
        EXPECT_LT(std::accumulate(blocks.begin(), blocks.end(), std::size_t{0}), 4U << 20U);
    }
}

TEST(FrameMemory, IsNotTakenPerStar) {
    for (const int segments : {0, 3}) {
        const std::vector<std::size_t> few = blocks_of_frame(scene_of(10, 160, 90, segments));
        EXPECT_EQ(few, blocks_of_frame(scene_of(30000, 160, 90, segments)));
        EXPECT_FALSE(few.empty());
    }
}

// Each of the frame's allocations fails in turn. What the fast path wants for itself it can do
// without: the frame is drawn plainly then.
TEST(FrameMemory, MayRunOutAnywhere) {
    const PathInUse fast(DrawPath::Fast);
    const Scene scene = scene_of(700, 160, 90, 2);
    Frame whole(scene);
    whole.draw();
    const Drawn plain = draw(scene, DrawPath::Plain);
    unsigned failures = 0;
    int drawn_plainly = 0;
    int refused = 0;
    for (bool is_fast = false; !is_fast; ++failures) {
        Frame frame(scene);
        bool failed = false;
        {
            FailingAllocator allocator;
            allocator.refuse_after(failures);
            try {
                frame.draw();
            } catch (const std::bad_alloc&) {
                failed = true;
            } catch (const StrXception&) {
                failed = true;  // an array's
            }
        }
        EXPECT_EQ(frame.frame.is_blank(), failed);
        if (failed) {
            ++refused;
            frame.input.reset();
            frame.draw();
            EXPECT_TRUE(frame.frame.same_bits(whole.frame)) << "the next frame is whole";
            continue;
        }
        is_fast = frame.frame.same_bits(whole.frame);
        if (!is_fast) {
            ++drawn_plainly;
            EXPECT_TRUE(frame.frame.same_bits(plain.frame));
        }
    }
    EXPECT_GE(failures, 5U);
    EXPECT_GE(drawn_plainly, 3);
    EXPECT_LE(refused, 4) << "only what the plain path needs too";
}

// An assertion is a defect: it reaches the caller, while the fast path is set up too, and is not
// covered up by a frame that is drawn plainly.
TEST(FrameMemory, IsNoExcuseForAFailedAssertion) {
    const PathInUse fast(DrawPath::Fast);
    const Scene scene = scene_of(700, 160, 90, 2);
    Frame frame(scene);
    StarRenderer renderer = frame.renderer(frame.input);
    bool drew = true;
    for (int before = 0; before < 4; ++before) {
        until_assertion = before;
        EXPECT_THROW(renderer.render_stars(drew), AssertXception) << before;
        EXPECT_TRUE(frame.frame.is_blank()) << before;
    }
}
