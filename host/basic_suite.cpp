// Acquiring and releasing suites, with every reference counted.
#include <cstdint>
#include <string>
#include <string_view>

#include "host_state.h"
#include "suites.h"
#include "unprovided.h"

namespace host {
namespace {

std::string shown(const char* name, int32_t version) {
    return "name=\"" + std::string(name == nullptr ? "" : name) +
           "\" version=" + std::to_string(version);
}

SPErr acquire_suite(const char* name, int32_t version, const void** suite_out) {
    if (suite_out != nullptr) {
        *suite_out = nullptr;
    }
    return answer_call("AcquireSuite", shown(name, version), [&](HostState& state) -> SPErr {
        if (name == nullptr || suite_out == nullptr) {
            return state.refuse("AcquireSuite", "null argument", kSPSuiteNotFoundError);
        }
        state.calls.back().suite = name;
        if (const auto failure = state.consult(acquire_call(name))) {
            return *failure;
        }
        *suite_out = find_suite(state.options.application, name, version);
        if (*suite_out == nullptr) {
            return kSPSuiteNotFoundError;
        }
        ++state.suites[{name, version}];
        return kSPNoError;
    });
}

SPErr release_suite(const char* name, int32_t version) {
    HostState* const state = HostState::called();
    if (state == nullptr) {
        return A_Err_WRONG_THREAD;
    }
    const auto failure = state->note("ReleaseSuite", shown(name, version));
    const auto held = name == nullptr ? state->suites.end() : state->suites.find({name, version});
    if (held == state->suites.end() || held->second == 0) {
        state->violation(Rule::SuiteNotHeld,
                         "ReleaseSuite: " + shown(name, version) + " is not held",
                         name == nullptr ? "" : name);
        return state->calls.back().status = kSPSuiteNotFoundError;
    }
    // Also when the filter makes it fail: the plug-in has released the suite.
    --held->second;
    return failure.value_or(kSPNoError);
}

}  // namespace

const void* find_suite(Application application, std::string_view name, int version) {
    for (const auto suites : {pf_suites(), aegp_suites()}) {
        for (const OfferedSuite& suite : suites) {
            if (suite.name == name && suite.version == version) {
                const bool offered = application == Application::Premiere ? suite.in_premiere
                                                                          : suite.in_after_effects;
                return offered ? suite.table : nullptr;
            }
        }
    }
    return nullptr;
}

SPBasicSuite* basic_suite() {
    static SPBasicSuite suite = {
        .AcquireSuite = acquire_suite,
        .ReleaseSuite = release_suite,
        UNPROVIDED("basic suite", IsEqual, AllocateBlock, FreeBlock, ReallocateBlock, Undefined),
    };
    return &suite;
}

}  // namespace host
