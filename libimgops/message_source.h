// The source that failures with a fixed line name. Users and their logs know path and lines from
// the messages, so both stay while the code moves.
#pragma once

inline constexpr char kStarsSource[] = "libimgops/stars.cpp";
