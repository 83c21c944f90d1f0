// What is looked at in an effect's controls.
#pragma once

#include <host/session.h>

#include <string_view>

#include "apart.h"

namespace conformance {

/// Finds what is wrong with the declared controls, by the rules that `examine_controls` has rows
/// for.
void inspect_controls(const host::Session& session, Notes& notes);

/// Whether a violation of set-up is told in a row of the controls.
bool told_by_controls(std::string_view violation);

}  // namespace conformance
