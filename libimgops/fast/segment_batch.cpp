#include "segment_batch.h"

#include <libimgops/streak.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "closeness.h"
#include "stars/streak_rows.h"

namespace {

using star_kernels::ErrorFunctions;

/// Segments gathered at most. With what belongs to each they take 3.9 MB.
constexpr u32 kCapacity = 75000;

/// Bytes of a band: half of a second-level cache of 1 MiB. Lower bands cut spots into more pieces,
/// higher ones leave the cache; `docs/performance.md` has both measured.
constexpr std::ptrdiff_t kBandBytes = std::ptrdiff_t{512} * 1024;

/// The entries of a band lie scattered: each is fetched while as many others are drawn.
constexpr u32 kAhead = 6;

/// From this many segments on, it pays to fetch a whole band before they are drawn: their rows are
/// too short for the processor to fetch them in time by itself.
constexpr u32 kFewestToFetch = 64;

/// An entry's codes hold a star's colour, and above it how often it repeats.
constexpr unsigned kRepeatsShift = 24;
constexpr u32 kColourCodes = 0xffffff;
constexpr u32 kMostRepeats = 0xff;

/// Segments with an end farther away than this many pixels are left to the plain streak, whose
/// assertions they may fail. The midpoints of all others are known to 2^16 pixels or better. That
/// is little beside the 2^31 where a column fails its assertion, and beside the 2^21 that the
/// kernels keep rows away which lie beside the frame.
constexpr float kFarthest = 0x1p40F;

/// From here on the kernels surely take the error function for 1: a little more than their own
/// limit, because the range of a run of rows is rounded.
constexpr float kErfIsSurelyOne = star_kernels::kErfIsOne + 0.01F;

/// A trail's pixels are weighed for each of its streaks. They are at most this many times what its
/// smallest streak visits; more take longer than rows of its own.
constexpr float kMostOfTrail = 1.25F;

bool is_near(const Vector2& at) {
    // False for what is not a number.
    return std::fabs(at[0]) < kFarthest && std::fabs(at[1]) < kFarthest;
}

bool are_same(const Vector2& a, const Vector2& b) { return a[0] == b[0] && a[1] == b[1]; }

/// Whether the offsets of 0 to `last` from `middle` are surely exact: multiples of its lowest bit,
/// and no larger than itself.
bool has_exact_offsets(float middle, int last) {
    constexpr float kFirstEven = 8388608.0F;  // 2^23; up to it a float's lowest bit is 1 or less
    return static_cast<float>(last) <= 2.0F * middle && middle < kFirstEven;
}

float columns_of(const Box& box) { return static_cast<float>(box.x1 - box.x0 + 1); }
float rows_of(const Box& box) { return static_cast<float>(box.y1 - box.y0 + 1); }

int rows_of_band(const StarFramebuffer& fb) {
    const std::ptrdiff_t row_bytes = std::ptrdiff_t{fb.stride} * std::ptrdiff_t{sizeof(float)};
    return std::max(1, static_cast<int>(kBandBytes / (row_bytes > 0 ? row_bytes : 1)));
}

/// Whether both error functions are 1 and -1 for all pixels of a run of rows: the streak begins
/// long before them and ends long after.
bool is_saturated(const star_kernels::Streak& of, float ry) {
    const auto rows = static_cast<float>(of.y1 - of.y0 + 1);
    // Columns of the rows: those of the first and the last, and all between, since the line is
    // straight.
    float x0 = static_cast<float>(of.x0);
    float x1 = static_cast<float>(of.x1);
    if (!of.is_flat) {
        const float first = of.a_x + (ry + of.mid_y - of.a_y) * of.slope;
        const float last = first + (rows - 1.0F) * of.slope;
        x0 = max(x0, (first < last ? first : last) - of.half);
        x1 = min(x1, (first > last ? first : last) + of.half);
    }
    const float left = of.along_x * (x0 - of.mid_x - 1.0F);
    const float right = of.along_x * (x1 - of.mid_x + 1.0F);
    const float above = of.along_y * (ry - 1.0F);
    const float below = of.along_y * (ry + rows);
    const float low = (left < right ? left : right) + (above < below ? above : below);
    const float high = (left > right ? left : right) + (above > below ? above : below);
    return (of.half_way - high) * of.scale >= kErfIsSurelyOne &&
           (-of.half_way - low) * of.scale <= -kErfIsSurelyOne;
}

}  // namespace

SegmentBatch::SegmentBatch(const StarFramebuffer& dst, const star_kernels::Kernels& kernels,
                           float spot_w, float spot_h, const float* colour_tables, bool is_still)
    : dst_(dst),
      kernels_(kernels),
      pixels_{dst.a, dst.stride, dst.width, true},
      spot_w_(spot_w),
      spot_h_(spot_h),
      is_still_(is_still),
      colour_tables_(colour_tables),
      band_rows_(rows_of_band(dst)),
      entries_(new Entry[kCapacity]),
      order_(new u32[kCapacity]),
      going_on_(new u32[kCapacity]),
      next_going_on_(new u32[kCapacity]),
      band_starts_(new u32[static_cast<std::size_t>(dst.height / band_rows_) + 2]),
      band_coverage_(new Coverage[static_cast<std::size_t>(dst.height / band_rows_) + 1]()) {}

Color3 SegmentBatch::colour_of(u32 codes) const {
    return {colour_tables_[codes & 0xffU], colour_tables_[256U + (codes >> 8U & 0xffU)],
            colour_tables_[512U + (codes >> 16U & 0xffU)]};
}

void SegmentBatch::add(const Vector2& a, const Vector2& b, float energy, float reach, u32 codes,
                       bool& is_lit) {
    const Box box = pixel_box(a, b, Vector2(spot_w_ * reach, spot_h_ * reach));
    if (is_off_frame(box, dst_)) {
        return;
    }
    if (!is_lit || !is_near(a) || !is_near(b)) {
        draw();
        const bool adds_light =
            op_star_streak(dst_, a, b, energy, colour_of(codes), spot_w_, spot_h_, STARS_LINES_ALL);
        is_lit = is_lit || adds_light;
        return;
    }
    if (repeats_last(a, b, energy, codes)) {
        entries_[count_ - 1].codes += u32{1} << kRepeatsShift;
        return;
    }
    if (count_ == kCapacity) {
        draw();
    }
    const Box seen = clipped(box, dst_);
    entries_[count_++] = {a,
                          b,
                          energy,
                          reach,
                          codes,
                          static_cast<float>(seen.y0) - midpoint(a, b)[1],
                          static_cast<std::int16_t>(seen.x0),
                          static_cast<std::int16_t>(seen.y0),
                          static_cast<std::int16_t>(seen.x1),
                          static_cast<std::int16_t>(seen.y1)};
}

bool SegmentBatch::repeats_last(const Vector2& a, const Vector2& b, float energy, u32 codes) const {
    if (is_still_ || count_ == 0) {
        return false;
    }
    const Entry& last = entries_[count_ - 1];
    return are_same(a, b) && are_same(last.a, a) && are_same(last.b, a) && last.energy == energy &&
           (last.codes & kColourCodes) == codes && last.codes >> kRepeatsShift < kMostRepeats;
}

void SegmentBatch::draw() {
    if (count_ == 0) {
        return;
    }
    // Numbers of entries by the band in which they begin, in their order within it.
    const int bands = dst_.height / band_rows_ + 1;
    for (int band = 0; band <= bands; ++band) {
        band_starts_[static_cast<uword>(band)] = 0;
    }
    const auto first_band = [&](u32 i) { return static_cast<uword>(entries_[i].y0 / band_rows_); };
    for (u32 i = 0; i < count_; ++i) {
        ++band_starts_[first_band(i) + 1];
    }
    for (int band = 0; band < bands; ++band) {
        band_starts_[static_cast<uword>(band) + 1] += band_starts_[static_cast<uword>(band)];
    }
    // Filling moves each start to its band's end, which is the next one's start.
    for (u32 i = 0; i < count_; ++i) {
        order_[band_starts_[first_band(i)]++] = i;
    }
    u32 begun = 0;
    for (int band = 0; band < bands; ++band) {
        const u32 end = band_starts_[static_cast<uword>(band)];
        draw_band(band * band_rows_, begun, end);
        begun = end;
    }
    count_ = 0;
}

void SegmentBatch::draw_band(int y, u32 begin, u32 end) {
    Coverage& coverage = band_coverage_[static_cast<uword>(y / band_rows_)];
    const bool has_many = end - begin + going_on_count_ >= kFewestToFetch;
    // Moving spots fetch their own pixels in time, and lie on one another: for them the band is
    // looked at once.
    if (has_many && (is_still_ || coverage == Coverage::Unknown)) {
        coverage = kernels_.fetch(pixels_, y, std::min(band_rows_, dst_.height - y))
                       ? Coverage::Some
                       : Coverage::None;
    }
    pixels_.is_covered = coverage != Coverage::None;
    u32 next_count = 0;
    u32 going_on = 0;
    while (begin < end || going_on < going_on_count_) {
        const bool takes_new =
            going_on == going_on_count_ || (begin < end && order_[begin] < going_on_[going_on]);
        const u32 number = takes_new ? order_[begin++] : going_on_[going_on++];
        Entry& entry = entries_[number];
        if (begin + kAhead < end) {
            __builtin_prefetch(&entries_[order_[begin + kAhead]]);
        }
        draw_rows(entry, std::max<int>(entry.y0, y), std::min<int>(entry.y1, y + band_rows_ - 1));
        if (entry.y1 >= y + band_rows_) {
            next_going_on_[next_count++] = number;
        }
    }
    draw_trail();
    for (u32 i = 0; i < next_count; ++i) {
        going_on_[i] = next_going_on_[i];
    }
    going_on_count_ = next_count;
}

void SegmentBatch::draw_rows(Entry& entry, int y0, int y1) {
    const Vector2& a = entry.a;
    const Vector2& b = entry.b;
    const Color3 colour = colour_of(entry.codes);
    const Vector2 middle = midpoint(a, b);
    const star_kernels::Segment segment{
        middle[0], middle[1], entry.x0,     entry.x1,
        y0,        y1,        entry.energy, {colour[0], colour[1], colour[2]}};
    const bool moves = !are_same(a, b);
    if (moves) {
        Vector2 dir = b - a;
        const float length = dir.normalize();
        const SweptSpot swept(dir, spot_w_, spot_h_);
        const Closeness closeness = closeness_of(a, b, length, swept, dst_);
        if (closeness != Closeness::None) {
            draw_streak(segment, entry, dir, length, swept, closeness);
            return;
        }
    }
    draw_trail();
    if (!moves && is_still_ && kernels_draw_closely(a, spot_w_, spot_h_, dst_)) {
        const star_kernels::Spot spot{segment, spot_w_ * spot_w_, spot_h_ * spot_h_};
        entry.ry = kernels_.draw_spot(pixels_, spot, entry.ry);
        return;
    }
    const int times = 1 + static_cast<int>(entry.codes >> kRepeatsShift);
    const PlainSegment plain{
        a,       b,       entry.energy, colour,
        spot_w_, spot_h_, entry.reach,  {entry.x0, entry.y0, entry.x1, entry.y1}};
    draw_rows_plainly(dst_, plain, STARS_LINES_ALL, times, y0, y1, entry.ry);
}

void SegmentBatch::draw_streak(const star_kernels::Segment& segment, Entry& entry,
                               const Vector2& dir, float length, const SweptSpot& swept,
                               Closeness closeness) {
    const RowLine line(entry.a, entry.b, spot_w_ * entry.reach, spot_w_, spot_h_);
    star_kernels::Streak streak;
    static_cast<star_kernels::Segment&>(streak) = segment;
    streak.a_x = entry.a[0];
    streak.a_y = entry.a[1];
    streak.slope = line.slope;
    streak.is_flat = !(line.slope < kSteepestSlope);
    streak.half = line.half;
    streak.dir_x = dir[0];
    streak.dir_y = dir[1];
    streak.along_x = swept.along_x;
    streak.along_y = swept.along_y;
    streak.q = swept.q;
    streak.half_way = 0.5F * length * swept.q;
    streak.scale = swept.scale;
    streak.area = swept.area;
    streak.energy_a_pixel = entry.energy / length;
    streak.has_exact_columns = has_exact_offsets(streak.mid_x, streak.x1);

    const bool is_short = streak.half_way * streak.scale < star_kernels::kErfIsOne;
    streak.ends = closeness == Closeness::ByLibrary || is_short ? ErrorFunctions::Both
                  : is_saturated(streak, entry.ry)              ? ErrorFunctions::None
                                                                : ErrorFunctions::Nearer;
    if (streak.ends == ErrorFunctions::Both && !pixels_.is_covered && streak.colour[0] > 0 &&
        streak.colour[1] > 0 && streak.colour[2] > 0 && streak.has_exact_columns &&
        has_exact_offsets(streak.mid_y, entry.y1) &&
        streak.x1 - streak.x0 < star_kernels::kWidestTrail) {
        add_to_trail(streak);
        entry.ry = static_cast<float>(streak.y1 + 1) - streak.mid_y;
        return;
    }
    draw_trail();
    entry.ry = kernels_.draw_streak(pixels_, streak, entry.ry);
}

void SegmentBatch::add_to_trail(const star_kernels::Streak& streak) {
    Box box = {streak.x0, streak.y0, streak.x1, streak.y1};
    // A small spot's rows are narrower than its box.
    float smallest = min(columns_of(box), 2.0F * streak.half + 2.0F) * rows_of(box);
    if (trail_.count > 0) {
        const Box both = {std::min(box.x0, trail_.x0), std::min(box.y0, trail_.y0),
                          std::max(box.x1, trail_.x1), std::max(box.y1, trail_.y1)};
        const float pixels = columns_of(both) * rows_of(both);
        const float smaller = min(smallest, smallest_in_trail_);
        if (trail_.count < star_kernels::kMostInTrail &&
            std::equal(streak.colour, streak.colour + 3, trail_.streaks[0].colour) &&
            both.x1 - both.x0 < star_kernels::kWidestTrail && pixels <= kMostOfTrail * smaller) {
            box = both;
            smallest = smaller;
        } else {
            draw_trail();
        }
    }
    trail_.streaks[trail_.count++] = streak;
    trail_.x0 = box.x0;
    trail_.y0 = box.y0;
    trail_.x1 = box.x1;
    trail_.y1 = box.y1;
    smallest_in_trail_ = smallest;
}

void SegmentBatch::draw_trail() {
    const star_kernels::Streak& only = trail_.streaks[0];
    if (trail_.count > 1) {
        kernels_.draw_trail(pixels_, trail_);
    } else if (trail_.count == 1) {
        kernels_.draw_streak(pixels_, only, static_cast<float>(only.y0) - only.mid_y);
    }
    trail_.count = 0;
}
