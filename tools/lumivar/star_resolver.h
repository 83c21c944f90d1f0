// The stars that a scene may name.
#pragma once

#include <host/scene.h>

#include <string>

namespace lumivar {

/// Finds a scene's stars among the named stars that are built into the program.
host::StarAnswer resolve_star(const std::string& name);

}  // namespace lumivar
