// Why a frame was not drawn.
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

namespace host {

/// The control that chooses the catalogue, a popup of file names beside the bundle.
inline constexpr char kCatalogueControl[] = "Star Database";

/// Why a frame of this size cannot be served, or nothing: sides are at least 1, and the effect's
/// float image, 16 bytes a pixel, must be countable in 32 bits.
std::optional<std::string> refuse_size(int width, int height);

/// What is wrong with a catalogue file, naming it and the remedy; nothing when it can be read and
/// begins as a catalogue does.
std::optional<std::string> examine_catalogue(const std::filesystem::path& file);

/// The file that the effect reads for a scene at a time: a choice outside the list means its
/// nearest end. Nothing for an effect without such a control. Throws `SceneError`.
std::optional<std::filesystem::path> catalogue_used(const Session& session, const Scene& scene,
                                                    Time time);

/// Why nothing was drawn, in one line; empty for a drawn frame.
std::string explain_frame(const Session& session, const Scene& scene, const Frame& frame);

/// Throws `FrameError` with the explanation unless the frame was drawn.
void require_drawn(const Session& session, const Scene& scene, const Frame& frame);

/// Why the plug-in refused to be set up, in one line: its own message, and what is wrong with the
/// catalogues in the folder of the bundle.
std::string explain_set_up(const std::filesystem::path& plugin, const EffectError& error);

}  // namespace host
