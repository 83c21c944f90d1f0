// The texts in a picture's file: how they are called there, and how they are found again.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "picture_file.h"

namespace lumivar {

/// Before the name of a detail, where a format has attributes of any name.
inline constexpr std::string_view kDetailPrefix = "lumivar:";

/// The title and a line for each detail, "KEY: VALUE".
std::string description_of(const PictureInfo& info);

using PictureDetails = std::map<std::string, std::string>;

/// Adds the lines of a description; a detail that is there already stays.
void add_described(const std::string& description, PictureDetails& details);
/// Adds an attribute if it is a detail.
void add_attribute(std::string_view name, std::string_view value, PictureDetails& details);

}  // namespace lumivar
