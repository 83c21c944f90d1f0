// From a parameter's record to its description, and back to a record with a value.
#pragma once

#include <string>
#include <vector>

#include "host_state.h"

namespace host {

/// The input layer: parameter 0, which the host supplies.
Parameter input_layer_parameter();

/// The parameter that `record` declares, its texts copied. Broken rules are added to
/// `violations`.
Parameter declared_parameter(const PF_ParamDef& record, int index,
                             std::vector<Violation>& violations);

/// The parameter's record with its value at a time; the texts in it belong to `parameter`.
PF_ParamDef valued_record(const Parameter& parameter, const ControlValues& values, double seconds);

/// The same with the initial value.
PF_ParamDef initial_record(const Parameter& parameter);

}  // namespace host
