// Files by shell patterns.
#pragma once

#include <base/scoped_ptr.h>

namespace OSAPI {

/// The paths that match a shell pattern, sorted.
class Glob {
public:
    /// No match is no error; any other failure throws "glob(PATTERN): CODE" with the system's code.
    explicit Glob(const char* pattern);
    Glob(const Glob&) = delete;
    Glob& operator=(const Glob&) = delete;
    ~Glob();

    /// The next match, valid while this object lives; null after the last one.
    const char* next();

private:
    struct Matches;
    scoped_ptr<Matches> matches_;
};

}  // namespace OSAPI
