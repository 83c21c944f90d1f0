#include <host/faults.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace host {
namespace {

bool can_fail(const Call& call) {
    return call.name.rfind("PF_Cmd_", 0) != 0 && call.name != "host_unlock_handle" &&
           call.name != "host_dispose_handle";
}

/// The suite in the arguments of an acquisition: name="...".
std::string suite_of(const Call& call) {
    const std::size_t begin = call.arguments.find('"') + 1;
    return call.arguments.substr(begin, call.arguments.find('"', begin) - begin);
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
        if (call.name == "AcquireSuite") {
            ++counts[acquire_call(suite_of(call))];
        }
    }
    return counts;
}

RandomFaults::RandomFaults(std::uint64_t seed, const std::vector<Call>& calls,
                           std::vector<std::int32_t> statuses)
    : engine_(seed), calls_(calls_that_can_fail(calls)), statuses_(std::move(statuses)) {
    for (const auto& [name, count] : calls_) {
        names_.push_back(name);
    }
    if (names_.empty() || statuses_.empty()) {
        throw std::invalid_argument("nothing can fail, or in no way");
    }
}

std::vector<CallFault> RandomFaults::draw(int most) {
    std::vector<CallFault> faults(1 + below(static_cast<std::size_t>(most)));
    for (CallFault& fault : faults) {
        fault.call = names_[below(names_.size())];
        const auto count = static_cast<std::size_t>(calls_.at(fault.call));
        fault.nth = below(8) == 0 ? 0 : static_cast<int>(1 + below(count));
        fault.status = statuses_[below(statuses_.size())];
    }
    return faults;
}

}  // namespace host
