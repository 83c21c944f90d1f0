#include "faults.h"

#include <host_api/effect_interface.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace conformance {
namespace {

const std::string& acquiring() {
    static const std::string prefix = host::acquire_call("");
    return prefix;
}

/// Functions whose result is no status, and the one whose status no effect can do anything about.
constexpr std::string_view kSilent[] = {
    "sprintf",     "strcpy", "host_new_handle", "host_lock_handle", "host_get_handle_size",
    "ReleaseSuite"};

}  // namespace

bool FailingCall::suite() const { return name.rfind(acquiring(), 0) == 0; }

Debt FailingCall::debt() const {
    if (suite() || name == "AcquireSuite") {
        return Debt::ErrorOrFallback;
    }
    const bool silent =
        std::find(std::begin(kSilent), std::end(kSilent), name) != std::end(kSilent);
    return silent ? Debt::Nothing : Debt::Error;
}

std::string FailingCall::slug() const {
    std::string text = suite() ? "missing-" + name.substr(acquiring().size()) : name;
    std::replace(text.begin(), text.end(), ' ', '-');
    return text;
}

std::string FailingCall::sent() const {
    if (suite()) {
        return name.substr(acquiring().size()) + " is missing";
    }
    return name + " fails (" + std::to_string(count) + (count == 1 ? " call)" : " calls)");
}

std::vector<host::CallFault> FailingCall::faults() const {
    if (suite()) {
        return {{name, 0, kSPSuiteNotFoundError}};
    }
    std::vector<host::CallFault> all;
    for (int nth = 1; nth <= count; ++nth) {
        all.push_back({name, nth, PF_Err_OUT_OF_MEMORY});
    }
    all.push_back({name, 0, PF_Interrupt_CANCEL});
    return all;
}

std::string text_of(const host::CallFault& fault) {
    if (fault.status == kSPSuiteNotFoundError) {
        return fault.call + " finding no suite";
    }
    const std::string which = fault.nth == 0 ? "every call" : "call " + std::to_string(fault.nth);
    return which + " of " + fault.call + " failing with " + std::to_string(fault.status);
}

std::vector<FailingCall> failing_calls(const std::map<std::string, int>& counts) {
    std::vector<FailingCall> calls;
    calls.reserve(counts.size());
    for (const auto& [name, count] : counts) {
        calls.push_back({name, count});
    }
    return calls;
}

}  // namespace conformance
