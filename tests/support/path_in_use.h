// Which draw path is in use, for a while.
#pragma once

#include <libimgops/draw_path.h>

namespace support {

/// Puts a path into use for as long as it lives.
class PathInUse {
public:
    explicit PathInUse(DrawPath path) : before_(draw_path()) { set_draw_path(path); }
    PathInUse(const PathInUse&) = delete;
    PathInUse& operator=(const PathInUse&) = delete;
    ~PathInUse() { set_draw_path(before_); }

private:
    DrawPath before_;
};

/// Both, for tests that go through them.
inline constexpr DrawPath kBothPaths[] = {DrawPath::Plain, DrawPath::Fast};

inline const char* name_of(DrawPath path) { return path == DrawPath::Plain ? "plain" : "fast"; }

}  // namespace support
