// Stars that two catalogues share become one.
//
// Which ones: two stars of different inputs are a pair when they lie within the radius of each
// other and differ by no more than the tolerance in magnitude. Pairs are joined nearest first; a
// pair whose joining would bring two stars of one input together is left. So each star meets its
// nearest counterpart, a third catalogue can join, and two stars that one catalogue tells apart, a
// real double star, stay two.
//
// Of stars that are joined the one of the earliest input stays, at its place in the order of all; a
// distance that it lacks (0 or below) is taken from the others, the earliest input first.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "database/external_sort.h"
#include "database/star_sink.h"

namespace lumivar {

/// Magnitudes by which two catalogues' entries of one star may differ. They measure in different
/// bands, one of them often an estimate, and stars vary; a mean difference is a tenth. More than 1
/// is rather a faint neighbour, which is 2.5 times fainter then.
inline constexpr double kDuplicateMagnitudes = 1.0;

/// The largest radius in arcseconds. Catalogues agree to better than an arcsecond, or to some tens
/// where nobody accounted for the stars' own motion; beyond, unrelated stars would be joined.
inline constexpr double kLargestDuplicateRadius = 600.0;

class DuplicateMerger : public StarSink {
public:
    /// `arcseconds`: the radius, above 0, at most `kLargestDuplicateRadius`. The stars go on to
    /// `next`. `output`: the file that they are for; what does not fit into memory lies beside it.
    DuplicateMerger(double arcseconds, StarSink& next, const std::filesystem::path& output,
                    double magnitudes = kDuplicateMagnitudes, const SortLimits& limits = {});

    /// Takes a star; the inputs may come in any order. A star whose place or luminance is not a
    /// finite number, or whose luminance is not above 0, has no pair. Throws `Failure`.
    void add(const CatalogueStar& star, unsigned input) override;
    /// Passes on the stars that stay, in the order in which they came, with the inputs that they
    /// came from. Returns how many do not stay. Call it once, last. Throws `Failure`.
    std::uint64_t finish();

private:
    struct Entry {
        CatalogueStar star;
        std::uint64_t order;  ///< when it came, from 0
        std::uint32_t input;
    };
    /// A star of one of the two zones of declination that are looked at.
    struct Member {
        Entry entry;
        double right_ascension;  ///< degrees from 0 up to 360
        double magnitude;
        bool paired;
    };
    /// The stars of a zone by right ascension.
    struct Zone {
        std::int64_t number;
        std::vector<Member> members;
    };
    /// A star that has a pair, until it is known which stars it belongs to.
    struct Open {
        Entry entry;
        std::int64_t zone;
    };
    struct Pair {
        double separation;
        std::uint64_t first;  ///< orders of its stars
        std::uint64_t second;
    };

    std::int64_t zone_of(const Entry& entry) const;
    double reach_in_right_ascension(double declination) const;
    void compare(Member& one, std::int64_t zone_of_one, Member& other, std::int64_t zone_of_other);
    void compare_within(Zone& zone);
    void compare_between(Zone& zone, Zone& below);
    void close(const Zone& zone);
    void join(std::vector<Open>& stars, std::vector<Pair>& pairs);
    void keep(const Entry& entry);

    double radius_;  ///< degrees
    double zone_height_;
    double magnitudes_;
    StarSink& next_;
    ExternalSort<Entry> by_zone_;
    ExternalSort<Entry> kept_;
    std::vector<Open> open_;
    std::vector<Pair> pairs_;
    std::uint64_t stars_ = 0;
    std::uint64_t merged_ = 0;
};

}  // namespace lumivar
