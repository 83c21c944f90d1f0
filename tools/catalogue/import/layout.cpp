#include "import/layout.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tables/fields.h"

namespace lumivar {
namespace {

struct QuantityText {
    Quantity quantity;
    const char* text;
};

constexpr std::array<QuantityText, kQuantities> kQuantityTexts = {{
    {Quantity::RightAscension, "right ascension"},
    {Quantity::Declination, "declination"},
    {Quantity::RaHours, "right ascension's hours"},
    {Quantity::RaMinutes, "its minutes"},
    {Quantity::RaSeconds, "its seconds"},
    {Quantity::DecSign, "declination's sign"},
    {Quantity::DecDegrees, "its degrees"},
    {Quantity::DecMinutes, "its minutes"},
    {Quantity::DecSeconds, "its seconds"},
    {Quantity::ObservedRightAscension, "observed right ascension"},
    {Quantity::ObservedDeclination, "observed declination"},
    {Quantity::ProperMotionRa, "proper motion in right ascension"},
    {Quantity::ProperMotionDec, "proper motion in declination"},
    {Quantity::RadialVelocity, "radial velocity"},
    {Quantity::Epoch, "epoch"},
    {Quantity::Parallax, "parallax"},
    {Quantity::Distance, "distance"},
    {Quantity::VMagnitude, "magnitude V"},
    {Quantity::HipparcosMagnitude, "magnitude Hp where V is missing"},
    {Quantity::TychoBt, "magnitude BT"},
    {Quantity::TychoVt, "magnitude VT"},
    {Quantity::GaiaG, "magnitude G"},
    {Quantity::ColourIndex, "colour B-V"},
    {Quantity::BpRp, "colour BP-RP"},
    {Quantity::Temperature, "temperature"},
    {Quantity::MagnitudeSource, "source of the magnitude"},
    {Quantity::Luminance, "luminance"},
    {Quantity::Red, "red"},
    {Quantity::Green, "green"},
    {Quantity::Blue, "blue"},
}};

struct UnitText {
    const char* text;
    Unit unit;
};

// In lower case and without blanks, points between words and the signs of powers.
constexpr std::array<UnitText, 41> kUnitTexts = {{
    {"deg", Unit::Degrees},
    {"degree", Unit::Degrees},
    {"degrees", Unit::Degrees},
    {"d:m:s", Unit::Degrees},
    {"dms", Unit::Degrees},
    {"h", Unit::Hours},
    {"hr", Unit::Hours},
    {"hour", Unit::Hours},
    {"hours", Unit::Hours},
    {"hourangle", Unit::Hours},
    {"h:m:s", Unit::Hours},
    {"hms", Unit::Hours},
    {"rad", Unit::Radians},
    {"radian", Unit::Radians},
    {"radians", Unit::Radians},
    {"mas", Unit::Milliarcseconds},
    {"arcsec", Unit::Arcseconds},
    {"arcsecs", Unit::Arcseconds},
    {"mas/yr", Unit::MilliarcsecondsPerYear},
    {"mas/a", Unit::MilliarcsecondsPerYear},
    {"mas/year", Unit::MilliarcsecondsPerYear},
    {"masyr-1", Unit::MilliarcsecondsPerYear},
    {"masa-1", Unit::MilliarcsecondsPerYear},
    {"arcsec/yr", Unit::ArcsecondsPerYear},
    {"arcsec/a", Unit::ArcsecondsPerYear},
    {"arcsecyr-1", Unit::ArcsecondsPerYear},
    {"arcseca-1", Unit::ArcsecondsPerYear},
    {"pc", Unit::Parsecs},
    {"parsec", Unit::Parsecs},
    {"kpc", Unit::Kiloparsecs},
    {"lyr", Unit::LightYears},
    {"ly", Unit::LightYears},
    {"km/s", Unit::KilometresPerSecond},
    {"kms-1", Unit::KilometresPerSecond},
    {"yr", Unit::Years},
    {"a", Unit::Years},
    {"year", Unit::Years},
    {"jyear", Unit::Years},
    {"mag", Unit::Magnitudes},
    {"k", Unit::Kelvins},
    {"kelvin", Unit::Kelvins},
}};

std::string short_column_text(const Table& table, ColumnIndex column) {
    const std::string& name = table.columns()[column].name;
    return name.empty() ? "column " + std::to_string(column + 1) : shown_field(name);
}

}  // namespace

const char* unit_text(Unit unit) {
    switch (unit) {
        case Unit::None:
            return "";
        case Unit::Degrees:
            return "deg";
        case Unit::Hours:
            return "hours";
        case Unit::Radians:
            return "rad";
        case Unit::MilliarcsecondsPerYear:
            return "mas/yr";
        case Unit::ArcsecondsPerYear:
            return "arcsec/yr";
        case Unit::Milliarcseconds:
            return "mas";
        case Unit::Arcseconds:
            return "arcsec";
        case Unit::Parsecs:
            return "pc";
        case Unit::Kiloparsecs:
            return "kpc";
        case Unit::LightYears:
            return "lyr";
        case Unit::KilometresPerSecond:
            return "km/s";
        case Unit::Years:
            return "yr";
        case Unit::Magnitudes:
            return "mag";
        case Unit::Kelvins:
            return "K";
    }
    return "";
}

std::optional<Unit> unit_of(std::string_view text) {
    std::string plain;
    for (const char c : text) {
        // "mas.yr**-1", "mas yr^-1", "\"h:m:s\"": what is left of them tells them apart.
        if (std::string_view(" .*^\"'").find(c) == std::string_view::npos) {
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    const auto* const found =
        std::find_if(kUnitTexts.begin(), kUnitTexts.end(),
                     [&](const UnitText& known) { return plain == known.text; });
    return found == kUnitTexts.end() ? std::nullopt : std::optional(found->unit);
}

std::string missing_quantities(const Layout& layout) {
    const auto has_all = [&](auto... quantities) { return (layout.has(quantities) && ...); };
    std::string missing;
    const auto miss = [&](const char* what) {
        missing += missing.empty() ? "" : ", ";
        missing += what;
    };
    const bool in_parts = has_all(Quantity::RaHours, Quantity::RaMinutes, Quantity::RaSeconds,
                                  Quantity::DecDegrees, Quantity::DecMinutes, Quantity::DecSeconds);
    if (!layout.has(Quantity::RightAscension) && !in_parts) {
        miss("right ascension");
    }
    if (!layout.has(Quantity::Declination) && !in_parts) {
        miss("declination");
    }
    if (!layout.has(Quantity::VMagnitude) && !layout.has(Quantity::TychoVt) &&
        !layout.has(Quantity::TychoBt) && !layout.has(Quantity::GaiaG) &&
        !layout.has(Quantity::HipparcosMagnitude) && !layout.has(Quantity::Luminance)) {
        miss("magnitude");
    }
    return missing;
}

std::string describe_layout(const Layout& layout, const Table& table) {
    std::string text = layout.title;
    const char* between = ": ";
    for (const auto& [quantity, what] : kQuantityTexts) {
        const std::optional<ColumnUse>& use = layout.use(quantity);
        if (!use) {
            continue;
        }
        text += between;
        text += what;
        text += " from ";
        text += short_column_text(table, use->column);
        if (use->unit != Unit::None) {
            text += " (";
            text += unit_text(use->unit);
            text += ")";
        }
        between = ", ";
    }
    return text;
}

}  // namespace lumivar
