#include "import/column_names.h"

#include <algorithm>
#include <cctype>

#include "failure.h"
#include "tables/fields.h"

namespace lumivar {
namespace {

struct KnownName {
    const char* name;  ///< in lower case
    Quantity quantity;
    Unit unit;
    double epoch = 0.0;  ///< of the places, where the name says it
    /// Written so, not in other cases.
    bool is_exact = false;
};

// The first name of a quantity that a table has is the one that counts.
constexpr KnownName kKnownNames[] = {
    {"_raj2000", Quantity::RightAscension, Unit::Degrees, 2000.0},
    {"_ra.icrs", Quantity::RightAscension, Unit::Degrees, 2000.0},
    {"ra_deg", Quantity::RightAscension, Unit::Degrees},
    {"radeg", Quantity::RightAscension, Unit::Degrees},
    {"raj2000", Quantity::RightAscension, Unit::Degrees, 2000.0},
    {"rahms", Quantity::RightAscension, Unit::Hours, 1991.25},
    {"ramdeg", Quantity::RightAscension, Unit::Degrees, 2000.0},
    {"ra_icrs", Quantity::RightAscension, Unit::Degrees},
    {"raicrs", Quantity::RightAscension, Unit::Degrees, 1991.25},
    {"ra(icrs)", Quantity::RightAscension, Unit::Degrees, 1991.25},
    {"ra_hours", Quantity::RightAscension, Unit::Hours},
    {"ra_rad", Quantity::RightAscension, Unit::Radians},
    {"rarad", Quantity::RightAscension, Unit::Radians},
    {"ra", Quantity::RightAscension, Unit::Degrees},
    {"right_ascension", Quantity::RightAscension, Unit::Degrees},
    {"_dej2000", Quantity::Declination, Unit::Degrees},
    {"_de.icrs", Quantity::Declination, Unit::Degrees},
    {"dec_deg", Quantity::Declination, Unit::Degrees},
    {"dedeg", Quantity::Declination, Unit::Degrees},
    {"dej2000", Quantity::Declination, Unit::Degrees},
    {"dedms", Quantity::Declination, Unit::Degrees},
    {"demdeg", Quantity::Declination, Unit::Degrees},
    {"de_icrs", Quantity::Declination, Unit::Degrees},
    {"deicrs", Quantity::Declination, Unit::Degrees},
    {"de(icrs)", Quantity::Declination, Unit::Degrees},
    {"dec_rad", Quantity::Declination, Unit::Radians},
    {"decrad", Quantity::Declination, Unit::Radians},
    {"derad", Quantity::Declination, Unit::Radians},
    {"dec", Quantity::Declination, Unit::Degrees},
    {"de", Quantity::Declination, Unit::Degrees},
    {"declination", Quantity::Declination, Unit::Degrees},
    {"rah", Quantity::RaHours, Unit::None},
    {"ram", Quantity::RaMinutes, Unit::None},
    {"ras", Quantity::RaSeconds, Unit::None},
    {"de-", Quantity::DecSign, Unit::None},
    {"ded", Quantity::DecDegrees, Unit::None},
    {"dem", Quantity::DecMinutes, Unit::None},
    {"des", Quantity::DecSeconds, Unit::None},
    {"pmra", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
    {"pm_ra", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
    {"pmra_mas_yr", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
    {"pmdec", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
    {"pm_dec", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
    {"pmde", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
    {"pmdec_mas_yr", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
    {"radial_velocity", Quantity::RadialVelocity, Unit::KilometresPerSecond},
    {"rv", Quantity::RadialVelocity, Unit::KilometresPerSecond},
    {"ref_epoch", Quantity::Epoch, Unit::Years},
    {"distance_pc", Quantity::Distance, Unit::Parsecs},
    {"dist_pc", Quantity::Distance, Unit::Parsecs},
    {"distance", Quantity::Distance, Unit::Parsecs},
    {"parallax", Quantity::Parallax, Unit::Milliarcseconds},
    {"parallax_mas", Quantity::Parallax, Unit::Milliarcseconds},
    {"plx", Quantity::Parallax, Unit::Milliarcseconds},
    {"vmag", Quantity::VMagnitude, Unit::Magnitudes},
    {"v_mag", Quantity::VMagnitude, Unit::Magnitudes},
    {"johnson_v", Quantity::VMagnitude, Unit::Magnitudes},
    {"mag", Quantity::VMagnitude, Unit::Magnitudes},
    {"magnitude", Quantity::VMagnitude, Unit::Magnitudes},
    {"hpmag", Quantity::HipparcosMagnitude, Unit::Magnitudes},
    {"btmag", Quantity::TychoBt, Unit::Magnitudes},
    {"vtmag", Quantity::TychoVt, Unit::Magnitudes},
    {"phot_g_mean_mag", Quantity::GaiaG, Unit::Magnitudes},
    // Other surveys have a band g.
    {"Gmag", Quantity::GaiaG, Unit::Magnitudes, 0.0, true},
    {"bv", Quantity::ColourIndex, Unit::Magnitudes},
    {"b-v", Quantity::ColourIndex, Unit::Magnitudes},
    {"b_v", Quantity::ColourIndex, Unit::Magnitudes},
    {"ci", Quantity::ColourIndex, Unit::Magnitudes},
    {"colorindex", Quantity::ColourIndex, Unit::Magnitudes},
    {"colour_index", Quantity::ColourIndex, Unit::Magnitudes},
    {"color_index", Quantity::ColourIndex, Unit::Magnitudes},
    {"bp_rp", Quantity::BpRp, Unit::Magnitudes},
    {"bp-rp", Quantity::BpRp, Unit::Magnitudes},
    {"teff", Quantity::Temperature, Unit::Kelvins},
    {"temperature", Quantity::Temperature, Unit::Kelvins},
};

bool same_but_case(std::string_view a, std::string_view lower) {
    return std::equal(a.begin(), a.end(), lower.begin(), lower.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == y;
    });
}

/// The one column whose name passes. Throws `Failure` when there are two.
template <class Passes>
std::optional<ColumnIndex> only_column(const Table& table, const std::string& file,
                                       std::string_view name, Passes passes) {
    std::optional<ColumnIndex> found;
    for (ColumnIndex i = 0; i < table.columns().size(); ++i) {
        if (!passes(table.columns()[i].name)) {
            continue;
        }
        if (found) {
            throw Failure(file + ": columns " + std::to_string(*found + 1) + " and " +
                          std::to_string(i + 1) + " are both named \"" + shown_field(name) +
                          "\"; rename one, or choose by number with --columns");
        }
        found = i;
    }
    return found;
}

}  // namespace

bool unit_fits(Quantity quantity, Unit unit) {
    switch (quantity) {
        case Quantity::RightAscension:
        case Quantity::Declination:
        case Quantity::ObservedRightAscension:
        case Quantity::ObservedDeclination:
            return unit == Unit::Degrees || unit == Unit::Hours || unit == Unit::Radians;
        case Quantity::ProperMotionRa:
        case Quantity::ProperMotionDec:
            return unit == Unit::MilliarcsecondsPerYear || unit == Unit::ArcsecondsPerYear;
        case Quantity::Parallax:
            return unit == Unit::Milliarcseconds || unit == Unit::Arcseconds;
        case Quantity::Distance:
            return unit == Unit::Parsecs || unit == Unit::Kiloparsecs || unit == Unit::LightYears;
        case Quantity::RadialVelocity:
            return unit == Unit::KilometresPerSecond;
        case Quantity::Epoch:
            return unit == Unit::Years;
        case Quantity::Temperature:
            return unit == Unit::Kelvins;
        case Quantity::VMagnitude:
        case Quantity::HipparcosMagnitude:
        case Quantity::TychoBt:
        case Quantity::TychoVt:
        case Quantity::GaiaG:
        case Quantity::ColourIndex:
        case Quantity::BpRp:
            return unit == Unit::Magnitudes;
        default:
            return true;
    }
}

std::string column_list(const Table& table) {
    std::string list;
    ColumnIndex number = 0;
    for (const TableColumn& column : table.columns()) {
        list += list.empty() ? "" : ", ";
        list += std::to_string(++number);
        if (!column.name.empty()) {
            list += " ";
            list += shown_field(column.name);
        } else if (!column.sample.empty()) {
            list += " \"";
            list += shown_field(column.sample);
            list += "\"";
        }
    }
    return list;
}

std::optional<ColumnIndex> find_column(const Table& table, std::string_view name,
                                       const std::string& file) {
    std::optional<ColumnIndex> found =
        only_column(table, file, name, [&](const std::string& other) { return other == name; });
    if (!found) {
        std::string lower;
        for (const char c : name) {
            lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        found = only_column(table, file, name,
                            [&](const std::string& other) { return same_but_case(other, lower); });
    }
    return found;
}

bool has_columns(const Table& table, std::initializer_list<std::string_view> lower_names) {
    return std::all_of(lower_names.begin(), lower_names.end(), [&](std::string_view name) {
        return std::any_of(
            table.columns().begin(), table.columns().end(),
            [&](const TableColumn& column) { return same_but_case(column.name, name); });
    });
}

Layout layout_by_names(const Table& table, const std::string& file) {
    Layout layout;
    for (const KnownName& known : kKnownNames) {
        if (layout.has(known.quantity)) {
            continue;
        }
        const std::optional<ColumnIndex> column =
            known.is_exact
                ? only_column(table, file, known.name,
                              [&](const std::string& name) { return name == known.name; })
                : find_column(table, known.name, file);
        if (!column) {
            continue;
        }
        const std::optional<Unit> given = unit_of(table.columns()[*column].unit);
        if (given && !unit_fits(known.quantity, *given)) {
            continue;  // a distance in degrees is another one: from the centre of a search
        }
        layout.set(known.quantity, *column, given ? *given : known.unit);
        if (known.epoch > 0.0) {
            layout.epoch = known.epoch;
        }
        if (known.quantity == Quantity::RightAscension) {
            const std::string_view name = known.name;
            layout.degrees_by_habit =
                !given && known.unit == Unit::Degrees && name.find("deg") == std::string_view::npos;
        }
    }
    return layout;
}

}  // namespace lumivar
