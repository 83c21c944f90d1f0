#include "import/row_place.h"

#include <cmath>
#include <numbers>

#include "astronomy/epoch.h"
#include "astronomy/frame.h"
#include "astronomy/sexagesimal.h"

namespace lumivar {
namespace {

constexpr double kDegreesInHour = 15.0;
constexpr double kDegreesInRadian = 180.0 / std::numbers::pi;
constexpr double kMilliarcsecondsInArcsecond = 1000.0;
constexpr double kParsecsInKiloparsec = 1000.0;
// 9.4607304725808e15 m in a light year, 3.0856775814913673e16 m in a parsec.
constexpr double kParsecsInLightYear = 0.30660139378555;

constexpr const char* kAngleRemedy =
    "; give 0 to 360 degrees or 0 to 24 hours of right ascension, -90 to 90 degrees of declination";

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
    } else if (row.unit(quantity) == Unit::Hours) {
        angle.value *= kDegreesInHour;
    } else if (row.unit(quantity) == Unit::Radians) {
        angle.value *= kDegreesInRadian;
    }
    return {angle, quantity};
}

RowAngles angles_in_columns(const RowValues& row, Quantity ra, Quantity dec) {
    return {angle_of(row, ra, !row.layout().sexagesimal_in_degrees), angle_of(row, dec, false)};
}

/// Units, minutes and seconds of three columns as one angle; `units_in_degrees` is 15 for hours.
FieldNumber joined(const RowValues& row, Quantity units_column, Quantity minutes_column,
                   Quantity seconds_column, bool negative, double units_in_degrees) {
    const FieldNumber units = row.number(units_column);
    const FieldNumber minutes = row.number(minutes_column);
    const FieldNumber seconds = row.number(seconds_column);
    for (const FieldNumber& part : {units, minutes, seconds}) {
        if (part.state != FieldState::Given) {
            return {part.state, 0.0};
        }
    }
    // Old catalogues write 60.0 seconds where rounding led there.
    if (!(minutes.value >= 0.0 && minutes.value < 60.0 && seconds.value >= 0.0 &&
          seconds.value <= 60.0)) {
        return {FieldState::Malformed, 0.0};
    }
    return {FieldState::Given, units_in_degrees * from_sexagesimal(negative, std::fabs(units.value),
                                                                   minutes.value, seconds.value)};
}

RowAngles angles_in_parts(const RowValues& row) {
    // -0 degrees and some minutes are south: the sign is read as a text.
    const std::string_view sign = row.has_column(Quantity::DecSign)
                                      ? row.text(Quantity::DecSign)
                                      : row.text(Quantity::DecDegrees).substr(0, 1);
    const FieldNumber hours = row.number(Quantity::RaHours);
    return {{joined(row, Quantity::RaHours, Quantity::RaMinutes, Quantity::RaSeconds,
                    hours.value < 0.0, kDegreesInHour),
             Quantity::RaHours},
            {joined(row, Quantity::DecDegrees, Quantity::DecMinutes, Quantity::DecSeconds,
                    sign == "-", 1.0),
             Quantity::DecDegrees}};
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
    if (!(ra >= 0.0 && ra <= 360.0)) {
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
    if (parallax.state == FieldState::Given) {
        return parallax.value * milliarcseconds_in(row.unit(Quantity::Parallax));
    }
    const FieldNumber distance = row.number(Quantity::Distance);
    return distance.state == FieldState::Given && distance.value > 0.0
               ? kMilliarcsecondsInArcsecond /
                     (distance.value * parsecs_in(row.unit(Quantity::Distance)))
               : 0.0;
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
    return std::nullopt;
}

}  // namespace

double milliarcseconds_in(Unit unit) {
    return unit == Unit::Arcseconds || unit == Unit::ArcsecondsPerYear ? kMilliarcsecondsInArcsecond
                                                                       : 1.0;
}

double parsecs_in(Unit unit) {
    return unit == Unit::Kiloparsecs  ? kParsecsInKiloparsec
           : unit == Unit::LightYears ? kParsecsInLightYear
                                      : 1.0;
}

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
    result.place = {angles.ra.degrees.value, angles.dec.degrees.value};
    result.left_behind = false;
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
