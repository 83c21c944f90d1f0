#include "import/row_converter.h"

#include <charconv>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "astronomy/distance.h"
#include "astronomy/epoch.h"
#include "astronomy/frame.h"
#include "astronomy/photometry.h"
#include "astronomy/sexagesimal.h"
#include "tables/fields.h"

namespace lumivar {
namespace {

constexpr double kDegreesInHour = 15.0;
constexpr double kDegreesInRadian = 180.0 / std::numbers::pi;
constexpr double kMilliarcseconds = 1000.0;  // in an arcsecond
constexpr double kParsecsInLightYear = 0.306601393;
constexpr double kParsecsInKiloparsec = 1000.0;
// In single precision the luminances of these are normal numbers.
constexpr double kBrightest = -30.0;
constexpr double kFaintest = 90.0;
// Brighter than any star of the night.
constexpr double kFaintestSun = -20.0;
constexpr double kLowestColour = -10.0;
constexpr double kHighestColour = 20.0;

constexpr const char* kAngleRange =
    "; give 0 to 360 degrees or 0 to 24 hours of right ascension, -90 to 90 degrees of declination";

bool fail(RowFault& fault, FaultKind kind, std::string detail) {
    fault = {kind, std::move(detail)};
    return false;
}

std::string column_text(const Table& table, ColumnIndex column) {
    const std::string& name = table.columns()[column].name;
    std::string text = "column ";
    text += std::to_string(column + 1);
    if (!name.empty()) {
        text += " (";
        text += shown_field(name);
        text += ")";
    }
    return text;
}

/// "column 3 (vmag): \"blue\" is not a number; give ...".
std::string malformed_text(const Table& table, ColumnIndex column, const char* remedy) {
    return column_text(table, column) + ": \"" + shown_field(table.text(column)) +
           "\" is not a number" + remedy;
}

std::string range_text(const Table& table, ColumnIndex column, double value, const char* remedy) {
    std::string shown = shown_field(table.text(column));
    if (shown.empty()) {
        shown = std::to_string(value);
    }
    return column_text(table, column) + ": " + shown + " is out of range" + remedy;
}

FieldNumber number_of(const Table& table, const std::optional<ColumnUse>& use) {
    return use ? table.number(use->column) : FieldNumber{};
}

double in_milliarcseconds(double value, Unit unit) {
    return unit == Unit::Arcseconds || unit == Unit::ArcsecondsPerYear ? value * kMilliarcseconds
                                                                       : value;
}

double in_parsecs(double value, Unit unit) {
    return unit == Unit::Kiloparsecs  ? value * kParsecsInKiloparsec
           : unit == Unit::LightYears ? value * kParsecsInLightYear
                                      : value;
}

/// An angle of one column in degrees, decimal or sexagesimal.
FieldNumber angle_of(const Table& table, const ColumnUse& use, bool sexagesimal_hours) {
    FieldNumber angle = table.number(use.column);
    if (angle.state == FieldState::Malformed) {
        const std::string_view text = table.text(use.column);
        const bool parsed =
            sexagesimal_hours ? parse_hours(text, angle.value) : parse_degrees(text, angle.value);
        angle.state = parsed ? FieldState::Given : FieldState::Malformed;
        return angle;
    }
    if (use.unit == Unit::Hours) {
        angle.value *= kDegreesInHour;
    } else if (use.unit == Unit::Radians) {
        angle.value *= kDegreesInRadian;
    }
    return angle;
}

/// The state of several columns that make one value.
FieldState state_of(std::initializer_list<FieldNumber> parts) {
    FieldState state = FieldState::Given;
    for (const FieldNumber& part : parts) {
        if (part.state != FieldState::Given) {
            state = part.state;
        }
    }
    return state;
}

struct RawPlace {
    FieldNumber ra;   ///< degrees
    FieldNumber dec;  ///< degrees
    ColumnIndex ra_column = 0;
    ColumnIndex dec_column = 0;
};

RawPlace place_in_parts(const Table& table, const Layout& layout) {
    RawPlace place;
    place.ra_column = layout.use(Quantity::RaHours)->column;
    place.dec_column = layout.use(Quantity::DecDegrees)->column;
    const FieldNumber hours = table.number(place.ra_column);
    const FieldNumber ra_minutes = number_of(table, layout.use(Quantity::RaMinutes));
    const FieldNumber ra_seconds = number_of(table, layout.use(Quantity::RaSeconds));
    place.ra = {
        state_of({hours, ra_minutes, ra_seconds}),
        kDegreesInHour * from_sexagesimal(false, hours.value, ra_minutes.value, ra_seconds.value)};
    const std::string_view degrees_text = table.text(place.dec_column);
    const FieldNumber degrees = table.number(place.dec_column);
    const FieldNumber dec_minutes = number_of(table, layout.use(Quantity::DecMinutes));
    const FieldNumber dec_seconds = number_of(table, layout.use(Quantity::DecSeconds));
    // -0 degrees and some minutes are south: the sign is a text and no number.
    const std::optional<ColumnUse>& sign = layout.use(Quantity::DecSign);
    const bool negative = sign ? table.text(sign->column) == "-"
                               : !degrees_text.empty() && degrees_text.front() == '-';
    place.dec = {
        state_of({degrees, dec_minutes, dec_seconds}),
        from_sexagesimal(negative, std::fabs(degrees.value), dec_minutes.value, dec_seconds.value)};
    const bool overflows = ra_minutes.value >= 60.0 || ra_seconds.value > 60.0 ||
                           dec_minutes.value >= 60.0 || dec_seconds.value > 60.0 ||
                           ra_minutes.value < 0.0 || ra_seconds.value < 0.0 ||
                           dec_minutes.value < 0.0 || dec_seconds.value < 0.0;
    if (overflows && place.ra.state == FieldState::Given) {
        place.ra.state = FieldState::Malformed;
    }
    return place;
}

RawPlace place_in_columns(const Table& table, const Layout& layout, Quantity ra_quantity,
                          Quantity dec_quantity) {
    const ColumnUse& ra = *layout.use(ra_quantity);
    const ColumnUse& dec = *layout.use(dec_quantity);
    return {angle_of(table, ra, !layout.sexagesimal_in_degrees), angle_of(table, dec, false),
            ra.column, dec.column};
}

}  // namespace

/// Brightness and colour of a star on their way.
struct RowConverter::Light {
    double v = 0.0;
    std::optional<double> kelvin;
};

RowConverter::RowConverter(const ImportOptions& options)
    : options_(options), colours_(options.white_point) {}

bool RowConverter::convert(const Table& table, CatalogueStar& star, RowFault& fault) {
    const UnknownValues before = unknown_;
    if (read_place(table, star, fault) && read_light(table, star, fault) &&
        read_distance(table, star, fault)) {
        return true;
    }
    unknown_ = before;  // only of rows that have become stars
    return false;
}

bool RowConverter::read_place(const Table& table, CatalogueStar& star, RowFault& fault) {
    const bool in_columns =
        layout_.has(Quantity::RightAscension) && layout_.has(Quantity::Declination);
    RawPlace raw = in_columns ? place_in_columns(table, layout_, Quantity::RightAscension,
                                                 Quantity::Declination)
                              : place_in_parts(table, layout_);
    const auto is_missing = [&] {
        return raw.ra.state == FieldState::Missing || raw.dec.state == FieldState::Missing;
    };
    bool observed = false;
    if (is_missing() && layout_.has(Quantity::ObservedRightAscension)) {
        raw = place_in_columns(table, layout_, Quantity::ObservedRightAscension,
                               Quantity::ObservedDeclination);
        observed = true;
    }
    if (is_missing()) {
        return fail(fault,
                    layout_.has_entries_without_place ? FaultKind::NoStar : FaultKind::PlaceMissing,
                    column_text(table, raw.ra.state == FieldState::Missing ? raw.ra_column
                                                                           : raw.dec_column) +
                        ": is empty");
    }
    for (const auto& [number, column] :
         {std::pair(raw.ra, raw.ra_column), std::pair(raw.dec, raw.dec_column)}) {
        if (number.state == FieldState::Malformed) {
            return fail(fault, FaultKind::PlaceMalformed,
                        column_text(table, column) + ": \"" + shown_field(table.text(column)) +
                            "\" is no angle; give a number, or hours or degrees, minutes and "
                            "seconds");
        }
    }
    if (!(raw.ra.value >= 0.0 && raw.ra.value <= 360.0)) {
        return fail(fault, FaultKind::PlaceOutOfRange,
                    range_text(table, raw.ra_column, raw.ra.value, kAngleRange));
    }
    if (!(std::fabs(raw.dec.value) <= 90.0)) {
        return fail(fault, FaultKind::PlaceOutOfRange,
                    range_text(table, raw.dec_column, raw.dec.value, kAngleRange));
    }
    star.lon = raw.ra.value;
    star.lat = raw.dec.value;
    if (layout_.has(Quantity::Luminance)) {
        // As it was stored: in any frame, of any epoch. Only a frame that is asked for changes it.
        const Place stored = to_frame({star.lon, star.lat}, options_.frame);
        if (options_.frame != Frame::Equatorial) {
            star.lon = stored.ra;
            star.lat = stored.dec;
        }
        return true;
    }

    const FieldNumber epoch = number_of(table, layout_.use(Quantity::Epoch));
    const FieldNumber pm_ra = number_of(table, layout_.use(Quantity::ProperMotionRa));
    const FieldNumber pm_dec = number_of(table, layout_.use(Quantity::ProperMotionDec));
    const FieldNumber velocity = number_of(table, layout_.use(Quantity::RadialVelocity));
    for (const auto& [quantity, number] :
         {std::pair(Quantity::Epoch, epoch), std::pair(Quantity::ProperMotionRa, pm_ra),
          std::pair(Quantity::ProperMotionDec, pm_dec),
          std::pair(Quantity::RadialVelocity, velocity)}) {
        if (number.state == FieldState::Malformed) {
            return fail(fault, FaultKind::MotionMalformed,
                        malformed_text(table, layout_.use(quantity)->column, ""));
        }
    }
    const double from = options_.catalogue_epoch           ? *options_.catalogue_epoch
                        : epoch.state == FieldState::Given ? epoch.value
                                                           : layout_.epoch;
    Place place = {star.lon, star.lat};
    if (pm_ra.state == FieldState::Given && pm_dec.state == FieldState::Given && !observed) {
        if (from != options_.epoch) {
            const std::optional<ColumnUse>& parallax_use = layout_.use(Quantity::Parallax);
            const FieldNumber parallax = number_of(table, parallax_use);
            const FieldNumber distance = number_of(table, layout_.use(Quantity::Distance));
            Motion motion;
            motion.ra = place.ra;
            motion.dec = place.dec;
            motion.pm_ra_cosdec =
                in_milliarcseconds(pm_ra.value, layout_.use(Quantity::ProperMotionRa)->unit);
            motion.pm_dec =
                in_milliarcseconds(pm_dec.value, layout_.use(Quantity::ProperMotionDec)->unit);
            if (parallax.state == FieldState::Given) {
                motion.parallax = in_milliarcseconds(parallax.value, parallax_use->unit);
            } else if (distance.state == FieldState::Given && distance.value > 0.0) {
                motion.parallax = kMilliarcseconds /
                                  in_parsecs(distance.value, layout_.use(Quantity::Distance)->unit);
            }
            motion.radial_velocity = velocity.value;
            place = move_to_epoch(motion, options_.epoch - from);
        }
    } else if (observed || from != options_.epoch) {
        ++unknown_.motions;
    }
    if (options_.frame != Frame::Equatorial) {
        place = to_frame(place, options_.frame);
    }
    star.lon = place.ra;
    star.lat = place.dec;
    return true;
}

bool RowConverter::read_stored_light(const Table& table, CatalogueStar& star,
                                     RowFault& fault) const {
    const ColumnIndex column = layout_.use(Quantity::Luminance)->column;
    const std::string_view text = table.text(column);
    // Read in single precision: by way of double a number could be rounded twice.
    float luminance = 0.0F;
    const std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), luminance);
    if (result.ec == std::errc::invalid_argument || result.ptr != text.data() + text.size()) {
        return fail(fault, FaultKind::MagnitudeMalformed, malformed_text(table, column, ""));
    }
    if (result.ec != std::errc() || !std::isfinite(luminance) || luminance <= 0.0F) {
        return fail(fault, FaultKind::MagnitudeOutOfRange,
                    range_text(table, column, 0.0, "; give a luminance above 0"));
    }
    if (options_.zero_point != 0.0) {
        luminance *= static_cast<float>(luminance_from_magnitude(-options_.zero_point));
    }
    star.luminance = luminance;
    std::size_t channel = 0;
    for (const Quantity quantity : {Quantity::Red, Quantity::Green, Quantity::Blue}) {
        const ColumnIndex code_column = layout_.use(quantity)->column;
        const FieldNumber code = table.number(code_column);
        if (code.state != FieldState::Given || !(code.value >= 0.0 && code.value <= 255.0) ||
            code.value != std::floor(code.value)) {
            return fail(fault, FaultKind::ColourOutOfRange,
                        range_text(table, code_column, code.value, "; give a code from 0 to 255"));
        }
        star.rgb[channel++] = static_cast<std::uint8_t>(code.value);
    }
    return true;
}

bool RowConverter::read_colour(const Table& table, Light& light, RowFault& fault) {
    for (const Quantity quantity : {Quantity::Temperature, Quantity::ColourIndex, Quantity::BpRp}) {
        const std::optional<ColumnUse>& use = layout_.use(quantity);
        const FieldNumber number = number_of(table, use);
        if (number.state == FieldState::Missing) {
            continue;
        }
        const bool is_temperature = quantity == Quantity::Temperature;
        const char* remedy = is_temperature
                                 ? "; give kelvins above 0, or leave the field empty"
                                 : "; give a colour from -10 to 20, or leave the field empty";
        if (number.state == FieldState::Malformed) {
            return fail(fault, FaultKind::ColourMalformed,
                        malformed_text(table, use->column, remedy));
        }
        if (is_temperature ? !(number.value > 0.0)
                           : !(number.value >= kLowestColour && number.value <= kHighestColour)) {
            return fail(fault, FaultKind::ColourOutOfRange,
                        range_text(table, use->column, number.value, remedy));
        }
        light.kelvin = is_temperature               ? number.value
                       : quantity == Quantity::BpRp ? temperature_from_bp_rp(number.value)
                                                    : temperature_from_colour_index(number.value);
        return true;
    }
    return true;
}

bool RowConverter::read_light(const Table& table, CatalogueStar& star, RowFault& fault) {
    if (layout_.has(Quantity::Luminance)) {
        return read_stored_light(table, star, fault);
    }
    // Whatever magnitudes a row may have, the first that it has counts.
    FieldNumber v;
    ColumnIndex column = 0;
    const auto take = [&](Quantity quantity) {
        const std::optional<ColumnUse>& use = layout_.use(quantity);
        if (!use || v.state != FieldState::Missing) {
            return false;
        }
        v = table.number(use->column);
        column = use->column;
        return v.state == FieldState::Given;
    };
    Light light;
    std::optional<double> tycho_colour;  // BT-VT
    double vt = 0.0;
    if (take(Quantity::VMagnitude)) {
        const std::optional<ColumnUse>& source = layout_.use(Quantity::MagnitudeSource);
        const FieldNumber colour = number_of(table, layout_.use(Quantity::ColourIndex));
        if (source && table.text(source->column) == "T" && colour.state == FieldState::Given) {
            vt = v.value;
            tycho_colour = colour.value;
        }
    } else if (take(Quantity::TychoVt)) {
        const FieldNumber bt = number_of(table, layout_.use(Quantity::TychoBt));
        if (bt.state == FieldState::Given) {
            vt = v.value;
            tycho_colour = bt.value - v.value;
        }
    } else if (take(Quantity::TychoBt)) {
        // The one that there is stands for V.
    } else if (take(Quantity::GaiaG)) {
        const FieldNumber colour = number_of(table, layout_.use(Quantity::BpRp));
        if (colour.state == FieldState::Given) {
            v.value = v_from_gaia(v.value, colour.value);
        }
    } else {
        take(Quantity::HipparcosMagnitude);
    }
    if (v.state == FieldState::Missing) {
        return fail(fault, FaultKind::MagnitudeMissing, column_text(table, column) + ": is empty");
    }
    constexpr const char* kMagnitudeRemedy = "; give a magnitude from -30 to 90";
    if (v.state == FieldState::Malformed) {
        return fail(fault, FaultKind::MagnitudeMalformed,
                    malformed_text(table, column, kMagnitudeRemedy));
    }
    light.v = v.value;
    if (tycho_colour && *tycho_colour >= kLowestColour && *tycho_colour <= kHighestColour) {
        light.v = v_from_tycho(vt + *tycho_colour, vt);
        light.kelvin = temperature_from_colour_index(bv_from_tycho(vt + *tycho_colour, vt));
    } else if (!read_colour(table, light, fault)) {
        return false;
    }
    if (layout_.has_sun && light.v < kFaintestSun) {
        return fail(fault, FaultKind::TheSun, "");
    }
    const double stored = light.v - options_.zero_point;
    if (!(light.v >= kBrightest && light.v <= kFaintest && stored >= kBrightest &&
          stored <= kFaintest)) {
        return fail(fault, FaultKind::MagnitudeOutOfRange,
                    range_text(table, column, light.v, kMagnitudeRemedy));
    }
    star.luminance = static_cast<float>(luminance_from_magnitude(light.v, options_.zero_point));
    if (!light.kelvin) {
        ++unknown_.colours;
        light.kelvin = temperature_from_colour_index(kNeutralColourIndex);
    }
    star.rgb = colours_.code_at(*light.kelvin);
    return true;
}

bool RowConverter::read_distance(const Table& table, CatalogueStar& star, RowFault& fault) {
    constexpr const char* kDistanceRemedy = "; leave the field empty for an unknown one";
    star.distance = kUnknownDistance;
    const std::optional<ColumnUse>& distance_use = layout_.use(Quantity::Distance);
    const FieldNumber distance = number_of(table, distance_use);
    if (distance.state == FieldState::Malformed) {
        return fail(fault, FaultKind::DistanceMalformed,
                    malformed_text(table, distance_use->column, kDistanceRemedy));
    }
    if (distance.state == FieldState::Given) {
        const double parsecs = in_parsecs(distance.value, distance_use->unit);
        if (!std::isfinite(parsecs)) {
            return fail(fault, FaultKind::DistanceOutOfRange,
                        range_text(table, distance_use->column, distance.value, kDistanceRemedy));
        }
        if (layout_.has(Quantity::Luminance)) {
            star.distance = parsecs;  // as it was stored, unknown ones too
        } else if (parsecs > 0.0 &&
                   (layout_.unknown_distance == 0.0 || parsecs < layout_.unknown_distance)) {
            star.distance = parsecs;
        }
    } else if (const std::optional<ColumnUse>& use = layout_.use(Quantity::Parallax)) {
        const FieldNumber parallax = table.number(use->column);
        if (parallax.state == FieldState::Malformed) {
            return fail(fault, FaultKind::DistanceMalformed,
                        malformed_text(table, use->column, kDistanceRemedy));
        }
        if (parallax.state == FieldState::Given) {
            star.distance = distance_from_parallax(in_milliarcseconds(parallax.value, use->unit),
                                                   options_.parallax_floor);
        }
    }
    if (!(star.distance > 0.0)) {
        ++unknown_.distances;
    }
    return true;
}

}  // namespace lumivar
