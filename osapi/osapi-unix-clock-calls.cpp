// The system's own calls: clocks.
#include <sys/time.h>

#include <ctime>

#include "syscalls.h"

namespace OSAPI {

template <>
ClockCalls& calls() {
    static ClockCalls table = {
        // The second argument, long unused, has different types on different systems.
        .gettimeofday = [](timeval* now) { return ::gettimeofday(now, nullptr); },
        .time = ::time,
    };
    return table;
}

}  // namespace OSAPI
