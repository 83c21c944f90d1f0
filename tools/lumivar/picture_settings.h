// The settings of a frame as a typed record, for programs that read them back.
#pragma once

#include <host/scene.h>
#include <host/session.h>
#include <libkelvimage/image.h>

#include <optional>
#include <string>

#include "player.h"

namespace lumivar {

/// A spec of the composition's size that carries the settings of the frame at `time` as values.
/// Names have no blanks, as the record's text form has none: what the plug-in or the user names is
/// spelled with underscores.
///
/// float: time, frame_rate, shutter_angle and shutter_phase (with motion blur only), zoom,
/// catalogue.version, and control:NAME of every slider. m44f: camera, the layer-to-world matrix.
/// string: scene, catalogue, catalogue.stars, plugin, and control:NAME of every other control.
///
/// A string that the text form does not give back (see `MetaData::stringify`) is left out.
Kelv::ImageSpec picture_settings(const host::Session& session, const host::Scene& scene,
                                 host::Time time, const std::optional<CatalogueUsed>& catalogue);

/// `name` with "_" for each character that a name in the text form may not have.
std::string settings_name(const std::string& name);

/// Whether the text form gives a string back wherever in the text it stands.
bool is_carried(const std::string& text);

}  // namespace lumivar
