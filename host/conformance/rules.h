// Rules that hold whatever the effect is asked to do: each has a row of its own in each family, in
// which all that broke it is told.
#pragma once

#include <conformance/deviations.h>

#include <string>
#include <string_view>
#include <vector>

#include "apart.h"

namespace conformance {

struct Rule {
    std::string_view name;  ///< the last part of a row's id
    std::string_view promise;
};

// In the order of their rows.
inline constexpr Rule kRules[] = {
    {"bounds", "writes stay inside the pixels of the output"},
    {"input", "the input layer's pixels stay as they are"},
    {"layers", "layers are fetched once, and checked in once at most"},
    {"suites", "each suite acquired is released"},
    {"handles", "each handle made is disposed of"},
    {"parameters", "each parameter checked out is checked in"},
    {"deleter", "pre-render data comes with a deleter"},
    {"rectangles", "the result lies within the request"},
    {"record", "the host's records stay as it filled them in"},
    {"messages", "messages fit their 256 characters; none is an error with status 0"},
    {"calls", "callbacks and suites are used as they may be"},
};

/// The rule that a violation told by the host breaks.
std::string_view rule_of(std::string_view violation);

/// For a violation that an effect may be known for in a failing host: the deviation's name, else
/// empty.
std::string_view deviation_under_faults(std::string_view violation);

/// Whether handles are lost, which the host's memory then grows by.
bool loses_handles(const std::vector<std::string>& violations);

/// Of `violations` those that are not in `known`.
std::vector<std::string> beyond(const std::vector<std::string>& violations,
                                const std::vector<std::string>& known);

/// The same for those of a set-down, where what is still held is told with its number: without what
/// was told as not given back, whatever the number.
std::vector<std::string> beyond_at_set_down(const std::vector<std::string>& violations,
                                            const std::vector<std::string>& known);

}  // namespace conformance
