#include "import/row_place.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "astronomy/epoch.h"
#include "astronomy/frame.h"
#include "astronomy/sexagesimal.h"
#include "import/units.h"

namespace lumivar {
namespace {

// Years that a catalogue's places may be of; a Julian date is none.
constexpr double kFirstEpoch = 1800.0;
constexpr double kLastEpoch = 2200.0;

constexpr const char* kAngleRemedy =
    "; give 0 to 360 degrees or 0 to 24 hours of right ascension, or -180 to 180 degrees, and -90 "
    "to 90 degrees of declination";

/// An angle of a row in degrees, and the column that a fault of it names.
struct RowAngle {
    FieldNumber degrees;
    Quantity quantity;
};
struct RowAngles {
    RowAngle ra;
    RowAngle dec;

    bool is_missing() const {
        return ra.degrees.state == FieldState::Missing || dec.degrees.state == FieldState::Missing;
    }
};

/// An angle of one column, decimal or sexagesimal.
RowAngle angle_of(const RowValues& row, Quantity quantity, bool sexagesimal_hours) {
    FieldNumber angle = row.number(quantity);
    if (angle.state == FieldState::Malformed) {
        const bool parsed = sexagesimal_hours ? parse_hours(row.text(quantity), angle.value)
                                              : parse_degrees(row.text(quantity), angle.value);
        angle.state = parsed ? FieldState::Given : FieldState::Malformed;
    } else {
        angle.value *= degrees_in(row.unit(quantity));
    }
    return {angle, quantity};
}

RowAngles angles_in_columns(const RowValues& row, Quantity ra, Quantity dec) {
    return {angle_of(row, ra, !row.layout().sexagesimal_in_degrees), angle_of(row, dec, false)};
}

/// Units, minutes and seconds of three columns as one angle in degrees. A fault names the column
/// that it is in.
RowAngle joined(const RowValues& row, const std::array<Quantity, 3>& columns, bool negative,
                Unit unit) {
    std::array<double, 3> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const FieldNumber part = row.number(columns[i]);
        if (part.state != FieldState::Given) {
            return {{part.state, 0.0}, columns[i]};
        }
        // Old catalogues write 60.0 seconds where rounding led there.
        const bool fits = i == 0   ? true
                          : i == 1 ? part.value >= 0.0 && part.value < 60.0
                                   : part.value >= 0.0 && part.value <= 60.0;
        if (!fits) {
            return {{FieldState::Malformed, 0.0}, columns[i]};
        }
        parts[i] = part.value;
    }
    const double angle = from_sexagesimal(negative, std::fabs(parts[0]), parts[1], parts[2]);
    return {{FieldState::Given, angle * degrees_in(unit)}, columns[0]};
}

/// Whether a column for the sign of the declination says south; nothing when it says neither.
std::optional<bool> is_south(const RowValues& row) {
    const FieldNumber number = row.number(Quantity::DecSign);
    if (number.state == FieldState::Given) {
        return number.value < 0.0;
    }
    const std::string_view sign = row.text(Quantity::DecSign);
    if (sign == "-" || sign == "S" || sign == "s" || sign == "\xE2\x88\x92") {
        return true;
    }
    return sign.empty() || sign == "+" || sign == "N" || sign == "n" ? std::optional(false)
                                                                     : std::nullopt;
}

RowAngles angles_in_parts(const RowValues& row) {
    // -0 degrees and some minutes are south. A text keeps that sign, a whole number in a binary
    // table does not.
    const std::optional<bool> south = is_south(row);
    const bool negative =
        south.value_or(false) || std::signbit(row.number(Quantity::DecDegrees).value);
    RowAngles angles = {
        joined(row, {Quantity::RaHours, Quantity::RaMinutes, Quantity::RaSeconds},
               std::signbit(row.number(Quantity::RaHours).value), Unit::Hours),
        joined(row, {Quantity::DecDegrees, Quantity::DecMinutes, Quantity::DecSeconds}, negative,
               Unit::Degrees)};
    if (!south) {
        angles.dec = {{FieldState::Malformed, 0.0}, Quantity::DecSign};
    }
    return angles;
}

std::optional<RowFault> check(const RowValues& row, const RowAngles& angles) {
    if (angles.is_missing()) {
        const bool no_ra = angles.ra.degrees.state == FieldState::Missing;
        return row.missing(
            row.layout().has_entries_without_place ? FaultKind::NoStar : FaultKind::PlaceMissing,
            no_ra ? angles.ra.quantity : angles.dec.quantity);
    }
    for (const RowAngle& angle : {angles.ra, angles.dec}) {
        if (angle.degrees.state == FieldState::Malformed) {
            return row.no_angle(angle.quantity);
        }
    }
    const double ra = angles.ra.degrees.value;
    const double dec = angles.dec.degrees.value;
    if (!(ra >= -180.0 && ra <= 360.0)) {
        return row.out_of_range(FaultKind::PlaceOutOfRange, angles.ra.quantity, ra, kAngleRemedy);
    }
    if (!(std::fabs(dec) <= 90.0)) {
        return row.out_of_range(FaultKind::PlaceOutOfRange, angles.dec.quantity, dec, kAngleRemedy);
    }
    return std::nullopt;
}

/// Parallax in milliarcseconds, from the distance where the row has that instead; 0 unknown.
double parallax_of(const RowValues& row) {
    const FieldNumber parallax = row.number(Quantity::Parallax);
    const FieldNumber distance = row.number(Quantity::Distance);
    double result = 0.0;
    if (parallax.state == FieldState::Given) {
        result = parallax.value * milliarcseconds_in(row.unit(Quantity::Parallax));
    } else if (distance.state == FieldState::Given && distance.value > 0.0) {
        result = milliarcseconds_in(Unit::Arcseconds) /
                 (distance.value * parsecs_in(row.unit(Quantity::Distance)));
    }
    return std::isfinite(result) ? result : 0.0;
}

/// Takes the place to the year that was asked for.
std::optional<RowFault> move(const RowValues& row, const ImportOptions& options, bool observed,
                             RowPlace& result) {
    for (const Quantity quantity : {Quantity::Epoch, Quantity::ProperMotionRa,
                                    Quantity::ProperMotionDec, Quantity::RadialVelocity}) {
        if (row.number(quantity).state == FieldState::Malformed) {
            return row.malformed(FaultKind::MotionMalformed, quantity, "");
        }
    }
    const FieldNumber epoch = row.number(Quantity::Epoch);
    if (epoch.state == FieldState::Given &&
        !(epoch.value >= kFirstEpoch && epoch.value <= kLastEpoch)) {
        return row.out_of_range(FaultKind::MotionMalformed, Quantity::Epoch, epoch.value,
                                "; give a Julian year such as 1991.25");
    }
    const double from = options.catalogue_epoch            ? *options.catalogue_epoch
                        : epoch.state == FieldState::Given ? epoch.value
                                                           : row.layout().epoch;
    if (from == options.epoch && !observed) {
        return std::nullopt;
    }
    const FieldNumber pm_ra = row.number(Quantity::ProperMotionRa);
    const FieldNumber pm_dec = row.number(Quantity::ProperMotionDec);
    if (pm_ra.state == FieldState::Missing || pm_dec.state == FieldState::Missing || observed) {
        result.left_behind = true;
        return std::nullopt;
    }
    Motion motion;
    motion.ra = result.place.ra;
    motion.dec = result.place.dec;
    motion.pm_ra_cosdec = pm_ra.value * milliarcseconds_in(row.unit(Quantity::ProperMotionRa));
    motion.pm_dec = pm_dec.value * milliarcseconds_in(row.unit(Quantity::ProperMotionDec));
    motion.parallax = parallax_of(row);
    motion.radial_velocity = row.number(Quantity::RadialVelocity).value;
    result.place = move_to_epoch(motion, options.epoch - from);
    if (!std::isfinite(result.place.ra) || !std::isfinite(result.place.dec)) {
        return row.out_of_range(FaultKind::MotionMalformed, Quantity::ProperMotionRa, pm_ra.value,
                                " with this parallax and radial velocity");
    }
    return std::nullopt;
}

}  // namespace

std::optional<RowFault> read_place(const RowValues& row, const ImportOptions& options,
                                   RowPlace& result) {
    RowAngles angles =
        row.has_column(Quantity::RightAscension) && row.has_column(Quantity::Declination)
            ? angles_in_columns(row, Quantity::RightAscension, Quantity::Declination)
            : angles_in_parts(row);
    const bool observed = angles.is_missing() && row.has_column(Quantity::ObservedRightAscension) &&
                          row.has_column(Quantity::ObservedDeclination);
    if (observed) {
        angles =
            angles_in_columns(row, Quantity::ObservedRightAscension, Quantity::ObservedDeclination);
    }
    if (std::optional<RowFault> fault = check(row, angles)) {
        return fault;
    }
    const double ra = angles.ra.degrees.value;
    result.place = {ra < 0.0 ? turned_into_circle(ra) : ra, angles.dec.degrees.value};
    result.left_behind = false;
    result.ra_read = ra;
    // What a database stored is of any epoch, and says none.
    if (!row.has_column(Quantity::Luminance)) {
        if (std::optional<RowFault> fault = move(row, options, observed, result)) {
            return fault;
        }
    }
    if (options.frame != Frame::Equatorial) {
        result.place = to_frame(result.place, options.frame);
    }
    return std::nullopt;
}

}  // namespace lumivar
