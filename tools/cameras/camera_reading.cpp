#include "camera_reading.h"

#include <host/length_units.h>

#include <string>

#include "failure.h"
#include "text_numbers.h"

namespace lumivar {
double parsecs_of_unit(const std::string& name) {
    if (const auto parsecs = host::parsecs_in(name)) {
        return *parsecs;
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
