#include "segments.h"

#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <stdexcept>
#include <utility>

#include "libimgops/fast/kernels/choice.h"
#include "libimgops/fast/segment_batch.h"

namespace bench {

namespace {

/// Codes of every segment's colour; `colour_tables_` makes 0.5, 0.75 and 1 of them.
constexpr u32 kCodes = 0x030201;

}  // namespace

std::vector<DrawnSegment> even_segments(float length, int count) {
    std::mt19937_64 random(20261121);
    std::uniform_real_distribution<float> x(0, kWidth), y(0, kHeight), turn(0, 6.2831853F),
        unit(0, 1);
    std::vector<DrawnSegment> segments;
    for (int i = 0; i < count; ++i) {
        const Vector2 from(x(random), y(random));
        const float angle = turn(random);
        const double magnitude =
            kThresholdMagnitude + std::log10(1 - static_cast<double>(unit(random))) / kCountSlope;
        const double luminance = std::min(0.5, std::pow(10.0, -0.4 * magnitude));
        segments.push_back(
            {from,
             {from[0] + length * std::cos(angle), from[1] + length * std::sin(angle)},
             kEnergy * static_cast<float>(luminance)});
    }
    return segments;
}

std::vector<DrawnSegment> crossing_segments(std::size_t count) {
    Scene scene(kWidth, kHeight, whole_sky(200000, kThresholdMagnitude));
    pan(scene.cameras, 16);
    std::vector<DrawnSegment> segments;
    scene.for_each_segment([&](const DrawnSegment& segment) {
        if (segment.crosses) {
            segments.push_back(segment);
        }
        return segments.size() < count;
    });
    if (segments.size() < count) {
        throw std::logic_error("too few stars cross the camera's plane");
    }
    return segments;
}

SegmentScene::SegmentScene(std::vector<DrawnSegment> segments, float spot)
    : segments_(std::move(segments)),
      spot_(spot),
      colour_tables_(std::size_t{3} * 256),
      frame_(kWidth, kHeight) {
    colour_tables_[1] = 0.5F;
    colour_tables_[256 + 2] = 0.75F;
    colour_tables_[512 + 3] = 1.0F;
}

void SegmentScene::draw(DrawPath path) {
    if (path == DrawPath::Plain) {
        for (const DrawnSegment& s : segments_) {
            op_star_streak(frame_.view(), s.a, s.b, s.energy, {0.5F, 0.75F, 1.0F}, spot_, spot_,
                           STARS_LINES_ALL);
        }
        return;
    }
    SegmentBatch batch(frame_.view(), *star_kernels::in_use(), spot_, spot_, colour_tables_.data(),
                       true);
    bool drew = false;
    for (const DrawnSegment& s : segments_) {
        const float reach = reach_of(s.energy);
        if (reach >= 0.0F) {
            batch.add(s.a, s.b, s.energy, reach, kCodes, drew);
        }
    }
    batch.draw();
}

std::string SegmentScene::difference(double peak_share) {
    frame_.clear();
    draw(DrawPath::Plain);
    const std::vector<float> plain(frame_.data(), frame_.data() + frame_.floats());
    frame_.clear();
    draw(DrawPath::Fast);
    const std::string differs =
        bench::difference(plain.data(), frame_.data(), plain.size(), peak_share);
    return differs.empty() ? miscount() : differs;
}

double SegmentScene::visited_pixels() const {
    double visited = 0;
    for (const DrawnSegment& s : segments_) {
        visited += bench::visited_pixels(frame_.view(), s, spot_);
    }
    return visited;
}

std::string SegmentScene::miscount() {
    // A colour that is not a number stays behind on every pixel that is visited.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (std::size_t i = 0; i < segments_.size() && i < 10; ++i) {
        const DrawnSegment& s = segments_[i];
        frame_.clear();
        op_star_streak(frame_.view(), s.a, s.b, s.energy, {nan, nan, nan}, spot_, spot_,
                       STARS_LINES_ALL);
        const auto values = std::count_if(frame_.data(), frame_.data() + frame_.floats(),
                                          [](float x) { return std::isnan(x); });
        if (static_cast<double>(values) / 3 != bench::visited_pixels(frame_.view(), s, spot_)) {
            return "the visited pixels are counted wrongly";
        }
    }
    frame_.clear();
    return "";
}

}  // namespace bench
