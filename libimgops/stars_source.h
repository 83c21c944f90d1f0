// Where the room's failures are said to happen. The path and the lines are part of the messages
// that users and their logs know, so they stay while the code moves.
#pragma once

#include <base/exceptions.h>

inline constexpr const char* STARS_SOURCE = "libimgops/stars.cpp";
inline constexpr int UNKNOWN_PROJECTION_LINE = 290;
inline constexpr int NO_CAMERAS_LINE = 464;
inline constexpr int BAD_HEADER_LINE = 518;

/// `XASSERT` that names the room's main source and the given line.
#define STARS_ASSERT_AT(line, condition)                                               \
    do {                                                                               \
        if (!(condition)) {                                                            \
            throw AssertXception(#condition, STARS_SOURCE, __PRETTY_FUNCTION__, line); \
        }                                                                              \
    } while (false)

/// `XTHROW` that names the room's main source and the given line.
#define STARS_THROW_AT(line, ...) \
    throw StrXception(STARS_SOURCE, __PRETTY_FUNCTION__, line, __VA_ARGS__)
