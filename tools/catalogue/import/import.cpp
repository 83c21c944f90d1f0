#include "import/import.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <system_error>

#include "astronomy/star_light.h"
#include "database/database_writer.h"
#include "progress.h"
#include "tables/csv.h"

namespace lumivar {
namespace {

constexpr const char* kExampleHeader = "ra_deg,dec_deg,vmag,bv,distance_pc";

constexpr std::uint32_t kStarsBetweenProgress = 4096;

struct Columns {
    explicit Columns(const CsvReader& table)
        : ra(table.required_column("ra_deg")),
          dec(table.required_column("dec_deg")),
          magnitude(table.required_column("vmag")),
          colour(table.column("bv")),
          distance(table.column("distance_pc")) {}

    std::size_t ra;
    std::size_t dec;
    std::size_t magnitude;
    std::optional<std::size_t> colour;
    std::optional<std::size_t> distance;
};

bool is_given(const CsvReader& table, const std::optional<std::size_t>& column) {
    return column && !table.field(*column).empty();
}

CatalogueStar read_star(const CsvReader& table, const Columns& columns, ImportSummary& summary) {
    CatalogueStar star;
    star.lon = table.number(columns.ra, 0.0, 360.0, "give degrees from 0 to 360");
    star.lat = table.number(columns.dec, -90.0, 90.0, "give degrees from -90 to 90");
    star.luminance = static_cast<float>(luminance_from_magnitude(
        table.number(columns.magnitude, -30.0, 90.0, "give a magnitude from -30 to 90")));
    double colour_index = kNeutralColourIndex;
    if (is_given(table, columns.colour)) {
        colour_index = table.number(*columns.colour, -10.0, 20.0,
                                    "give a colour index from -10 to 20, or leave the field empty");
    } else {
        ++summary.without_colour;
    }
    star.rgb = code_from_colour_index(colour_index);
    if (is_given(table, columns.distance)) {
        star.distance =
            table.number(*columns.distance, std::numeric_limits<double>::min(),
                         std::numeric_limits<double>::max(),
                         "give parsecs above 0, or leave the field empty for an unknown distance");
    } else {
        ++summary.without_distance;
    }
    return star;
}

}  // namespace

ImportSummary import_catalogue(const std::string& input, const std::filesystem::path& output) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored)) {
        throw UsageError("the output would replace its own input " + input);
    }
    LineReader lines(input);
    DatabaseWriter database(output);
    CsvReader table(lines, kExampleHeader);
    const Columns columns(table);

    ImportSummary summary;
    Progress progress(lines.bytes_in_all(), "bytes");
    while (table.next()) {
        database.add(read_star(table, columns, summary), 0);
        ++summary.stars;
        if (summary.stars % kStarsBetweenProgress == 0) {
            progress.update(lines.bytes_read());
        }
    }
    database.publish();
    return summary;
}

}  // namespace lumivar
