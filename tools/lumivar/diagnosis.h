// Why a frame cannot be drawn, or was not.
//
// The effect answers a failed frame with status 0 and an untouched output, as its users' hosts have
// always seen it. What went wrong is found by looking at the request and at the star catalogue.
#pragma once

#include <host/errors.h>
#include <host/scene.h>
#include <host/session.h>

#include <filesystem>
#include <optional>
#include <string>

namespace lumivar {

/// The control that chooses the catalogue, a popup of file names beside the bundle.
inline constexpr char kCatalogueControl[] = "Star Database";

/// Why the effect cannot draw a frame of this size, or nothing: the bytes of its float image, 16 a
/// pixel, must be countable in 32 bits. Sides below 1 are the host's to refuse.
std::optional<std::string> refuse_size(int width, int height);

/// What is wrong with a catalogue file, naming it and the remedy; nothing when it can be read and
/// begins as a catalogue does.
std::optional<std::string> catalogue_fault(const std::filesystem::path& file);

/// The file that the effect reads for a scene at a time: a choice outside the list means its
/// nearest end. Nothing for an effect without such a control. Throws `host::SceneError`.
std::optional<std::filesystem::path> chosen_catalogue(const host::Session& session,
                                                      const host::Scene& scene, host::Time time);

/// Why nothing was drawn, in one line; empty for a drawn frame.
std::string explain_frame(const host::Session& session, const host::Scene& scene,
                          const host::Frame& frame);

/// Why the plug-in refused to be set up, in one line: its own message, and what is wrong with the
/// catalogues in the folder of the bundle.
std::string explain_set_up(const std::filesystem::path& plugin, const host::EffectError& error);

}  // namespace lumivar
