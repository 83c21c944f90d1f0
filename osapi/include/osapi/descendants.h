// The processes that come of this one: as a group, and as children.
#pragma once

#include <vector>

namespace OSAPI {

/// Makes this process the leader of a new group, which the processes that it makes join. The group
/// can be signalled as a whole, by its leader's negative id; a terminal's keys do not reach it.
/// Throws "setpgid: ...".
void lead_group();

/// From now on the calling process gets SIGTERM when its parent ends, however that ends; what it
/// runs instead of itself (`exec`) does so too. False where there is no such thing.
bool end_with_parent();

/// From now on whatever comes of this process becomes its child when its own parent ends, also what
/// left the group, so that it can be waited for. False where the system has no such thing: it takes
/// orphans over itself. Linux has it.
bool adopt_orphans();

/// The ids of this process's children, with those that have ended but were not waited for. Empty
/// where there is no /proc to tell.
std::vector<int> children();

}  // namespace OSAPI
