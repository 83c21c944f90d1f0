#include "rules.h"

#include <check/report.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace check {

using host::Rule;
using host::Violation;

const std::vector<RuleRow> kRuleRows = {
    {"bounds", "writes stay inside the pixels of the output"},
    {"input", "the input layer's pixels stay as they are"},
    {"layers", "layers are fetched once, and checked in once at most", true},
    {"suites", "each suite acquired is released"},
    {"handles", "each handle made is disposed of"},
    {"parameters", "each parameter checked out is checked in"},
    {"deleter", "pre-render data comes with a deleter", true},
    {"rectangles", "the result lies within the request", true},
    {"record", "the host's records stay as it filled them in"},
    {"messages", "messages fit their 256 characters; none is an error with status 0"},
    {"calls", "callbacks and suites are used as they may be"},
};

std::string_view row_of(Rule rule) {
    constexpr std::pair<Rule, std::string_view> kNames[] = {
        {Rule::Bounds, "bounds"},         {Rule::InputPixels, "input"},
        {Rule::Layers, "layers"},         {Rule::LayerNotHeld, "layers"},
        {Rule::Suites, "suites"},         {Rule::Handles, "handles"},
        {Rule::Parameters, "parameters"}, {Rule::Deleter, "deleter"},
        {Rule::Rectangles, "rectangles"}, {Rule::Records, "record"},
        {Rule::Messages, "messages"},
    };
    const auto* const named = std::find_if(std::begin(kNames), std::end(kNames),
                                           [=](const auto& one) { return one.first == rule; });
    return named == std::end(kNames) ? "calls" : named->second;
}

bool of_controls(Rule rule) { return rule >= Rule::ControlCount; }

std::string_view deviation_under_faults(const Violation& violation) {
    switch (violation.rule) {
        case Rule::SuiteNotHeld:
            return violation.subject == "PF World Suite" ? kWorldSuiteReleased : "";
        case Rule::LayerNotHeld:
            return kLayerCheckedIn;
        case Rule::ParameterNotHeld:
            return kParameterCheckedIn;
        default:
            return {};
    }
}

bool breaks(const Violations& violations, Rule rule) {
    return std::any_of(violations.begin(), violations.end(),
                       [=](const Violation& one) { return one.rule == rule; });
}

Violations beyond(const Violations& violations, const Violations& known) {
    Violations rest;
    std::copy_if(violations.begin(), violations.end(), std::back_inserter(rest),
                 [&](const Violation& one) {
                     return std::find(known.begin(), known.end(), one) == known.end();
                 });
    return rest;
}

Violations beyond_at_set_down(const Violations& violations, const Violations& known) {
    Violations rest = beyond(violations, known);
    for (const Rule held : {Rule::Suites, Rule::Handles}) {
        if (breaks(known, held)) {
            std::erase_if(rest, [=](const Violation& one) { return one.rule == held; });
        }
    }
    return rest;
}

}  // namespace check

void nlohmann::adl_serializer<host::Violation>::to_json(json& to, const host::Violation& from) {
    to = {from.rule, from.text, from.subject};
}

void nlohmann::adl_serializer<host::Violation>::from_json(const json& from, host::Violation& to) {
    to = {from.at(0).get<host::Rule>(), from.at(1), from.at(2)};
}
