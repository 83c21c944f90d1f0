// Says before the first frame that a star database is faulty, since the effect draws what it can of
// it without a word: of one whose header is cut short, a black frame.
#pragma once

#include <host/scene.h>
#include <host/session.h>

#include <string>
#include <vector>

namespace lumivar {

/// One line for each database that the scene uses at these times and `lumivar catalog verify` would
/// call faulty, without a line feed: its name, its first fault, and how to see all. A database that
/// cannot be read has none; its frame is not drawn, which says more. Reads the databases once.
std::vector<std::string> catalogue_warnings(const host::Session& session, const host::Scene& scene,
                                            const std::vector<host::Time>& times);

}  // namespace lumivar
