// Stars that everybody knows, from the table that ships and from a catalogue as it is published.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "catalogue/import_support.h"

namespace {

using lumivar::CatalogueStar;

const CatalogueStar& nearest(const Imported& imported, double ra, double dec) {
    return *std::min_element(imported.stars.begin(), imported.stars.end(),
                             [&](const CatalogueStar& a, const CatalogueStar& b) {
                                 return std::hypot(a.lon - ra, a.lat - dec) <
                                        std::hypot(b.lon - ra, b.lat - dec);
                             });
}

/// Places of the Hipparcos catalogue at J2000, V, colours by the published relations (worked out
/// with a separate script) and parsecs.
struct NamedStar {
    const char* name;
    double ra;
    double dec;
    double v;
    std::array<int, 3> rgb;
    double parsecs;
};

constexpr NamedStar kNamed[] = {
    {"Sirius", 101.28716, -16.71612, -1.44, {205, 217, 255}, 2.637},
    {"Vega", 279.23474, 38.78369, 0.03, {204, 217, 255}, 7.679},
    {"Betelgeuse", 88.79294, 7.40706, 0.45, {255, 207, 155}, 152.7},
    {"Polaris", 37.95452, 89.26411, 1.97, {255, 241, 235}, 132.6},
};

TEST(NamedStars, OfTheShippedTableStandWhereTheyShould) {
    const Imported imported = import_files({LUMIVAR_DATA "/hip.csv"});
    for (const NamedStar& named : kNamed) {
        SCOPED_TRACE(named.name);
        const CatalogueStar& star = nearest(imported, named.ra, named.dec);
        EXPECT_NEAR(star.lon, named.ra, 1e-6);
        EXPECT_NEAR(star.lat, named.dec, 1e-6);
        EXPECT_FLOAT_EQ(star.luminance, static_cast<float>(std::pow(10.0, -0.4 * named.v)));
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(star.rgb[c], named.rgb[c], 1) << c;
        }
        EXPECT_EQ(star.distance, named.parsecs);
    }
}

TEST(NamedStars, BarnardsStarMovesToTheChosenYear) {
    // HIP 87937 at J1991.25, in the layout of a table of one's own.
    const std::string text =
        "ra_deg,dec_deg,vmag,pmra,pmdec,parallax_mas\n"
        "269.45402305,4.66828815,9.54,-797.84,10326.93,549.01\n";
    lumivar::ImportOptions options;
    options.catalogue_epoch = 1991.25;
    options.epoch = 2050.0;
    const CatalogueStar star = import_text(text, options).stars.at(0);
    // On paper: 58.75 years of 10.357705 arcseconds along a great circle, in a straight line in
    // space (the angle whose tangent is the way); by unit vectors with 30 digits in a separate
    // calculation.
    EXPECT_NEAR(star.lon, 269.44095626866220, 1e-6);
    EXPECT_NEAR(star.lat, 4.836817299202768, 1e-6);
    EXPECT_NEAR(star.distance, 1000.0 / 549.01, 1e-12);
}

}  // namespace
