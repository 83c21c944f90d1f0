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

/// First and last frame, both included: "A-B", or "A" alone. Throws `UsageError`.
std::pair<int, int> parse_frames(const std::string& text);

/// "NAME=VALUE" as a setting that overrules the scene's: a number, on and off (also true and false,
/// as 1 and 0), three numbers apart by commas for a colour, what begins as keys, a list, a text in
/// quotes or "#rrggbb" do in a scene, else the name of a choice. Throws `UsageError`.
host::ControlSetting parse_setting(const std::string& text);

/// Puts the frame's number, with zeros before it, in the place of the last run of "#" in the file's
/// name; unchanged without one.
std::string numbered_path(const std::string& pattern, int frame);
/// Whether `numbered_path` has something to replace.
bool has_number_place(const std::string& pattern);

}  // namespace lumivar
