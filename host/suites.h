// The suites that the stand-in host offers.
#pragma once

#include <host_api/effect_interface.h>

#include <string_view>

namespace host {

/// Where the plug-in gets all others.
SPBasicSuite* basic_suite();

// Tables; null when there is none of that name and version.
const void* find_pf_suite(std::string_view name, int version);
const void* find_aegp_suite(std::string_view name, int version);

}  // namespace host
