// How long a stretch of code takes, on standard output.
#pragma once

#include <base/string.h>
#include <base/words.h>

namespace OSAPI {

/// Prints "PROFILE: NAME" when it is made and "NAME = MILLISECONDS ms", by the wall clock, when it
/// dies. Both lines are indented by one tab for each profiler that was alive when it was made; the
/// count is one for the whole process and not synchronised.
class Profiler {
public:
    explicit Profiler(const char* name);
    Profiler(const Profiler&) = delete;
    Profiler& operator=(const Profiler&) = delete;
    ~Profiler();

private:
    String name_;
    u64 start_ = 0;
};

}  // namespace OSAPI
