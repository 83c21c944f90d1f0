// How many stars the whole sky has to a magnitude.
#pragma once

#include <cstddef>
#include <vector>

namespace lumivar {

/// Counts of stars, as a curve in steps of a sixteenth of a magnitude between whole ones.
///
/// To magnitude 8 they are those of the Hipparcos catalogue (ESA, 1997), counted in data/hip.csv;
/// from 9 to 20 the mean counts of C. W. Allen, Astrophysical Quantities (3rd edition, 1973); 21
/// and the ends below 0 continue the curve. Their logarithm rises by 0.5 a magnitude for bright
/// stars, 0.4 at magnitude 13, and 0.25 at 20: a sky of infinite extent would have 0.6.
class StarCounts {
public:
    StarCounts();

    static constexpr double kBrightest = -2.0;
    static constexpr double kFaintest = 21.0;

    /// Stars brighter than `magnitude`, which lies between those two.
    double brighter_than(double magnitude) const;

    /// A place on the curve; ranks are asked for in rising order, so that the search goes on from
    /// the last one.
    struct Point {
        double luminance;
        double magnitude;
    };
    /// The star that has `rank` brighter ones. `bin`: 0 at first, then as the last call left it.
    Point at_rank(double rank, std::size_t& bin) const;

private:
    std::vector<double> counts_;
    std::vector<double> luminances_;
};

}  // namespace lumivar
