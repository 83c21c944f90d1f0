// Faults of the host as data: which callbacks and suite calls fail, when, and how.
//
//     host::FaultPlan plan;
//     host::Session session(plugin, {.filter = plan.filter()});
//     plan.arm({{"checkout_param", 3, 513}, host::missing_suite("PF World Suite")});
//
// System calls are made to fail by tests/support/faults.h, allocations by
// tests/support/failing_allocator.h.
#pragma once

#include <host/calls.h>

#include <cstdint>
#include <map>
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

/// Names of the calls that can fail, each with the number of calls. Commands and functions without
/// a failure are left out; each acquired suite is also counted as `acquire_call` names it.
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

}  // namespace host
