// The suites that the stand-in host offers.
#pragma once

#include <host/session.h>
#include <host_api/effect_interface.h>

#include <span>
#include <string_view>

namespace host {

/// The suite through which the plug-in gets all others.
SPBasicSuite* basic_suite();

/// The table of a suite as that application offers it; null when it does not.
const void* find_suite(Application application, std::string_view name, int version);

struct OfferedSuite {
    std::string_view name;
    const void* table;
    int version;
    bool in_after_effects;
    bool in_premiere;
};

std::span<const OfferedSuite> pf_suites();
std::span<const OfferedSuite> aegp_suites();

}  // namespace host
