// The applications as which the host plays.
#pragma once

#include <host/session.h>

#include <string_view>

namespace conformance {

/// As whom the host plays, and how rows tell that.
struct Identity {
    host::Application application;
    std::string_view suffix;  ///< of their ids
    std::string_view words;   ///< behind what was sent
    std::string_view set_up_row;
};

inline constexpr Identity kIdentities[] = {
    {host::Application::AfterEffects, "", "", "setup.session"},
    {host::Application::Premiere, "-premiere", ", in Premiere Pro", "setup.premiere"},
};

constexpr const Identity& identity_of(host::Application application) {
    return kIdentities[application == host::Application::Premiere ? 1 : 0];
}

}  // namespace conformance
