// Any file as a FITS table: refused, or read twice with the same values, each text without blanks
// round it and each number finite.
#include "tables/fits_table.h"

#include <bit>
#include <vector>

#include "failure.h"
#include "harness.h"
#include "input_file.h"
#include "tables/fields.h"

namespace {

/// What the first rows hold, or why they cannot be read.
std::vector<std::string> content_of(const std::string& path) {
    std::vector<std::string> content;
    try {
        lumivar::FitsTable table(path, "table.fits");
        std::vector<lumivar::ColumnIndex> used;
        constexpr std::size_t kColumns = 4;
        for (std::size_t i = 0; i < table.columns().size() && used.size() < kColumns; ++i) {
            content.push_back(table.columns()[i].name + "/" + table.columns()[i].unit);
            if (!table.columns()[i].name.empty()) {
                used.push_back(i);
            }
        }
        table.choose(used);
        constexpr int kRows = 10000;
        for (int row = 0; row < kRows && table.next() == lumivar::Table::Step::Row; ++row) {
            for (const lumivar::ColumnIndex column : used) {
                const lumivar::FieldNumber number = table.number(column);
                require(std::isfinite(number.value), "a number that is none");
                const std::string text(table.text(column));
                require(text == lumivar::trimmed(text), "a text with blanks round it");
                content.push_back(std::to_string(std::bit_cast<std::uint64_t>(number.value)));
                content.push_back(text);
            }
        }
    } catch (const lumivar::Failure& failure) {
        content.emplace_back(failure.what());
    }
    return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = input_file("table.fits", text_of(data, size));
    require(content_of(path) == content_of(path), "a second reading gives other values");
    return 0;
}
