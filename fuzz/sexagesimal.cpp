// Angles in hours or degrees, minutes and seconds: within their range or refused, and the same
// whichever separators stand between their parts.
#include "astronomy/sexagesimal.h"

#include <algorithm>
#include <cmath>

#include "harness.h"

namespace {

using Parse = bool (*)(std::string_view text, double& degrees);

void expect_angle(Parse parse, const std::string& text, double low, double high) {
    constexpr double kUntouched = 12345.0;
    double degrees = kUntouched;
    if (!parse(text, degrees)) {
        require(degrees == kUntouched, "a refused text has changed the angle");
        return;
    }
    require(degrees >= low && degrees <= high, "an angle out of range");
    if (text.find(':') == std::string::npos) {
        return;
    }
    std::string with_blanks = text;
    std::replace(with_blanks.begin(), with_blanks.end(), ':', ' ');
    double same = kUntouched;
    require(parse(with_blanks, same) && same == degrees, "another angle with other separators");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = text_of(data, size);
    expect_angle(lumivar::parse_hours, text, 0.0, std::nextafter(360.0, 0.0));
    expect_angle(lumivar::parse_degrees, text, -360.0, 360.0);
    return 0;
}
