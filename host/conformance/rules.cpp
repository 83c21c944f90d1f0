#include "rules.h"

#include <algorithm>
#include <iterator>

namespace conformance {
namespace {

struct Sign {
    std::string_view text;  ///< stands in the violations of that kind
    std::string_view name;
};

constexpr Sign kRuleSigns[] = {
    {"wrote outside the", "bounds"},
    {"wrote to the input layer's pixels", "input"},
    {"checkout_layer_pixels: the id", "layers"},
    {"checkin_layer_pixels: the id", "layers"},
    {"than it was released", "suites"},
    {"host handles were not disposed of", "handles"},
    {"data without a deleter", "deleter"},
    {"the result rectangle reaches beyond", "rectangles"},
    {"the callbacks' slot holds", "record"},
    {"bytes behind the output record", "record"},
    {"was changed", "record"},
    {"record was written to", "record"},
    {"return_msg", "messages"},
};

constexpr Sign kFaultSigns[] = {
    {"ReleaseSuite: name=\"PF World Suite\" version=2 is not held", kWorldSuiteReleased},
    {"checkin_layer_pixels: the id 0 is not checked out", kLayerCheckedIn},
    {"checkin_param: null, or nothing is checked out", kParameterCheckedIn},
};

}  // namespace

std::string_view rule_of(std::string_view violation) {
    for (const Sign& sign : kRuleSigns) {
        if (violation.find(sign.text) != std::string_view::npos) {
            return sign.name;
        }
    }
    return "calls";
}

std::string_view deviation_under_faults(std::string_view violation) {
    for (const Sign& sign : kFaultSigns) {
        if (violation == sign.text) {
            return sign.name;
        }
    }
    return {};
}

bool loses_handles(const std::vector<std::string>& violations) {
    return std::any_of(violations.begin(), violations.end(),
                       [](const std::string& one) { return rule_of(one) == "handles"; });
}

std::vector<std::string> beyond(const std::vector<std::string>& violations,
                                const std::vector<std::string>& known) {
    std::vector<std::string> rest;
    std::copy_if(violations.begin(), violations.end(), std::back_inserter(rest),
                 [&](const std::string& one) {
                     return std::find(known.begin(), known.end(), one) == known.end();
                 });
    return rest;
}

std::vector<std::string> beyond_at_set_down(const std::vector<std::string>& violations,
                                            const std::vector<std::string>& known) {
    std::vector<std::string> rest = beyond(violations, known);
    for (const std::string_view held : {"suites", "handles"}) {
        const auto breaks = [=](const std::string& one) { return rule_of(one) == held; };
        if (std::any_of(known.begin(), known.end(), breaks)) {
            std::erase_if(rest, breaks);
        }
    }
    return rest;
}

}  // namespace conformance
