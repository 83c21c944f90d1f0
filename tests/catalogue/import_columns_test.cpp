// Tables of people: columns by name and number, units, frames, epochs and other choices.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "catalogue/import_support.h"
#include "failure_of.h"
#include "support/scratch.h"

namespace {

using lumivar::CatalogueStar;
using lumivar::ImportOptions;
using lumivar::parse_columns;
using lumivar::Unit;

ImportOptions with_columns(const std::string& columns) {
    ImportOptions options;
    options.columns = parse_columns(columns);
    return options;
}

TEST(Columns, AreTakenByNameOrNumber) {
    for (const char* columns : {"ra=alpha,dec=delta,mag=bright,bv=ci", "ra=1,dec=2,mag=3,bv=4",
                                " ra = ALPHA , dec=delta,mag=3,bv=4"}) {
        SCOPED_TRACE(columns);
        const Imported imported =
            import_text("alpha,delta,bright,ci\n10,20,1.5,0.65\n", with_columns(columns));
        ASSERT_EQ(imported.stars.size(), 1U);
        EXPECT_EQ(imported.stars[0].lon, 10.0);
        EXPECT_EQ(imported.stars[0].lat, 20.0);
        EXPECT_FLOAT_EQ(imported.stars[0].luminance, 0.25118864F);  // 10^-0.6
        EXPECT_EQ(imported.stars[0].rgb, (std::array<std::uint8_t, 3>{255, 241, 234}));
    }
    // Without names, whatever separates them.
    const Imported bare =
        import_text("7  10.5 -20 3\n8  11 -21 4\n", with_columns("ra=2,dec=3,mag=4"));
    ASSERT_EQ(bare.stars.size(), 2U);
    EXPECT_EQ(bare.stars[0].lon, 10.5);
    EXPECT_EQ(bare.stars[1].lat, -21.0);
}

TEST(Columns, ThatAreNotThereOrNamedTwiceAreErrors) {
    const std::string words =
        "; the words are ra, dec (or rah, ram, ras, design, ded, dem, des), mag, bv, bprp, teff, "
        "distance, parallax, pmra, pmdec, rv, epoch, g, bt, vt";
    EXPECT_EQ(failure_of([] { parse_columns("ra=1,dec=2,ra=3"); }),
              "--columns: \"ra\" is named twice");
    for (const char* item : {"ra", "ra=", "=1", "colour=3", ""}) {
        EXPECT_EQ(failure_of([&] { parse_columns(item); }),
                  "--columns: \"" + std::string(item) + "\" is not WORD=COLUMN" + words);
    }
    EXPECT_EQ(import_text_failure("a,b,c\n1,2,3\n", with_columns("ra=a,dec=b,mag=4")),
              "t.csv: --columns mag=4: there is no such column; it has 1 a, 2 b, 3 c");
    EXPECT_EQ(import_text_failure("a,b,b\n1,2,3\n", with_columns("ra=a,dec=b,mag=3")),
              "t.csv: columns 2 and 3 are both named \"b\"; rename one, or choose by number with "
              "--columns");
    EXPECT_EQ(
        import_text_failure("a,b,c\n1,2,3\n", with_columns("ra=a,mag=c")),
        "t.csv: cannot tell which columns hold: declination; it has 1 a, 2 b, 3 c; name them with "
        "--columns ra=COLUMN,dec=COLUMN,mag=COLUMN,... by name or by number");
}

TEST(Columns, MayBeInHoursRadiansOrSexagesimal) {
    ImportOptions options;
    options.angle_unit = Unit::Hours;
    EXPECT_EQ(import_text("ra,dec,mag\n6.5,20,1\n", options).stars.at(0).lon, 97.5);
    options.angle_unit = Unit::Radians;
    const CatalogueStar radians =
        import_text("ra,dec,mag\n3.141592653589793,-0.7853981633974483,1\n", options).stars.at(0);
    EXPECT_NEAR(radians.lon, 180.0, 1e-12);
    EXPECT_NEAR(radians.lat, -45.0, 1e-12);
    for (const char* sirius :
         {"06:45:08.917,-16:42:58.02", "06 45 08.917,-16 42 58.02", "6h45m8.917s,-16d42m58.02s"}) {
        const CatalogueStar star =
            import_text(std::string("ra,dec,mag\n") + sirius + ",-1.44\n").stars.at(0);
        EXPECT_NEAR(star.lon, 15.0 * (6.0 + 45.0 / 60.0 + 8.917 / 3600.0), 1e-12) << sirius;
        EXPECT_NEAR(star.lat, -(16.0 + 42.0 / 60.0 + 58.02 / 3600.0), 1e-12) << sirius;
    }
    options.angle_unit = Unit::Degrees;
    EXPECT_NEAR(import_text("ra,dec,mag\n101:17:13.8,-16:42:58,1\n", options).stars.at(0).lon,
                101.0 + 17.0 / 60.0 + 13.8 / 3600.0, 1e-12);
    // Six columns and a sign: -0 degrees are south.
    const CatalogueStar parts =
        import_text("RAh,RAm,RAs,DE-,DEd,DEm,DEs,Vmag\n5,14,32.2,-,0,30,0,0.12\n").stars.at(0);
    EXPECT_NEAR(parts.lon, 15.0 * (5.0 + 14.0 / 60.0 + 32.2 / 3600.0), 1e-12);
    EXPECT_NEAR(parts.lat, -0.5, 1e-12);
    EXPECT_NEAR(
        import_text("RAh,RAm,RAs,DEd,DEm,DEs,Vmag\n5,14,32.2,-0,30,0,0.12\n").stars.at(0).lat, -0.5,
        1e-12);
    EXPECT_EQ(
        import_text_failure("RAh,RAm,RAs,DEd,DEm,DEs,Vmag\n5,61,32.2,1,30,0,0.12\n").substr(0, 4),
        "none");
}

TEST(Columns, HaveTheUnitsOfTheHeader) {
    const CatalogueStar star = import_text(
                                   "# %ECSV 1.0\n# ---\n# datatype:\n"
                                   "# - {name: ra, unit: rad, datatype: float64}\n"
                                   "# - {name: dec, unit: rad, datatype: float64}\n"
                                   "# - {name: parallax, unit: arcsec, datatype: float64}\n"
                                   "# - {name: mag, unit: mag, datatype: float64}\n"
                                   "ra,dec,parallax,mag\n1,0.5,0.1,3\n")
                                   .stars.at(0);
    EXPECT_NEAR(star.lon, 57.29577951308232, 1e-12);
    EXPECT_NEAR(star.lat, 28.64788975654116, 1e-12);
    EXPECT_NEAR(star.distance, 10.0, 1e-12);
    const CatalogueStar light_years =
        import_text(
            "ra_deg;dec_deg;distance;Vmag\ndeg;deg;lyr;mag\n---;---;---;---\n1;2;326.15637772;3\n")
            .stars.at(0);
    EXPECT_NEAR(light_years.distance, 100.0, 1e-5);
}

TEST(Columns, OfColourMayBeAnIndexAGaiaColourOrATemperature) {
    const auto colour = [](const std::string& columns, const std::string& value) {
        return import_text("a,b,c,d\n1,2,3," + value + "\n",
                           with_columns("ra=1,dec=2,mag=3," + columns))
            .stars.at(0)
            .rgb;
    };
    // B-V 0.65 is 5778 K by the published relation; BP-RP from T = 5040 / theta.
    EXPECT_EQ(colour("bv=4", "0.65"), (std::array<std::uint8_t, 3>{255, 241, 234}));
    EXPECT_EQ(colour("teff=4", "5778"), (std::array<std::uint8_t, 3>{255, 241, 234}));
    EXPECT_EQ(colour("bprp=4", "0.7894"), (std::array<std::uint8_t, 3>{255, 241, 234}));
}

TEST(Columns, WithoutAValueLeaveItUnknown) {
    const Imported imported =
        import_text("ra_deg,dec_deg,vmag,parallax_mas\n1,2,3,\n1,2,3,-0.5\n1,2,3,0.2\n1,2,3,4\n");
    ASSERT_EQ(imported.stars.size(), 4U);
    EXPECT_EQ(imported.stars[0].distance, -1.0);
    EXPECT_EQ(imported.stars[1].distance, -1.0);
    EXPECT_EQ(imported.stars[2].distance, 5000.0);
    EXPECT_EQ(imported.stars[3].distance, 250.0);
    EXPECT_EQ(imported.summary.unknown.distances, 2U);
    EXPECT_EQ(imported.summary.unknown.colours, 4U);
    ImportOptions floor;
    floor.parallax_floor = 0.5;
    EXPECT_EQ(
        import_text("ra_deg,dec_deg,vmag,parallax_mas\n1,2,3,0.2\n", floor).stars.at(0).distance,
        -1.0);
    // A distance of 0 or below is unknown, as in a star file.
    EXPECT_EQ(import_text("ra_deg,dec_deg,vmag,distance_pc\n1,2,3,0\n").stars.at(0).distance, -1.0);
}

TEST(Choices, OfZeroPointWhiteAndFrame) {
    ImportOptions options;
    options.zero_point = 5.0;
    EXPECT_FLOAT_EQ(import_text("ra,dec,mag\n1,2,5\n", options).stars.at(0).luminance, 1.0F);
    options = {};
    options.white_point = lumivar::WhitePoint::Sun;
    const CatalogueStar sun = import_text("ra,dec,mag,teff\n1,2,5,5772\n", options).stars.at(0);
    EXPECT_EQ(sun.rgb, (std::array<std::uint8_t, 3>{255, 255, 255}));
    options = {};
    options.frame = lumivar::Frame::Galactic;
    // The galactic centre.
    const CatalogueStar centre =
        import_text("ra,dec,mag\n266.40498829,-28.93617776,1\n", options).stars.at(0);
    EXPECT_NEAR(std::remainder(centre.lon, 360.0), 0.0, 3e-5);
    EXPECT_NEAR(centre.lat, 0.0, 3e-5);
    options.frame = lumivar::Frame::Ecliptic;
    // The Sun's place at the solstice: 90 degrees of longitude.
    const CatalogueStar solstice =
        import_text("ra,dec,mag\n90,23.4392794,1\n", options).stars.at(0);
    EXPECT_NEAR(solstice.lon, 90.0, 3e-5);
    EXPECT_NEAR(solstice.lat, 0.0, 3e-5);
}

TEST(Choices, OfEpoch) {
    // Due north by 3.6 arcseconds a year: a thousandth of a degree.
    const std::string text = "ra,dec,mag,pmra,pmdec\n10,0,5,0,3600\n20,0,5,,\n";
    ImportOptions options;
    options.epoch = 2050.0;
    const Imported moved = import_text(text, options);
    EXPECT_NEAR(moved.stars.at(0).lat, 0.05, 1e-7);
    EXPECT_EQ(moved.stars.at(1).lat, 0.0);
    EXPECT_EQ(moved.summary.unknown.motions, 1U);
    options.catalogue_epoch = 2050.0;
    EXPECT_EQ(import_text(text, options).stars.at(0).lat, 0.0);
    EXPECT_EQ(import_text(text).stars.at(0).lat, 0.0) << "places of 2000 stay";
}

TEST(Inputs, FollowEachOtherAndMayLackTheirNames) {
    const ScratchFolder folder;
    write_file(folder / "1.csv", "ra_deg,dec_deg,vmag\n1,2,3\n");
    write_file(folder / "2.csv", "5,6,7\n8,9,10\n");
    const Imported imported = import_files({folder / "1.csv", folder / "2.csv"});
    ASSERT_EQ(imported.stars.size(), 3U);
    EXPECT_EQ(imported.stars[1].lon, 5.0);
    EXPECT_EQ(imported.stars[2].lat, 9.0);
    ASSERT_EQ(imported.files.size(), 2U);
    EXPECT_NE(imported.files[1].find("no line of names: columns as in the file before"),
              std::string::npos);
    EXPECT_EQ(failure_of([&] {
                  import_files({folder / "1.csv", folder / "none.csv"});
              }),
              "cannot read " + (folder / "none.csv") + ": No such file or directory");
}

TEST(Inputs, ShareTheirStarsWhenAsked) {
    const ScratchFolder folder;
    write_file(folder / "1.csv", "ra_deg,dec_deg,vmag\n10,20,3\n11,20,3\n");
    // 0.9 arcseconds north of the first, with a distance; the other is two magnitudes fainter.
    write_file(folder / "2.csv",
               "ra_deg,dec_deg,vmag,distance_pc\n10,20.00025,3.1,50\n11,20,5,60\n");
    ImportOptions options;
    options.dedupe = 1.0;
    const Imported imported = import_files({folder / "1.csv", folder / "2.csv"}, options);
    ASSERT_EQ(imported.stars.size(), 3U);
    EXPECT_EQ(imported.summary.merged, 1U);
    EXPECT_EQ(imported.summary.rows.kept(), 4U);
    EXPECT_EQ(imported.stars[0].lat, 20.0);
    EXPECT_EQ(imported.stars[0].distance, 50.0) << "what the first input did not know";
    EXPECT_EQ(imported.stars[2].distance, 60.0);
}

TEST(Inputs, OfAnArchiveMayHoldSeveralTables) {
    const std::string first =
        "#Column\tRAJ2000\nRAJ2000\tDEJ2000\tVmag\ndeg\tdeg\tmag\n---\t---\t---\n1\t2\t3\n\n";
    const std::string references = "#Column\tref\nref\ttext\n\t\n---\t---\n1\tHoffleit\n\n";
    const std::string second =
        "#Column\t_RAJ2000\n_RAJ2000\t_DEJ2000\tVTmag\tBTmag\ndeg\tdeg\tmag\tmag\n---\t---\t---\t--"
        "-\n"
        "4\t5\t6\t6.5\n";
    const Imported imported = import_text(first + references + second);
    ASSERT_EQ(imported.stars.size(), 2U);
    EXPECT_EQ(imported.stars[1].lon, 4.0);
    // V = VT - 0.090 (BT - VT)
    EXPECT_FLOAT_EQ(imported.stars[1].luminance, static_cast<float>(std::pow(10.0, -0.4 * 5.955)));
    EXPECT_EQ(imported.summary.rows.read(), 3U);
    EXPECT_EQ(imported.summary.rows.skipped(lumivar::FaultKind::OtherTable), 1U);
    EXPECT_EQ(imported.files.size(), 3U);
}

constexpr const char* kBarnard = "269.45402305,4.66828815,9.54,-797.84,10326.93,549.01\n";

TEST(Epochs, OfGaiaArePlacesOf2016UnlessTheArchiveMovedThem) {
    // In either case of letters: the same star is moved back 16 years.
    for (const char* names :
         {"ra,dec,phot_g_mean_mag,pmra,pmdec,parallax\n",
          "RA,DEC,PHOT_G_MEAN_MAG,PMRA,PMDEC,PARALLAX\n", "RA_ICRS,DE_ICRS,Gmag,pmRA,pmDE,Plx\n"}) {
        // 16 years of 10.32693 arcseconds.
        EXPECT_NEAR(import_text(std::string(names) + kBarnard).stars.at(0).lat,
                    4.66828815 - 16 * 10.32693 / 3600, 1e-5)
            << names;
    }
    const CatalogueStar computed =
        import_text(std::string("_RAJ2000,_DEJ2000,Gmag,pmRA,pmDE,Plx,RA_ICRS,DE_ICRS\n"
                                "269.45,4.7,9,-797.84,10326.93,549.01,269.44,4.8\n"))
            .stars.at(0);
    EXPECT_EQ(computed.lat, 4.7);
}

TEST(Epochs, OfEachTableInAFileAreItsOwn) {
    const auto table = [](const std::string& epoch) {
        return "#Coosys\tJ2000_" + epoch +
               ":\teq_FK5 "
               "J2000\n#Column\tRAdeg\nRAdeg\tDEdeg\tVmag\tpmRA\tpmDE\tPlx\ndeg\tdeg\tmag\t"
               "mas/yr\tmas/yr\tmas\n---\t---\t---\t---\t---\t---\n269\t4\t9\t0\t3600\t500\n\n";
    };
    const Imported imported = import_text(table("1990.000") + table("2015.500"));
    ASSERT_EQ(imported.stars.size(), 2U);
    // A thousandth of a degree a year.
    EXPECT_NEAR(imported.stars[0].lat, 4.01, 1e-8);
    EXPECT_NEAR(imported.stars[1].lat, 3.9845, 1e-8);
}

TEST(Epochs, ThatAreNoYearsAndMotionsWithoutEndAreFaults) {
    const std::string names = "ra,dec,mag,pmra,pmdec,parallax,rv,ref_epoch\n";
    const Imported imported = import_text(names +
                                          "1,2,3,4,5,6,7,2457000\n1,2,3,4,5,6,7,2016\n"
                                          "1,2,3,4,5,1e308,50,2016\n");
    EXPECT_EQ(imported.summary.rows.skipped(lumivar::FaultKind::MotionMalformed), 1U);
    for (const CatalogueStar& star : imported.stars) {
        EXPECT_TRUE(std::isfinite(star.lon) && std::isfinite(star.lat));
    }
    ImportOptions options;
    options.epoch = 2050.0;
    const Imported near_nothing =
        import_text("ra,dec,mag,pmra,pmdec,distance\n1,2,3,4,5,1e-310\n", options);
    EXPECT_TRUE(std::isfinite(near_nothing.stars.at(0).lat));
}

TEST(Columns, OfASignMayBeWrittenInManyWays) {
    const auto declination = [](const std::string& sign, const std::string& degrees) {
        return import_text("RAh,RAm,RAs,DE-,DEd,DEm,DEs,Vmag\n5,0,0," + sign + "," + degrees +
                           ",30,0,1\n")
            .stars.at(0)
            .lat;
    };
    for (const char* south : {"-", "S", "-1", "\xE2\x88\x92"}) {
        EXPECT_EQ(declination(south, "16"), -16.5) << south;
    }
    for (const char* north : {"+", "N", "1", ""}) {
        EXPECT_EQ(declination(north, "16"), 16.5) << north;
    }
    EXPECT_EQ(declination("", "-16"), -16.5);
    const Imported odd = import_text(
        "RAh,RAm,RAs,DE-,DEd,DEm,DEs,Vmag\n5,0,0,x,1,2,3,1\n5,61,0,+,1,2,3,1\n5,1,0,+,1,2,3,1\n");
    ASSERT_EQ(odd.skips.size(), 2U);
    EXPECT_EQ(odd.skips[0].substr(0, 28), "t.csv:2: column 4 (DE-): \"x\"");
    EXPECT_EQ(odd.skips[1].substr(0, 29), "t.csv:3: column 2 (RAm): \"61\"");
}

TEST(Columns, InTheUnitOfAnotherQuantityAreNotMeant) {
    const std::string archive =
        "# %ECSV 1.0\n# ---\n# datatype:\n# - {name: ra, unit: deg}\n# - {name: dec, unit: deg}\n"
        "# - {name: distance, unit: deg}\n# - {name: parallax, unit: mas}\n# - {name: mag, unit: "
        "mag}\n"
        "ra,dec,distance,parallax,mag\n1,2,0.03,100,5\n";
    EXPECT_EQ(import_text(archive).stars.at(0).distance, 10.0);
    EXPECT_EQ(
        import_text_failure(archive, with_columns("distance=distance")),
        "t.csv: --columns distance=distance: the file says that it is in deg, which is no unit of "
        "that");
    // A right ascension whose unit is degrees, minutes and seconds.
    EXPECT_NEAR(
        import_text("RA\tDE\tVmag\n\"d:m:s\"\t\"d:m:s\"\tmag\n---\t---\t---\n10:17:13\t5:0:0\t3\n")
            .stars.at(0)
            .lon,
        10.0 + 17.0 / 60.0 + 13.0 / 3600.0, 1e-12);
    // The band g of other surveys.
    EXPECT_EQ(import_text_failure("RAJ2000,DEJ2000,gmag,rmag\n1,2,3,4\n").substr(0, 48),
              "t.csv: cannot tell which columns hold: magnitude");
    EXPECT_EQ(import_text("ra,dec,mag,Gmag,gmag\n1,2,5,4,3\n").stars.size(), 1U);
    EXPECT_EQ(import_text("\n\n\nra;dec;mag\nrad;rad;mag\n---;---;---\n1;0;3\n").stars.at(0).lon,
              180.0 / 3.141592653589793);
}

TEST(Columns, ThatAreNamedReplaceWhatWasRecognised) {
    const std::string text = "ra_deg,dec_deg,vmag,bv,other\n1,2,3,0.65,10000\n";
    EXPECT_EQ(import_text(text, with_columns("teff=other")).stars.at(0).rgb,
              import_text("ra_deg,dec_deg,vmag,teff\n1,2,3,10000\n").stars.at(0).rgb);
    EXPECT_EQ(import_text_failure(text, with_columns("ra=1,dec=1,mag=3")),
              "t.csv: --columns dec=1: that column is ra already");
}

TEST(Columns, OfTheHygFamilyAreInHours) {
    EXPECT_EQ(import_text("proper,ra,dec,dist,mag,ci\nSirius,6.5,-16.7,2.6,-1.44,0.009\n")
                  .stars.at(0)
                  .lon,
              97.5);
    const CatalogueStar second =
        import_text(
            "StarID,HIP,ProperName,RA,Dec,Distance,PMRA,PMDec,RV,Mag,AbsMag,ColorIndex\n"
            "32263,32349,Sirius,6.5,-16.7,2.6,0,0,0,-1.44,1.4,0.65\n")
            .stars.at(0);
    EXPECT_EQ(second.lon, 97.5);
    EXPECT_EQ(second.distance, 2.6);
    EXPECT_EQ(second.rgb, (std::array<std::uint8_t, 3>{255, 241, 234}));
    // What only looks so is told.
    std::string table = "ra,dec,mag\n";
    for (int hour = 0; hour < 24; ++hour) {
        table += std::to_string(hour) + ",10,5\n";
    }
    ASSERT_EQ(import_text(table).remarks.size(), 1U);
    EXPECT_TRUE(import_text(table + "25,10,5\n").remarks.empty());
}

TEST(Columns, OfTychoMagnitudesMustBeNumbers) {
    const Imported imported =
        import_text("ra,dec,BTmag,VTmag\n1,2,5.5,5\n1,2,ab,5\n1,2,99.9,5\n1,2,,5\n");
    EXPECT_EQ(imported.stars.size(), 2U);
    EXPECT_EQ(imported.summary.rows.skipped(lumivar::FaultKind::ColourMalformed), 1U);
    EXPECT_EQ(imported.summary.rows.skipped(lumivar::FaultKind::ColourOutOfRange), 1U);
}

TEST(Columns, OfParallaxServeWhereTheDistanceIsUnknown) {
    EXPECT_EQ(import_text("ra,dec,mag,distance_pc,parallax\n1,2,3,-1,100\n").stars.at(0).distance,
              10.0);
    EXPECT_EQ(import_text("ra,dec,mag\n-90,2,3\n").stars.at(0).lon, 270.0);
}

TEST(Inputs, ThatArePartsOfOneCatalogueKeepTheirDoubleStars) {
    const ScratchFolder folder;
    const std::string names = "ra,dec,phot_g_mean_mag\n";
    write_file(folder / "1.csv", names + "10,20,3\n");
    write_file(folder / "2.csv", names + "10,20.0001,3\n");
    ImportOptions options;
    options.dedupe = 1.0;
    EXPECT_EQ(import_files({folder / "1.csv", folder / "2.csv"}, options).stars.size(), 2U);
}

}  // namespace
