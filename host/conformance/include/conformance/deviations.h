// Behaviour that an effect's contract with saved projects keeps although the interface's guide says
// otherwise. A row in which nothing else is found ends as a kept deviation instead of a failure;
// and each of an effect's deviations must show, or the list is wrong.
#pragma once

#include <span>
#include <string_view>

namespace conformance {

struct Deviation {
    std::string_view name;
    std::string_view guide;   ///< what the interface's guide says
    std::string_view reason;  ///< why the contract keeps it
};

/// Those of the effect with a match name; none for any other effect.
std::span<const Deviation> deviations_of(std::string_view match_name);

// Names, by which rows tell them.
inline constexpr std::string_view kParametersStayOut = "parameters not checked in again";
inline constexpr std::string_view kPopupDefaultZero = "popup default 0";
inline constexpr std::string_view kChoiceCount = "choice count";
inline constexpr std::string_view kStatusZero = "status 0 after a failed frame";
inline constexpr std::string_view kHandleInRecord = "handle left in the render record";
inline constexpr std::string_view kWorldSuiteReleased = "world suite released though not held";
inline constexpr std::string_view kLayerCheckedIn = "layer checked in after a failed fetch";
inline constexpr std::string_view kParameterCheckedIn =
    "parameter checked in after a failed checkout";

}  // namespace conformance
