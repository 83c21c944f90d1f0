// Units of length between the stars, by the names that scenes, camera files and options give them.
#pragma once

#include <array>
#include <numbers>
#include <optional>
#include <string_view>

namespace host {

struct LengthUnit {
    const char* name;
    double parsecs;
};

// A parsec is the distance at which one astronomical unit spans one second of arc: 648 000 / pi of
// them (resolution B2 of 2015 of the International Astronomical Union). The astronomical unit is
// 149 597 870 700 m (B2 of 2012); the light year, 365.25 days of light, is 9 460 730 472 580 800 m.
inline constexpr double kAstronomicalUnitsInParsec = 648000.0 / std::numbers::pi;
inline constexpr double kMetresInAstronomicalUnit = 149597870700.0;
inline constexpr double kMetresInParsec = kAstronomicalUnitsInParsec * kMetresInAstronomicalUnit;
inline constexpr double kMetresInLightYear = 9460730472580800.0;

inline constexpr std::array<LengthUnit, 5> kLengthUnits = {
    {{"pc", 1.0},
     {"ly", kMetresInLightYear / kMetresInParsec},
     {"au", 1.0 / kAstronomicalUnitsInParsec},
     {"km", 1000.0 / kMetresInParsec},
     {"m", 1.0 / kMetresInParsec}}};

/// Parsecs in a unit; nothing for a name that is none.
constexpr std::optional<double> parsecs_in(std::string_view name) {
    for (const LengthUnit& unit : kLengthUnits) {
        if (name == unit.name) {
            return unit.parsecs;
        }
    }
    return std::nullopt;
}

}  // namespace host
