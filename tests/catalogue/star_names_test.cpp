// Stars by name, against the table that the build takes them from.
#include <astronomy/star_names.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

using lumivar::find_star;
using lumivar::NamedStar;

TEST(StarNames, EveryRowOfTheTableIsThereAsItStands) {
    std::ifstream table(LUMIVAR_DATA "/bright-stars.csv");
    std::string line;
    std::getline(table, line);
    std::size_t row = 0;
    const auto stars = lumivar::named_stars();
    for (; std::getline(table, line); ++row) {
        ASSERT_LT(row, stars.size());
        std::istringstream fields(line);
        std::array<std::string, 8> field;
        for (std::string& each : field) {
            std::getline(fields, each, ',');
        }
        const NamedStar& star = stars[row];
        ASSERT_EQ(star.ra, std::stod(field[0])) << line;
        ASSERT_EQ(star.dec, std::stod(field[1])) << line;
        ASSERT_EQ(star.distance, field[4].empty() ? 0.0 : std::stod(field[4])) << line;
        ASSERT_EQ(star.hip, std::stoi(field[5])) << line;
        ASSERT_EQ(star.hr, field[6].empty() ? 0 : std::stoi(field[6])) << line;
        ASSERT_EQ(star.name, field[7]) << line;
    }
    EXPECT_EQ(row, stars.size());
    EXPECT_EQ(row, 8870U);
}

TEST(StarNames, EveryLabelLeadsBackToItsStar) {
    for (const NamedStar& star : lumivar::named_stars()) {
        ASSERT_EQ(find_star(lumivar::star_label(star)), &star) << star.hip;
    }
}

TEST(StarNames, AreFoundInManySpellings) {
    const std::map<std::string, int> hip_of = {
        {"Betelgeuse", 27989},     {"betelGEUSE", 27989},      {"HIP 27989", 27989},
        {"hip27989", 27989},       {"HR 2061", 27989},         {"Gam2 Vel", 39953},
        {"gamma2 Velorum", 39953}, {"Gamma2Vel", 39953},       {"86 Peg", 476},
        {"86 Pegasi", 476},        {"Rigil Kentaurus", 71683}, {"rigil-kentaurus", 71683},
        {"Alf Lac", 111169},       {"Alpha Lacertae", 111169}, {"Eta Phoenicis", 3405},
    };
    for (const auto& [name, hip] : hip_of) {
        const NamedStar* const star = find_star(name);
        if (star == nullptr) {
            ADD_FAILURE() << name;
            continue;
        }
        EXPECT_EQ(star->hip, hip) << name;
    }
    for (const char* name :
         {"", " ", "HIP", "HIP 0", "HIP 1x", "Betelgeus", "Alpha", "Orionis", "Gamma", "pi"}) {
        EXPECT_EQ(find_star(name), nullptr) << name;
    }
}

TEST(StarNames, OfTwoStarsWithANameTheBrighterIsMeant) {
    // 61 Cygni is a pair; each has its own Hipparcos number.
    EXPECT_EQ(find_star("61 Cyg")->hip, 104214);
    EXPECT_EQ(lumivar::star_label(*find_star("HIP 104217")), "HIP 104217");
}

}  // namespace
