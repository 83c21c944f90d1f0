#include "database/duplicates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "astronomy/place.h"
#include "astronomy/separation.h"
#include "astronomy/star_light.h"

namespace lumivar {
namespace {

constexpr double kHalfCircle = 180.0;
constexpr double kFullCircle = 360.0;
constexpr double kArcsecondsInADegree = 3600.0;

/// Narrower zones hold so few stars that turning to the next costs more than comparing.
constexpr double kLowestZone = 1.0 / kArcsecondsInADegree;

/// A luminance is stored in single precision: its magnitude comes back up to 7e-8 off.
constexpr double kStoredMagnitudeError = 1e-6;

/// Which set each of some things belongs to; sets can be joined.
class Sets {
public:
    explicit Sets(std::size_t count) : parents_(count) {
        std::iota(parents_.begin(), parents_.end(), std::size_t{0});
    }
    std::size_t of(std::size_t thing) {
        while (parents_[thing] != thing) {
            parents_[thing] = parents_[parents_[thing]];
            thing = parents_[thing];
        }
        return thing;
    }
    /// The set `other` becomes part of the set `one`.
    void join(std::size_t one, std::size_t other) { parents_[other] = one; }

private:
    std::vector<std::size_t> parents_;
};

SortLimits half_of(SortLimits limits) {
    limits.bytes_in_memory /= 2;
    return limits;
}

}  // namespace

DuplicateMerger::DuplicateMerger(double arcseconds, StarSink& next,
                                 const std::filesystem::path& output, double magnitudes,
                                 const SortLimits& limits)
    : radius_(arcseconds / kArcsecondsInADegree),
      // A little more than the radius, so that rounding puts no pair two zones apart.
      zone_height_(std::max(radius_ * (1.0 + 1e-6), kLowestZone)),
      magnitudes_(magnitudes + kStoredMagnitudeError),
      next_(next),
      by_zone_(output, half_of(limits)),
      kept_(output, half_of(limits)) {}

void DuplicateMerger::add(const CatalogueStar& star, unsigned input) {
    const Entry entry = {star, stars_++, input};
    if (std::isfinite(star.lon) && std::abs(star.lat) <= 90.0 && star.luminance > 0.0F &&
        std::isfinite(star.luminance)) {
        by_zone_.add(static_cast<std::uint64_t>(zone_of(entry)), entry);
    } else {
        keep(entry);
    }
}

std::uint64_t DuplicateMerger::finish() {
    Zone zone = {-1, {}};
    Zone below = {-1, {}};
    const auto look = [&] {
        std::sort(zone.members.begin(), zone.members.end(), [](const Member& a, const Member& b) {
            return a.right_ascension < b.right_ascension;
        });
        compare_within(zone);
        if (below.number == zone.number - 1) {
            compare_between(zone, below);
        }
        close(below);
        std::swap(zone, below);
        zone.members.clear();
    };
    Entry entry;
    while (by_zone_.next(entry)) {
        const std::int64_t number = zone_of(entry);
        if (number != zone.number) {
            look();
            zone.number = number;
        }
        const double magnitude =
            magnitude_from_luminance(static_cast<double>(entry.star.luminance));
        zone.members.push_back({entry, turned_into_circle(entry.star.lon), magnitude, false});
    }
    look();
    close(below);
    while (kept_.next(entry)) {
        next_.add(entry.star, entry.input);
    }
    return merged_;
}

std::int64_t DuplicateMerger::zone_of(const Entry& entry) const {
    return static_cast<std::int64_t>((entry.star.lat + 90.0) / zone_height_);
}

/// How far in right ascension a star within the radius can be, at most 180 degrees.
double DuplicateMerger::reach_in_right_ascension(double declination) const {
    // Close to a pole the circle of that radius reaches far round it or holds it.
    constexpr double kCloseToPole = 0.1;
    if (std::abs(declination) + radius_ + kCloseToPole >= 90.0) {
        return kHalfCircle;
    }
    constexpr double kRounding = 1.0 + 1e-9;
    return kRounding / kRadiansInDegree *
           std::asin(std::sin(radius_ * kRadiansInDegree) /
                     std::cos(declination * kRadiansInDegree));
}

void DuplicateMerger::compare(Member& one, std::int64_t zone_of_one, Member& other,
                              std::int64_t zone_of_other) {
    if (one.entry.input == other.entry.input ||
        !(std::abs(one.magnitude - other.magnitude) <= magnitudes_)) {
        return;
    }
    const double apart = std::abs(one.right_ascension - other.right_ascension);
    const double separation = separation_measure(one.entry.star.lat, other.entry.star.lat,
                                                 std::min(apart, kFullCircle - apart));
    if (!(separation <= separation_measure(radius_))) {
        return;
    }
    if (!std::exchange(one.paired, true)) {
        open_.push_back({one.entry, zone_of_one});
    }
    if (!std::exchange(other.paired, true)) {
        open_.push_back({other.entry, zone_of_other});
    }
    const auto [first, second] = std::minmax(one.entry.order, other.entry.order);
    pairs_.push_back({separation, first, second});
}

void DuplicateMerger::compare_within(Zone& zone) {
    std::vector<Member>& members = zone.members;
    for (std::size_t i = 0; i < members.size(); ++i) {
        // Each star looks forward only, so that every pair is met once.
        const double from = members[i].right_ascension;
        const double reach = reach_in_right_ascension(members[i].entry.star.lat);
        for (std::size_t j = i + 1;
             j < members.size() && members[j].right_ascension - from <= reach; ++j) {
            compare(members[i], zone.number, members[j], zone.number);
        }
        // Over 360 degrees to the first ones. At 180 degrees exactly the other one looks forward.
        for (std::size_t j = 0; j < i; ++j) {
            const double ahead = members[j].right_ascension + kFullCircle - from;
            if (ahead > reach || ahead >= kHalfCircle) {
                break;
            }
            compare(members[i], zone.number, members[j], zone.number);
        }
    }
}

void DuplicateMerger::compare_between(Zone& zone, Zone& below) {
    const auto compare_range = [&](Member& member, double from, double to) {
        auto other = std::lower_bound(
            below.members.begin(), below.members.end(), from,
            [](const Member& a, double value) { return a.right_ascension < value; });
        for (; other != below.members.end() && other->right_ascension <= to; ++other) {
            compare(member, zone.number, *other, below.number);
        }
    };
    for (Member& member : zone.members) {
        const double reach = reach_in_right_ascension(member.entry.star.lat);
        if (reach >= kHalfCircle) {
            compare_range(member, 0.0, kFullCircle);
            continue;
        }
        for (const double turn : {-kFullCircle, 0.0, kFullCircle}) {
            const double middle = member.right_ascension + turn;
            if (middle + reach >= 0.0 && middle - reach <= kFullCircle) {
                compare_range(member, middle - reach, middle + reach);
            }
        }
    }
}

/// No further pair can have a star of `zone`: those without any are kept, and what is linked to no
/// later zone is joined.
void DuplicateMerger::close(const Zone& zone) {
    for (const Member& member : zone.members) {
        if (!member.paired) {
            keep(member.entry);
        }
    }
    if (open_.empty()) {
        return;
    }
    std::unordered_map<std::uint64_t, std::size_t> places;
    for (std::size_t i = 0; i < open_.size(); ++i) {
        places[open_[i].entry.order] = i;
    }
    Sets linked(open_.size());
    for (const Pair& pair : pairs_) {
        linked.join(linked.of(places[pair.first]), linked.of(places[pair.second]));
    }
    std::vector<std::int64_t> last_zones(open_.size(), zone.number);
    for (std::size_t i = 0; i < open_.size(); ++i) {
        std::int64_t& last = last_zones[linked.of(i)];
        last = std::max(last, open_[i].zone);
    }
    const auto stays_open = [&](std::uint64_t order) {
        return last_zones[linked.of(places[order])] > zone.number;
    };
    const auto first_closed_pair = std::partition(
        pairs_.begin(), pairs_.end(), [&](const Pair& pair) { return stays_open(pair.first); });
    std::vector<Pair> pairs(first_closed_pair, pairs_.end());
    pairs_.erase(first_closed_pair, pairs_.end());
    const auto first_closed = std::partition(
        open_.begin(), open_.end(), [&](const Open& star) { return stays_open(star.entry.order); });
    std::vector<Open> stars(first_closed, open_.end());
    open_.erase(first_closed, open_.end());
    join(stars, pairs);
}

/// Joins the stars by the pairs, nearest first, and keeps one of each group. No pair leads out of
/// `stars`.
void DuplicateMerger::join(std::vector<Open>& stars, std::vector<Pair>& pairs) {
    std::unordered_map<std::uint64_t, std::size_t> places;
    std::vector<std::vector<std::size_t>> groups(stars.size());  // by set
    for (std::size_t i = 0; i < stars.size(); ++i) {
        places[stars[i].entry.order] = i;
        groups[i] = {i};
    }
    // Pairs equally far apart: in the order in which their stars came.
    std::sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
        return std::tie(a.separation, a.first, a.second) <
               std::tie(b.separation, b.first, b.second);
    });
    Sets sets(stars.size());
    for (const Pair& pair : pairs) {
        const std::size_t one = sets.of(places[pair.first]);
        const std::size_t other = sets.of(places[pair.second]);
        const auto share_an_input = [&] {
            return std::any_of(groups[one].begin(), groups[one].end(), [&](std::size_t a) {
                return std::any_of(groups[other].begin(), groups[other].end(), [&](std::size_t b) {
                    return stars[a].entry.input == stars[b].entry.input;
                });
            });
        };
        // Two stars of one set share an input too: each with itself.
        if (!share_an_input()) {
            groups[one].insert(groups[one].end(), groups[other].begin(), groups[other].end());
            groups[other].clear();
            sets.join(one, other);
        }
    }
    for (std::vector<std::size_t>& group : groups) {
        if (group.empty()) {
            continue;
        }
        std::sort(group.begin(), group.end(), [&](std::size_t a, std::size_t b) {
            return stars[a].entry.input < stars[b].entry.input;
        });
        Entry kept = stars[group.front()].entry;
        const auto known = std::find_if(group.begin(), group.end(), [&](std::size_t i) {
            return stars[i].entry.star.distance > 0.0;
        });
        if (known != group.end()) {
            kept.star.distance = stars[*known].entry.star.distance;
        }
        merged_ += group.size() - 1;
        keep(kept);
    }
}

void DuplicateMerger::keep(const Entry& entry) { kept_.add(entry.order, entry); }

}  // namespace lumivar
