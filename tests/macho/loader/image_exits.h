// What an image wants to be run when it goes.
#pragma once

namespace loader {

/// Runs `function` with `argument` when the image that holds `within` is unloaded; the last one
/// first. Returns 0.
int run_at_unloading(void (*function)(void*), void* argument, void* within);

}  // namespace loader
