// The plug-in's controls, as it declares them, for people and for programs.
#pragma once

#include <host/controls.h>

#include <string>
#include <vector>

namespace lumivar {

/// A table with aligned columns, ending with a line feed.
std::string controls_as_text(const std::vector<host::DeclaredControl>& controls);
/// A JSON array with one object a control. Choices are numbered from 1.
std::string controls_as_json(const std::vector<host::DeclaredControl>& controls);

}  // namespace lumivar
