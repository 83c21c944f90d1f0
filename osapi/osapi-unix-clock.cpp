// Clock and calendar over POSIX.
#include <base/exceptions.h>
#include <osapi/clock.h>
#include <sys/time.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "syscalls.h"

namespace OSAPI {

u64 microsecs() {
    timeval now = {};
    calls<ClockCalls>().gettimeofday(&now);
    return static_cast<u64>(now.tv_sec) * 1000000 + static_cast<u64>(now.tv_usec);
}

Date get_date() {
    const std::time_t now = calls<ClockCalls>().time(nullptr);
    if (now == -1) {
        XTHROW("time(): %s", std::strerror(errno));
    }
    ::tzset();  // the reentrant conversion need not look at TZ again
    std::tm local = {};
    // Fails when the year is beyond an int.
    if (::localtime_r(&now, &local) == nullptr) {
        XTHROW("time(): %s", std::strerror(errno));
    }
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

}  // namespace OSAPI
