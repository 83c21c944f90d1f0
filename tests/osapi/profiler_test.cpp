#include <gtest/gtest.h>
#include <osapi/profiler.h>

#include <string>
#include <vector>

#include "support/captured_output.h"
#include "support/faults.h"

namespace {

using OSAPI::Profiler;
using OSAPI::Syscalls;

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
    Intercept<&Syscalls::gettimeofday> times_;
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

TEST(Profiler, AnExceptionEndsItsLevelToo) {
    const Clock clock({0, 0, 0, 0, 0, 0});
    EXPECT_EQ(output_of(stdout,
                        [] {
                            try {
                                const Profiler outer("outer");
                                const Profiler inner("inner");
                                throw 5;
                            } catch (int) {
                            }
                            const Profiler after("after");
                        }),
              "PROFILE: outer\n\tPROFILE: inner\n\tinner = 0.0000 ms\nouter = 0.0000 ms\n"
              "PROFILE: after\nafter = 0.0000 ms\n");
}

TEST(Profiler, ClockThatIsSetBackGivesLessThanNothing) {
    const Clock clock({1500, 1000});
    EXPECT_EQ(output_of(stdout, [] { const Profiler profiler("work"); }),
              "PROFILE: work\nwork = -0.5000 ms\n");
}

TEST(Profiler, KeepsItsOwnCopyOfTheName) {
    const Clock clock({0, 0});
    EXPECT_EQ(output_of(stdout,
                        [] {
                            std::string name = "50%s";
                            const Profiler profiler(name.c_str());
                            name.assign("gone");
                        }),
              "PROFILE: 50%s\n50%s = 0.0000 ms\n");
}

}  // namespace
