// The clock, the calendar, and timings.
#include <gtest/gtest.h>
#include <osapi/clock.h>
#include <osapi/profiler.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "failures.h"
#include "support/captured_output.h"

namespace {

using namespace std::chrono_literals;
using OSAPI::ClockCalls;
using OSAPI::Date;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

const FailuresOf kClock("osapi/osapi-unix-clock.cpp");

/// The time zone of the environment, set and put back.
class TimeZone {
public:
    explicit TimeZone(const char* zone) {
        if (const char* before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone, 1);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    std::optional<std::string> before_;
};

Date date_at(seconds since_epoch) {
    const Intercept<&ClockCalls::time> times(
        [&](std::time_t*) { return static_cast<std::time_t>(since_epoch.count()); });
    return OSAPI::get_date();
}

seconds at(std::chrono::year_month_day day, seconds time) {
    return sys_days(day).time_since_epoch() + time;
}

void expect_date(const Date& date, const year_month_day& day) {
    EXPECT_EQ(date.year, static_cast<int>(day.year()));
    EXPECT_EQ(date.month, static_cast<int>(static_cast<unsigned int>(day.month())));
    EXPECT_EQ(date.day, static_cast<int>(static_cast<unsigned int>(day.day())));
}

TEST(Date, AgreesWithTheStandardCalendarAtAnyOffset) {
    const struct {
        const char* zone;  // the sign is that of "local time plus this is UTC"
        seconds east;
    } zones[] = {{"UTC0", 0s}, {"EAST-5:30", 5h + 30min}, {"WEST8", -8h}, {"FAR-14", 14h}};
    std::mt19937 random(20260101);
    std::uniform_int_distribution<std::int32_t> any(-2000000000, 2000000000);
    for (const auto& zone : zones) {
        const TimeZone set(zone.zone);
        for (int i = 0; i < 2000; ++i) {
            const seconds moment(any(random));
            SCOPED_TRACE(std::to_string(moment.count()) + zone.zone);
            expect_date(date_at(moment), year_month_day(std::chrono::floor<std::chrono::days>(
                                             std::chrono::sys_seconds(moment + zone.east))));
        }
    }
}

TEST(Date, TurnsAtLocalMidnightLeapDaysIncluded) {
    const TimeZone set("EAST-5:30");
    expect_date(date_at(at(2024y / 2 / 28, 18h + 29min + 59s)), 2024y / 2 / 28);
    expect_date(date_at(at(2024y / 2 / 28, 18h + 30min)), 2024y / 2 / 29);
    expect_date(date_at(at(2024y / 2 / 29, 18h + 30min)), 2024y / 3 / 1);
    expect_date(date_at(at(1999y / 12 / 31, 18h + 30min)), 2000y / 1 / 1);
}

TEST(Date, FollowsSummerTime) {
    // One hour east of UTC, two from the last Sunday in March to that in October.
    const TimeZone set("CET-1CEST,M3.5.0,M10.5.0/3");
    expect_date(date_at(at(2024y / 1 / 10, 22h + 30min)), 2024y / 1 / 10);
    expect_date(date_at(at(2024y / 7 / 10, 22h + 30min)), 2024y / 7 / 11);
}

TEST(Date, ReportsAFailedClockAndATimeBeyondTheCalendar) {
    kClock.expect_every<&ClockCalls::time>("time()", "get_date", [] { OSAPI::get_date(); });
    if constexpr (sizeof(std::time_t) > 4) {
        kClock.expect("time()", EOVERFLOW, "get_date",
                      [] { date_at(seconds(std::numeric_limits<std::int64_t>::max())); });
    }
}

TEST(Microsecs, CountsSecondsAndMicroseconds) {
    const Intercept<&ClockCalls::gettimeofday> times([](timeval* now) {
        *now = {2147483647, 987654};
        return 0;
    });
    EXPECT_EQ(OSAPI::microsecs(), 2147483647987654ULL);
}

TEST(Microsecs, AgreesWithTheWallClock) {
    const auto now = [] {
        return static_cast<u64>(std::chrono::floor<std::chrono::microseconds>(
                                    std::chrono::system_clock::now().time_since_epoch())
                                    .count());
    };
    // The machine's clock may be set back meanwhile, but not time after time.
    bool between = false;
    for (int i = 0; i < 100 && !between; ++i) {
        const u64 before = now();
        const u64 time = OSAPI::microsecs();
        between = before <= time && time <= now();
    }
    EXPECT_TRUE(between);
}

using OSAPI::Profiler;

/// A clock that shows these microseconds, one after the other.
class Clock {
public:
    explicit Clock(std::vector<long> microseconds)
        : microseconds_(std::move(microseconds)), times_([this](timeval* now) {
              const long shown = microseconds_.at(static_cast<std::size_t>(times_.calls() - 1));
              *now = {1000 + shown / 1000000, static_cast<suseconds_t>(shown % 1000000)};
              return 0;
          }) {}

private:
    std::vector<long> microseconds_;
    Intercept<&ClockCalls::gettimeofday> times_;
};

TEST(Profiler, NestedOnesAreIndentedByOneTabALevel) {
    const Clock clock({0, 100, 200, 1434, 2000, 2500, 3000, 1234567});
    EXPECT_EQ(output_of(stdout,
                        [] {
                            const Profiler outer("outer");
                            {
                                const Profiler middle("middle");
                                { const Profiler inner("inner"); }
                            }
                            const Profiler second("second");
                        }),
              "PROFILE: outer\n"
              "\tPROFILE: middle\n"
              "\t\tPROFILE: inner\n"
              "\t\tinner = 1.2340 ms\n"
              "\tmiddle = 1.9000 ms\n"
              "\tPROFILE: second\n"
              "\tsecond = 0.5000 ms\n"
              "outer = 1234.5670 ms\n");
}

TEST(Profiler, KeepsItsOwnCopyOfTheNameAndTellsThatTheClockIsSetBack) {
    const Clock clock({1500, 1000});
    EXPECT_EQ(output_of(stdout,
                        [] {
                            std::string name = "50%s";
                            const Profiler profiler(name.c_str());
                            name.assign("gone");
                        }),
              "PROFILE: 50%s\n50%s = -0.5000 ms\n");
}

}  // namespace
