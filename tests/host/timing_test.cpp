// Times by hand: a frame lasts den/num seconds, the shutter opens phase/360 of it after the frame's
// time and stays open for angle/360 of it.
#include <gtest/gtest.h>
#include <host/scene.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace host {

bool operator==(const Time& a, const Time& b) { return a.value == b.value && a.scale == b.scale; }
std::ostream& operator<<(std::ostream& out, const Time& time) {
    return out << time.value << '/' << time.scale;
}

}  // namespace host

namespace {

using host::Composition;
using host::FrameRate;
using host::Time;
using host::Track;

Composition composition(FrameRate rate, Track angle = 180.0, Track phase = -90.0,
                        double duration = 10.0) {
    Composition made;
    made.frame_rate = rate;
    made.shutter_angle = std::move(angle);
    made.shutter_phase = std::move(phase);
    made.duration = duration;
    return made;
}

/// When the shutter opens, and for how long.
std::pair<Time, Time> shutter(const Composition& of, Time time) {
    std::pair<Time, Time> range;
    of.shutter_range(time, range.first, range.second);
    return range;
}

Time opening(const Composition& of, Time time) { return shutter(of, time).first; }
Time open_for(const Composition& of, Time time) { return shutter(of, time).second; }

TEST(Timing, FramesAndShutterStandOnOneScaleNoFinerThanNeeded) {
    struct Row {
        Composition made;
        int frame;
        Time time, opening, open_for;
    };
    const Row rows[] = {
        // 1/24 = 4/96; -90 degrees is -1/96, 180 degrees 2/96.
        {composition({24, 1}), 1, {4, 96}, {3, 96}, {2, 96}},
        {composition({24, 1}), 239, {956, 96}, {955, 96}, {2, 96}},
        // The shutter of frame 0 opens before the composition; frames before it are negative.
        {composition({24, 1}), 0, {0, 96}, {-1, 96}, {2, 96}},
        {composition({24, 1}), -2, {-8, 96}, {-9, 96}, {2, 96}},
        // 1/24 and half of it; nothing to wait for.
        {composition({24, 1}, 180.0, 0.0), 1, {2, 48}, {2, 48}, {1, 48}},
        // A whole frame opened on the frame; and a shutter that stays shut.
        {composition({24, 1}, 360.0, -360.0), 1, {1, 24}, {0, 24}, {1, 24}},
        {composition({24, 1}, 0.0, 0.0), 1, {1, 24}, {1, 24}, {0, 24}},
        // 1001/24000 = 4004/96000, a quarter 1001/96000, a half 2002/96000.
        {composition({24000, 1001}), 1, {4004, 96000}, {3003, 96000}, {2002, 96000}},
        {composition({24000, 1001}), 24, {96096, 96000}, {95095, 96000}, {2002, 96000}},
        {composition({25, 1}), 3, {12, 100}, {11, 100}, {2, 100}},
        {composition({30000, 1001}), 1, {4004, 120000}, {3003, 120000}, {2002, 120000}},
        // Two seconds a frame: a quarter is 1/2 s, a half 1 s; on the scale 2 a frame is 4.
        {composition({1, 2}), 1, {4, 2}, {3, 2}, {2, 2}},
        // A rate in higher terms is the same rate.
        {composition({48, 2}), 1, {4, 96}, {3, 96}, {2, 96}},
        // 0.001 degree of 1/25 s is 1/9000000 s; 90 degrees are 90000 of them, a frame 360000.
        // Duration and scale are small enough to leave room for 100 segments.
        {composition({25, 1}, 0.001, -90.0, 1.0),
         1,
         {360000, 9000000},
         {270000, 9000000},
         {1, 9000000}},
        // Less than half of that is nothing.
        {composition({25, 1}, 0.0004, -90.0, 1.0), 1, {4, 100}, {3, 100}, {0, 100}},
        // The widest shutter at the largest phase.
        {composition({24, 1}, 720.0, 360.0), 5, {5, 24}, {6, 24}, {2, 24}},
        // Too fine for the duration: rounded to a tick. Exact would be 120000, with 120000 * 100 *
        // 600 beyond 2^31; the frames need 30000, and room is left for 21474836.47 / (600 + 3 *
        // 1001/30000) = 35785: one multiple of 30000. 2002 - 250.25; 500.5, away from zero.
        {composition({30000, 1001}, 180.0, -90.0, 600.0),
         2,
         {2002, 30000},
         {1752, 30000},
         {501, 30000}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.time);
        EXPECT_EQ(row.made.frame_time(row.frame), row.time);
        EXPECT_EQ(shutter(row.made, row.time), std::pair(row.opening, row.open_for));
    }
    EXPECT_EQ(composition({24, 1}).frame_duration(), (Time{4, 96}));
}

TEST(Timing, AScaleLeavesRoomForAHundredSegments) {
    for (const FrameRate rate : {FrameRate{24, 1}, FrameRate{30000, 1001}, FrameRate{999, 1}}) {
        for (const double duration : {0.5, 10.0, 60.0}) {
            const Composition made = composition(rate, 123.457, -61.729, duration);
            const Time last = made.frame_time(made.frames() - 1);
            const auto [start, open] = shutter(made, last);
            EXPECT_LE(std::uint64_t{start.scale} * 100, std::numeric_limits<std::uint32_t>::max());
            EXPECT_LE((std::int64_t{start.value} + open.value) * 100,
                      std::numeric_limits<std::int32_t>::max());
            // Frames stay exact: value / scale = (frames - 1) * den / num, multiplied out.
            EXPECT_EQ(std::int64_t{last.value} * rate.num,
                      std::int64_t{made.frames() - 1} * rate.den * last.scale);
        }
    }
    // 30000 * 100 * 3600 is beyond 2^31 whatever one does: the frames stay exact.
    EXPECT_EQ(composition({30000, 1001}, 180.0, -90.0, 3600.0).frame_time(100000),
              (Time{100100000, 30000}));
}

TEST(Timing, ATimeThatDoesNotFitIsRefused) {
    const Composition made = composition({24000, 1001});
    EXPECT_THROW(made.frame_time(std::numeric_limits<int>::max()), std::out_of_range);
    EXPECT_THROW(made.frame_time(std::numeric_limits<int>::min()), std::out_of_range);
    EXPECT_THROW(made.time_at(1e12), std::out_of_range);
    EXPECT_THROW(made.time_at(std::numeric_limits<double>::quiet_NaN()), std::out_of_range);
    EXPECT_THROW(shutter(made, {std::numeric_limits<std::int32_t>::min(), 96000}),
                 std::out_of_range);
}

TEST(Timing, ATimeOnAFrameIsThatFramesAndOneBetweenIsHeldToAThousandthOfAFrame) {
    const Composition made = composition({24, 1});
    EXPECT_EQ(made.time_at(0.0), (Time{0, 96}));
    EXPECT_EQ(made.time_at(0.5), (Time{48, 96}));
    EXPECT_EQ(made.time_at(1.0 / 24.0), (Time{4, 96}));
    EXPECT_EQ(made.time_at(-0.5), (Time{-48, 96}));
    // 4 ticks a frame, so 250 times as many: 24000. A third of a second falls on it; 0.01 s too.
    EXPECT_EQ(made.time_at(0.01), (Time{240, 24000}));
    EXPECT_EQ(made.time_at(1.0 / 3.0), (Time{32, 96}));
    EXPECT_EQ(made.time_at(0.00004), (Time{1, 24000}));
    // 4004 ticks a frame are enough.
    EXPECT_EQ(composition({24000, 1001}).time_at(0.01), (Time{960, 96000}));
}

TEST(Timing, TheShutterOfATimeOnAnyScaleIsToldOnOneThatHoldsBoth) {
    const Composition made = composition({24, 1});
    // A quarter of a frame is 250/24000.
    EXPECT_EQ(shutter(made, {240, 24000}), std::pair(Time{-10, 24000}, Time{500, 24000}));
    EXPECT_EQ(opening(made, {1, 24}), (Time{3, 96}));
    EXPECT_EQ(shutter(made, {1, 25}), std::pair(Time{71, 2400}, Time{50, 2400}));  // 96 - 25
    // lcm(96, 2^32 - 1) does not fit: 1.5 s on the own scale, to the nearest tick.
    EXPECT_EQ(opening(made, {std::numeric_limits<std::int32_t>::max(), 1431655765U}),
              (Time{143, 96}));
}

TEST(Timing, AKeyedShutterIsTakenAtTheFramesTime) {
    // 1000 ticks to the frame: 24000. From 0 to 360 degrees in a second; at frame 12 it is 180.
    const Composition made = composition({24, 1}, Track({{0.0, 0.0}, {1.0, 360.0}}), 0.0);
    EXPECT_EQ(made.frame_time(12), (Time{12000, 24000}));
    EXPECT_EQ(open_for(made, made.frame_time(0)), (Time{0, 24000}));
    EXPECT_EQ(open_for(made, made.frame_time(12)), (Time{500, 24000}));
    EXPECT_EQ(open_for(made, made.frame_time(24)), (Time{1000, 24000}));

    const Composition late = composition({24, 1}, 180.0, Track({{0.0, 0.0}, {1.0, -360.0}}));
    EXPECT_EQ(opening(late, late.frame_time(6)), (Time{5750, 24000}));  // -90 degrees
}

TEST(Timing, SecondsAreValueOverScaleAndFramesCountsWholeOnes) {
    EXPECT_EQ((Time{-1, 4}).seconds(), -0.25);
    EXPECT_EQ((Time{1, 4294967295U}).seconds(), 1.0 / 4294967295.0);
    EXPECT_EQ((FrameRate{30000, 1001}).per_second(), 30000.0 / 1001.0);
    EXPECT_EQ(composition({24, 1}, 180.0, -90.0, 2.0).frames(), 48);
    EXPECT_EQ(composition({24, 1}, 180.0, -90.0, 2.04).frames(), 48);
    EXPECT_EQ(composition({24000, 1001}, 180.0, -90.0, 2.0).frames(), 47);    // 47.95
    EXPECT_EQ(composition({24000, 1001}, 180.0, -90.0, 2.002).frames(), 48);  // 48 exactly
    EXPECT_EQ(composition({10, 1}, 180.0, -90.0, 0.3).frames(), 3);
    EXPECT_EQ(composition({24, 1}, 180.0, -90.0, 0.001).frames(), 1);
    EXPECT_EQ(composition({999, 1}, 180.0, -90.0, 1e9).frames(), std::numeric_limits<int>::max());
}

}  // namespace
