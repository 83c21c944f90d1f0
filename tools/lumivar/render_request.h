// What `lumivar render` was asked for, from the texts of its arguments.
#pragma once

#include <host/scene.h>

#include <string>
#include <utility>
#include <vector>

#include "picture_file.h"

namespace lumivar {

/// "WIDTHxHEIGHT", both above 0. Throws `UsageError`.
std::pair<int, int> parse_size(const std::string& text);

/// "NAME=VALUE" as a setting that overrules the scene's: a number, on and off (also true and false,
/// as 1 and 0), three numbers apart by commas for a colour, what begins as keys, a list, a text in
/// quotes or "#rrggbb" do in a scene, else the name of a choice. Throws `UsageError`.
host::ControlSetting parse_setting(const std::string& text);

}  // namespace lumivar
