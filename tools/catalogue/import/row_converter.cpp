#include "import/row_converter.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "astronomy/distance.h"
#include "import/row_light.h"
#include "import/row_place.h"
#include "import/row_values.h"
#include "import/units.h"

namespace lumivar {
namespace {

constexpr const char* kDistanceRemedy = "; leave the field empty for an unknown one";

/// What a distance column says, in parsecs, for a star of our own.
double known_distance(const Layout& layout, double parsecs) {
    if (layout.has(Quantity::Luminance)) {
        return parsecs;  // as a database stored it, unknown ones too
    }
    const bool is_known =
        parsecs > 0.0 && (layout.unknown_distance == 0.0 || parsecs < layout.unknown_distance);
    return is_known ? parsecs : kUnknownDistance;
}

std::optional<RowFault> read_distance(const RowValues& row, const ImportOptions& options,
                                      double& parsecs) {
    const FieldNumber distance = row.number(Quantity::Distance);
    const FieldNumber parallax = row.number(Quantity::Parallax);
    parsecs = kUnknownDistance;
    if (distance.state == FieldState::Malformed) {
        return row.malformed(FaultKind::DistanceMalformed, Quantity::Distance, kDistanceRemedy);
    }
    if (distance.state == FieldState::Given) {
        const double length = distance.value * parsecs_in(row.unit(Quantity::Distance));
        if (!std::isfinite(length)) {
            return row.out_of_range(FaultKind::DistanceOutOfRange, Quantity::Distance,
                                    distance.value, kDistanceRemedy);
        }
        parsecs = known_distance(row.layout(), length);
    }
    if (parsecs > 0.0 || row.has_column(Quantity::Luminance)) {
        return std::nullopt;
    }
    if (parallax.state == FieldState::Malformed) {
        return row.malformed(FaultKind::DistanceMalformed, Quantity::Parallax, kDistanceRemedy);
    }
    if (parallax.state == FieldState::Given) {
        parsecs = distance_from_parallax(
            parallax.value * milliarcseconds_in(row.unit(Quantity::Parallax)),
            options.parallax_floor);
    }
    return std::nullopt;
}

/// Made once for all imports of a process: it takes longer than a small table.
const StarColours& colours_for(WhitePoint white) {
    if (white == WhitePoint::Sun) {
        static const StarColours colours(WhitePoint::Sun);
        return colours;
    }
    static const StarColours colours(WhitePoint::D65);
    return colours;
}

}  // namespace

RowConverter::RowConverter(const ImportOptions& options)
    : options_(options), colours_(colours_for(options.white_point)) {}

bool RowConverter::convert(const Table& table, CatalogueStar& star, RowFault& fault) {
    const RowValues row(table, layout_);
    RowPlace place;
    RowLight light;
    std::optional<RowFault> found = read_place(row, options_, place);
    if (!found) {
        found = read_light(row, options_, colours_, light);
    }
    if (!found) {
        found = read_distance(row, options_, star.distance);
    }
    if (found) {
        fault = std::move(*found);
        return false;
    }
    largest_ra_ = std::max(largest_ra_, place.ra_read);
    star.lon = place.place.ra;
    star.lat = place.place.dec;
    star.luminance = light.luminance;
    star.rgb = light.rgb;
    unknown_.motions += place.left_behind ? 1U : 0U;
    unknown_.colours += light.without_colour ? 1U : 0U;
    unknown_.distances += star.distance > 0.0 ? 0U : 1U;
    return true;
}

}  // namespace lumivar
