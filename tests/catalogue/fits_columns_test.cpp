// Columns of FITS tables that are not simply one number a row.
#include <fitsio.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalogue/import_support.h"
#include "failure_of.h"
#include "support/scratch.h"

namespace {

struct FitsColumn {
    const char* name;
    const char* form;  ///< as TFORMn has it
    std::vector<double> values;
};

/// A file of one binary table; texts are left blank.
void write_fits(const std::string& path, long long rows, const std::vector<FitsColumn>& columns) {
    fitsfile* file = nullptr;
    int status = 0;
    std::vector<char*> names;
    std::vector<char*> forms;
    for (const FitsColumn& column : columns) {
        names.push_back(const_cast<char*>(column.name));
        forms.push_back(const_cast<char*>(column.form));
    }
    fits_create_diskfile(&file, path.c_str(), &status);
    fits_create_tbl(file, BINARY_TBL, rows, static_cast<int>(columns.size()), names.data(),
                    forms.data(), nullptr, nullptr, &status);
    int number = 0;
    for (const FitsColumn& column : columns) {
        ++number;
        std::vector<double> values = column.values;
        if (!values.empty()) {
            fits_write_col(file, TDOUBLE, number, 1, 1, static_cast<long long>(values.size()),
                           values.data(), &status);
        }
    }
    fits_close_file(file, &status);
    ASSERT_EQ(status, 0);
}

lumivar::ImportOptions choosing(const std::string& columns) {
    lumivar::ImportOptions options;
    options.columns = lumivar::parse_columns(columns);
    return options;
}

TEST(FitsColumns, OfSeveralValuesOrLongTextsAreRefused) {
    const ScratchFolder folder;
    const std::string path = folder / "t.fits";
    write_fits(path, 2,
               {{"vector", "3D", {1, 2, 3, 4, 5, 6}},
                {"dec", "1D", {1, 2}},
                {"mag", "1E", {3, 4}},
                {"text", "300A", {}},
                {"ra", "1D", {7, 8}}});
    EXPECT_EQ(import_files({path}).stars.at(1).lon, 8.0);
    for (const char* columns : {"ra=1,dec=2,mag=3", "ra=4,dec=2,mag=3"}) {
        EXPECT_EQ(
            failure_of([&] { import_files({path}, choosing(columns)); }),
            path + ": column " + columns[3] +
                " cannot be used: it holds several values in each row, or a text of more than "
                "256 characters");
    }
}

TEST(FitsColumns, KeepTheSignOfADeclinationInParts) {
    const ScratchFolder folder;
    const std::string path = folder / "t.fits";
    write_fits(path, 2,
               {{"RAh", "1J", {6, 6}},
                {"RAm", "1J", {45, 45}},
                {"RAs", "1D", {9, 9}},
                {"DEd", "1J", {-16, 16}},
                {"DEm", "1J", {30, 30}},
                {"DEs", "1D", {0, 0}},
                {"Vmag", "1E", {1, 1}}});
    const Imported imported = import_files({path});
    EXPECT_EQ(imported.stars.at(0).lat, -16.5);
    EXPECT_EQ(imported.stars.at(1).lat, 16.5);
}

TEST(FitsColumns, OfADatabaseMakeItsStars) {
    const ScratchFolder folder;
    const std::string path = folder / "t.fits";
    write_fits(path, 1,
               {{"lon_deg", "1D", {10}},
                {"lat_deg", "1D", {20}},
                {"luminance", "1E", {0.25}},
                {"r", "1I", {255}},
                {"g", "1I", {200}},
                {"b", "1I", {100}},
                {"distance_pc", "1D", {5}}});
    const Imported imported = import_files({path});
    EXPECT_EQ(imported.stars.at(0).luminance, 0.25F);
    EXPECT_EQ(imported.stars.at(0).rgb, (std::array<std::uint8_t, 3>{255, 200, 100}));
    EXPECT_EQ(failure_of([&] {
                  lumivar::ImportOptions options;
                  options.format = lumivar::Format::Tycho2;
                  import_files({path}, options);
              }),
              path + ": is a FITS file; leave --format away to have it recognised");
}

}  // namespace
