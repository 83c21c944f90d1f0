// The bytes of the effect's registration resource and of the file that holds it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "processors.h"

/// The effect's properties as the host reads them on macOS: kind, names, an entry point for each of
/// the processors, versions and flags; big-endian on every processor.
std::string registration_resource(const std::vector<const bundle::Processor*>& processors);

/// The same as they read them in a module for Windows on x86_64: little-endian.
std::string windows_registration_resource();

/// A resource fork, kept as a plain file, with one nameless resource; `type` has four characters.
std::string resource_file(std::string_view type, std::uint16_t identifier,
                          std::string_view resource);
