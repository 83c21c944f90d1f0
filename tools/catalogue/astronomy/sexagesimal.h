// Angles in hours or degrees, minutes and seconds.
#pragma once

#include <string_view>

namespace lumivar {

/// `units` + `minutes` / 60 + `seconds` / 3600, below 0 where `negative`: hours or degrees, as
/// `units` are. The sign is apart since -0 degrees 30 minutes has it too.
double from_sexagesimal(bool negative, double units, double minutes, double seconds);

/// Reads a right ascension in hours as degrees from 0 up to, not including, 360: "06 45 08.917",
/// "06:45:08.917", "6h45m08.9s". False, with `degrees` left alone, for any other text.
///
/// Two parts are hours and minutes. Only the last part may have decimals. Minutes are below 60;
/// 60 seconds exactly, which old catalogues have where they rounded up, are the next minute; 24
/// hours exactly are 0. A minus sign is refused.
bool parse_hours(std::string_view text, double& degrees);

/// Reads degrees, minutes and seconds of arc, with or without a sign, from -360 to 360:
/// "-16 42 58.0", "-16:42:58", "-16d42m58s", "-16°42'58\"" (the text is UTF-8, which may also have
/// the typographic minus and primes). Otherwise as `parse_hours`.
bool parse_degrees(std::string_view text, double& degrees);

}  // namespace lumivar
