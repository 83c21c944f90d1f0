// The time of day and the date.
#pragma once

#include <base/words.h>

namespace OSAPI {

/// Microseconds since the epoch by the wall clock, which may be set back at any time.
u64 microsecs();

/// A day of the calendar.
struct Date {
    Date(int year_with_century, int month_from_1, int day_from_1)
        : year(year_with_century), month(month_from_1), day(day_from_1) {}

    int year;   ///< with the century
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
};

/// Today in the local time zone, as TZ names it now. Throws "time(): ...".
Date get_date();

}  // namespace OSAPI
