// What rows tell: deviations that a contract keeps, and the rules of the interface.
#include <check/report.h>

#include "run.h"

namespace check {

using host::Rule;
using host::Violation;

namespace {

constexpr Deviation kStarField[] = {
    {kParametersStayOut, "each parameter that is checked out is checked in again",
     "hosts release a pre-render's parameters with the pre-render"},
    {kPopupDefaultZero, "choices count from 1",
     "projects store the 0: it leaves the projection as it is and takes the first database"},
    {kChoiceCount, "the count of choices is that of the names",
     "hosts have stored the length of the joined names"},
    {kStatusZero, "the error of a call is returned",
     "batch renders of saved projects go on past a frame that failed"},
    {kHandleInRecord, "the render record is the host's",
     "the dependency handler answers the render command too, in the slot of the callbacks"},
    {kWorldSuiteReleased, "a suite is released as often as it was acquired",
     "a frame gives back everything in the end, whatever failed before; hosts refuse it unharmed"},
    {kLayerCheckedIn, "a layer is checked in if it was fetched",
     "a frame gives back everything in the end, whatever failed before; hosts refuse it unharmed"},
    {kParameterCheckedIn, "a parameter is checked in if it was checked out",
     "the flag query gives back its parameter in the end; hosts refuse it unharmed"},
};

}  // namespace

const char* name_of(Verdict verdict) {
    return verdict == Verdict::Pass ? "pass" : verdict == Verdict::Kept ? "kept" : "fail";
}

std::size_t Report::count(Verdict verdict) const {
    return static_cast<std::size_t>(std::ranges::count(rows, verdict, &Row::verdict));
}

std::span<const Deviation> deviations_of(std::string_view match_name) {
    return match_name == "Lumivar Star Field" ? std::span(kStarField)
                                              : std::span<const Deviation>();
}

const std::vector<RuleRow> kRuleRows = {
    {"bounds", "writes stay inside the pixels of the output", Rule::Bounds},
    {"input", "the input layer's pixels stay as they are", Rule::InputPixels},
    {"layers", "layers are fetched once, and checked in once at most", Rule::Layers, true},
    {"suites", "each suite acquired is released", Rule::Suites},
    {"handles", "each handle made is disposed of", Rule::Handles},
    {"parameters", "each parameter checked out is checked in", Rule::Parameters},
    {"deleter", "pre-render data comes with a deleter", Rule::Deleter, true},
    {"rectangles", "the result lies within the request", Rule::Rectangles, true},
    {"record", "the host's records stay as it filled them in", Rule::Records},
    {"messages", "messages fit their 256 characters; none is an error with status 0",
     Rule::Messages},
    {"calls", "callbacks and suites are used as they may be", Rule::Calls},
};

std::string_view row_of(Rule rule) {
    rule = rule == Rule::LayerNotHeld ? Rule::Layers : rule;
    const auto row = std::ranges::find(kRuleRows, rule, &RuleRow::rule);
    return row == kRuleRows.end() ? kRuleRows.back().name : row->name;
}

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
    return std::ranges::find(violations, rule, &Violation::rule) != violations.end();
}

Violations beyond(const Violations& violations, const Violations& known) {
    Violations rest = violations;
    std::erase_if(
        rest, [&](const Violation& one) { return std::ranges::find(known, one) != known.end(); });
    return rest;
}

Violations beyond_at_set_down(const Violations& violations, const Violations& known) {
    Violations rest = beyond(violations, known);
    std::erase_if(rest, [&](const Violation& one) {
        const bool held = one.rule == Rule::Suites || one.rule == Rule::Handles;
        return held && breaks(known, one.rule);
    });
    return rest;
}

}  // namespace check
