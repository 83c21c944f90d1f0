// Faults of the host as data: which callbacks and suite calls fail, when, and how.
//
//     host::FaultPlan plan;
//     host::Session session(plugin, {.filter = plan.filter()});
//     plan.arm({{"checkout_param", 3, 513}, host::missing_suite("PF World Suite")});
//
// Of the three ways to make what the plug-in stands on fail this is the host's; system calls fail
// by tests/support/faults.h, allocations by tests/support/failing_allocator.h.
#pragma once

#include <host/calls.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct CallFault {
    std::string call;         ///< as in `Call::name`, or `acquire_call(suite)`
    int nth = 0;              ///< the call of that name since the plan was armed, from 1; 0: every
    std::int32_t status = 0;  ///< what it answers
};

/// A suite that cannot be acquired in any version, with the host's own status for that.
CallFault missing_suite(std::string_view suite);

/// What of these calls can fail, with the number of calls: commands, being the host's, and
/// functions that cannot fail are left out, and each acquired suite stands there as `acquire_call`
/// names it.
std::map<std::string, int> calls_that_can_fail(const std::vector<Call>& calls);

class FaultPlan {
public:
    FaultPlan() = default;
    FaultPlan(const FaultPlan&) = delete;
    FaultPlan& operator=(const FaultPlan&) = delete;

    /// For `SessionOptions::filter`; the plan must outlive the session.
    CallFilter filter();

    /// These faults from now on and no others, calls counted from 1. Of two that meet, the first
    /// holds.
    void arm(std::vector<CallFault> faults);
    void disarm() { arm({}); }

    /// How many faults were delivered, by the names in the plan, since it was made.
    const std::map<std::string, int, std::less<>>& delivered() const { return delivered_; }
    /// Those since it was armed.
    const std::map<std::string, int, std::less<>>& delivered_now() const { return now_; }

private:
    std::vector<CallFault> faults_;
    std::map<std::string, int, std::less<>> counts_;
    std::map<std::string, int, std::less<>> delivered_;
    std::map<std::string, int, std::less<>> now_;
};

/// Draws faults at random, the same ones for the same seed on every machine. What can fail and how
/// often it is called is learned from the calls of a good run, so that nothing the plug-in uses is
/// left out.
class RandomFaults {
public:
    /// Throws `std::invalid_argument` without calls or statuses.
    RandomFaults(std::uint64_t seed, const std::vector<Call>& calls,
                 std::vector<std::int32_t> statuses);

    /// What can fail, with the number of calls in the good run.
    const std::map<std::string, int>& calls() const { return calls_; }
    /// One to `most` faults: every name is as likely as any other, and of its calls each as well,
    /// or, one time in eight, all.
    std::vector<CallFault> draw(int most = 3);

private:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }

    std::mt19937_64 engine_;
    std::map<std::string, int> calls_;
    std::vector<std::string> names_;
    std::vector<std::int32_t> statuses_;
};

}  // namespace host
