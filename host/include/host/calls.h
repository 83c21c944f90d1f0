// What passes between the host and the plug-in, as it is recorded and as it can be made to fail.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// A command to the plug-in, or a callback or suite function that the plug-in called, in the order
/// in which they began.
struct Call {
    std::string name;       ///< as in the effect interface: "PF_Cmd_SMART_RENDER", "checkout_param"
    std::string arguments;  ///< those of interest as "name=value", joined by spaces
    std::int32_t status = 0;  ///< the answer; functions with another result have 0
    std::string suite = {};   ///< of `AcquireSuite`: the suite's name; else empty
};

/// Consulted before each callback and suite function with its name and how many calls of that name
/// the session has seen, this one included. A status given back makes the call fail with it, and
/// nothing is done. Functions whose result is no status fail as they can: null for handles, locks
/// and `strcpy`, 0 for a size, -1 for `sprintf`; those without a result go on regardless.
///
/// `AcquireSuite` consults twice, the second time as `acquire_call(suite)`, so that one suite can
/// be missing. `ReleaseSuite` drops the reference and `checkin_param` the checkout whatever they
/// answer: the plug-in did its part.
///
/// host/faults.h has such filters made from data.
using CallFilter = std::function<std::optional<std::int32_t>(std::string_view name, int count)>;

/// The name under which the acquisition of one suite can be made to fail.
inline std::string acquire_call(std::string_view suite) {
    return "AcquireSuite " + std::string(suite);
}

}  // namespace host
