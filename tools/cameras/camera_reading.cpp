#include "camera_reading.h"

#include <cmath>
#include <map>
#include <numbers>
#include <string>

#include "failure.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

constexpr double kAuInMetres = 149597870700.0;
constexpr double kParsecInAu = 648000.0 / std::numbers::pi;
constexpr double kParsecInMetres = kParsecInAu * kAuInMetres;
constexpr double kLightYearInMetres = 9460730472580800.0;

}  // namespace

double parsecs_of_unit(const std::string& name) {
    static const std::map<std::string, double> kUnits = {
        {"pc", 1.0},
        {"ly", kLightYearInMetres / kParsecInMetres},
        {"au", 1.0 / kParsecInAu},
        {"km", 1000.0 / kParsecInMetres},
        {"m", 1.0 / kParsecInMetres}};
    if (const auto unit = kUnits.find(name); unit != kUnits.end()) {
        return unit->second;
    }
    const auto number = finite_number(name);
    if (!number || !(*number > 0.0)) {
        throw UsageError("there is no unit \"" + name +
                         "\"; give pc, ly, au, km, m or the parsecs in one unit, above 0");
    }
    return *number;
}

UpAxis up_axis_of(const std::string& name) {
    if (name != "y" && name != "z" && name != "Y" && name != "Z") {
        throw UsageError("\"" + name + "\" is not up: give y or z");
    }
    return name == "z" || name == "Z" ? UpAxis::Z : UpAxis::Y;
}

}  // namespace lumivar
