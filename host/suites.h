// The suites that the stand-in host offers.
#pragma once

#include <host/session.h>
#include <host_api/effect_interface.h>

#include <string_view>

namespace host {

/// Where the plug-in gets all others.
SPBasicSuite* basic_suite();

/// What a host of that name offers: Premiere has none of the AEGP suites and few of the others.
const void* find_suite(Application application, std::string_view name, int version);

// Tables; null when there is none of that name and version.
const void* find_pf_suite(std::string_view name, int version);
const void* find_aegp_suite(std::string_view name, int version);

}  // namespace host
