// The pictures that a command line of `lumivar render` asks for.
#pragma once

#include <host/scene.h>

#include <vector>

#include "render_arguments.h"
#include "shot_plan.h"

namespace lumivar {

/// In the order of their moments, six for each of a cube map. Throws `UsageError`.
std::vector<Shot> shots_of(const RenderArguments& arguments, const host::Composition& composition);

}  // namespace lumivar
