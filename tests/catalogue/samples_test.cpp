// A few rows of each public format, against stars worked out by other means (samples/expected.py).
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "catalogue/import_support.h"

namespace {

struct ExpectedStar {
    double ra = 0.0;
    double dec = 0.0;
    double v = 0.0;
    int rgb[3] = {};
    double distance = 0.0;
};

std::map<std::string, std::vector<ExpectedStar>> expected_stars() {
    std::map<std::string, std::vector<ExpectedStar>> stars;
    std::ifstream file(LUMIVAR_SAMPLES "/expected.csv");
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        const std::size_t comma = line.find(',');
        std::istringstream fields(line.substr(comma + 1));
        ExpectedStar star;
        char separator = 0;
        fields >> star.ra >> separator >> star.dec >> separator >> star.v >> separator >>
            star.rgb[0] >> separator >> star.rgb[1] >> separator >> star.rgb[2] >> separator >>
            star.distance;
        EXPECT_FALSE(fields.fail()) << line;
        stars[line.substr(0, comma)].push_back(star);
    }
    return stars;
}

class Samples : public testing::TestWithParam<const char*> {};

TEST_P(Samples, BecomeTheStarsThatTheyAre) {
    static const std::map<std::string, std::vector<ExpectedStar>> all = expected_stars();
    const std::vector<ExpectedStar>& expected = all.at(GetParam());
    const Imported imported = import_files({std::string(LUMIVAR_SAMPLES "/") + GetParam()});
    ASSERT_EQ(imported.stars.size(), expected.size());
    EXPECT_EQ(imported.skips, std::vector<std::string>());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        const lumivar::CatalogueStar& star = imported.stars[i];
        EXPECT_NEAR(star.lon, expected[i].ra, 1e-6);
        EXPECT_NEAR(star.lat, expected[i].dec, 1e-6);
        EXPECT_FLOAT_EQ(star.luminance, static_cast<float>(std::pow(10.0, -0.4 * expected[i].v)));
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(star.rgb[c], expected[i].rgb[c], 1) << c;
        }
        EXPECT_NEAR(star.distance, expected[i].distance, 1e-9 * std::fabs(expected[i].distance));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, Samples,
                         testing::Values("athyg_v40.csv", "bsc5-catalog.dat", "gaia_dr3_subset.csv",
                                         "gaia_dr3_subset.ecsv", "gaia_dr3_subset.fits",
                                         "gaia_dr3_subset_null.ecsv.gz", "gaia_dr3_tap_full.ecsv",
                                         "hip_main.dat", "hyg_v3.csv", "hyg_v41.csv",
                                         "tyc2-suppl_1.dat", "tyc2.dat",
                                         "vizier_hip_main_semicolon.tsv",
                                         "vizier_hip_main_tab.tsv"),
                         [](const auto& sample) {
                             std::string name = sample.param;
                             for (char& c : name) {
                                 c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
                             }
                             return name;
                         });

}  // namespace
