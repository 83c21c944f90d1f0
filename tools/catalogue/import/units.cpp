#include "import/units.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

#include "astronomy/place.h"

namespace lumivar {
namespace {

constexpr double kMilliarcsecondsInArcsecond = 1000.0;
constexpr double kParsecsInKiloparsec = 1000.0;
// 9.4607304725808e15 m in a light year, 3.0856775814913673e16 m in a parsec.
constexpr double kParsecsInLightYear = 0.30660139378555;
constexpr double kDegreesInHour = 15.0;

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

double milliarcseconds_in(Unit unit) {
    return unit == Unit::Arcseconds || unit == Unit::ArcsecondsPerYear ? kMilliarcsecondsInArcsecond
                                                                       : 1.0;
}

double parsecs_in(Unit unit) {
    return unit == Unit::Kiloparsecs  ? kParsecsInKiloparsec
           : unit == Unit::LightYears ? kParsecsInLightYear
                                      : 1.0;
}

double degrees_in(Unit unit) {
    return unit == Unit::Hours     ? kDegreesInHour
           : unit == Unit::Radians ? 1.0 / kRadiansInDegree
                                   : 1.0;
}

}  // namespace lumivar
