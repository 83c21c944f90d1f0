// Acquiring and releasing suites, with every reference counted.
#include <cstdint>
#include <string>

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
            state.violation("AcquireSuite: null argument");
            return kSPSuiteNotFoundError;
        }
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
        state->violation("ReleaseSuite: " + shown(name, version) + " is not held");
        return state->calls.back().status = kSPSuiteNotFoundError;
    }
    // Also when it fails on demand: the plug-in did its part.
    --held->second;
    return failure.value_or(kSPNoError);
}

}  // namespace

const void* find_suite(Application application, std::string_view name, int version) {
    if (application == Application::Premiere) {
        const bool offered =
            name == kPFHandleSuite || name == kPFANSISuite || name == kPFPixelFormatSuite;
        return offered ? find_pf_suite(name, version) : nullptr;
    }
    if (name == kPFPixelFormatSuite) {
        return nullptr;  // Premiere's table; After Effects has another version of it
    }
    const void* const table = find_pf_suite(name, version);
    return table != nullptr ? table : find_aegp_suite(name, version);
}

SPBasicSuite* basic_suite() {
    static SPBasicSuite suite = {
        .AcquireSuite = acquire_suite,
        .ReleaseSuite = release_suite,
        UNPROVIDED("basic suite", IsEqual),
        UNPROVIDED("basic suite", AllocateBlock),
        UNPROVIDED("basic suite", FreeBlock),
        UNPROVIDED("basic suite", ReallocateBlock),
        UNPROVIDED("basic suite", Undefined),
    };
    return &suite;
}

}  // namespace host
