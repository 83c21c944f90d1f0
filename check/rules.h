// The rules of the interface as rows: each has one in a family, in which all that broke it is told.
#pragma once

#include <host/violation.h>

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

namespace check {

struct RuleRow {
    std::string_view name;  ///< the last part of a row's id
    std::string_view promise;
    bool smart_alone = false;  ///< only smart frames can break it
};

/// Rows of the rules of frames, in their order.
extern const std::vector<RuleRow> kRuleRows;

/// The row in which a broken rule of frames is told.
std::string_view row_of(host::Rule rule);
/// Whether it is a rule of controls, which has a row among theirs.
bool of_controls(host::Rule rule);

/// For a violation that an effect may be known for in a failing host: the deviation's name, else
/// empty.
std::string_view deviation_under_faults(const host::Violation& violation);

using Violations = std::vector<host::Violation>;

bool breaks(const Violations& violations, host::Rule rule);

/// Of `violations` those that are not in `known`.
Violations beyond(const Violations& violations, const Violations& known);

/// The same for those of a set-down, where what is still held is told with its number: without what
/// was told as not given back, whatever the number.
Violations beyond_at_set_down(const Violations& violations, const Violations& known);

}  // namespace check

/// Between processes.
template <>
struct nlohmann::adl_serializer<host::Violation> {
    static void to_json(json& to, const host::Violation& from);
    static void from_json(const json& from, host::Violation& to);
};
