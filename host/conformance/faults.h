// Faults of the host as rows: which there are, and what an effect owes its host under each.
#pragma once

#include <host/calls.h>
#include <host/faults.h>

#include <map>
#include <string>
#include <vector>

namespace conformance {

/// What an effect owes when a call fails.
enum class Debt {
    Error,            ///< returns an error: pictures of calls that failed are cached otherwise
    ErrorOrFallback,  ///< suites: may do without, and draw all the same
    Nothing,          ///< goes on; the call has no status that could be passed on
};

/// One call that fails: each time it is made, one after the other, and all times.
struct FailingCall {
    std::string name;  ///< as in `host::Call::name` or `host::acquire_call`
    int count = 0;     ///< calls in a good run

    bool suite() const;
    Debt debt() const;
    /// Whether the user's cancellation comes this way: the suites for whole projects know none.
    bool asks_user() const { return name.rfind("AEGP_", 0) != 0; }
    /// For a row's id: without spaces.
    std::string slug() const;
    /// "checkout_param fails (17 calls)", "PF World Suite is missing".
    std::string sent() const;
    std::vector<host::CallFault> faults() const;
};

/// "call 3 of checkout_param failing with 4", "AcquireSuite PF World Suite finding no suite".
std::string text_of(const host::CallFault& fault);

/// Those that a good run shows.
std::vector<FailingCall> failing_calls(const std::map<std::string, int>& counts);

}  // namespace conformance
