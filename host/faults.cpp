#include <host/faults.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <utility>

namespace host {
namespace {

bool can_fail(const Call& call) {
    return call.name.rfind("PF_Cmd_", 0) != 0 && call.name != "host_unlock_handle" &&
           call.name != "host_dispose_handle";
}

}  // namespace

CallFault missing_suite(std::string_view suite) {
    return {acquire_call(suite), 0, kSPSuiteNotFoundError};
}

CallFilter FaultPlan::filter() {
    return [this](std::string_view name, int) -> std::optional<std::int32_t> {
        if (faults_.empty()) {
            return std::nullopt;
        }
        const int count = ++counts_.try_emplace(std::string(name), 0).first->second;
        const auto fault = std::find_if(faults_.begin(), faults_.end(), [&](const CallFault& one) {
            return one.call == name && (one.nth == 0 || one.nth == count);
        });
        if (fault == faults_.end()) {
            return std::nullopt;
        }
        ++delivered_[fault->call];
        ++now_[fault->call];
        return fault->status;
    };
}

void FaultPlan::arm(std::vector<CallFault> faults) {
    faults_ = std::move(faults);
    counts_.clear();
    now_.clear();
}

std::map<std::string, int> calls_that_can_fail(const std::vector<Call>& calls) {
    std::map<std::string, int> counts;
    for (const Call& call : calls) {
        if (can_fail(call)) {
            ++counts[call.name];
        }
        if (!call.suite.empty()) {
            ++counts[acquire_call(call.suite)];
        }
    }
    return counts;
}

}  // namespace host
