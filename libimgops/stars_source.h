// Where the room's failures are said to happen. The path and the lines are part of the messages
// that users and their logs know, so they stay while the code moves.
#pragma once

#include <base/exceptions.h>

inline constexpr const char* kStarsSource = "libimgops/stars.cpp";
inline constexpr int kUnknownProjectionLine = 290;
inline constexpr int kNoCamerasLine = 464;
inline constexpr int kBadHeaderLine = 518;

/// `XASSERT` that names the room's main source, the given function and line.
#define STARS_ASSERT_IN(function, line, condition)                          \
    do {                                                                    \
        if (!(condition)) {                                                 \
            throw AssertXception(#condition, kStarsSource, function, line); \
        }                                                                   \
    } while (false)
/// The same in the name of the function it stands in.
#define STARS_ASSERT_AT(line, condition) STARS_ASSERT_IN(__PRETTY_FUNCTION__, line, condition)

/// `XTHROW` that names the room's main source, the given function and line.
#define STARS_THROW_IN(function, line, ...) \
    throw StrXception(kStarsSource, function, line, __VA_ARGS__)
/// The same in the name of the function it stands in.
#define STARS_THROW_AT(line, ...) STARS_THROW_IN(__PRETTY_FUNCTION__, line, __VA_ARGS__)
