// The small project that the effect is played.
#pragma once

#include <host/frame.h>
#include <host/project.h>
#include <host/scene.h>
#include <host/session.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace conformance {

/// A few thousand pixels under a camera that pans, motion blur on: a frame asks for all that an
/// effect may want to know.
host::Scene pan_scene();

/// Any frame of it but the first.
inline constexpr int kFrame = 5;

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

/// The bytes of all pixels, row by row, without padding.
std::vector<std::byte> pixels(const host::Frame& frame);

}  // namespace conformance
