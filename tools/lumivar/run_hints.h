// The hints of one run of the command line, on standard error, each once.
#pragma once

#include <host/scene.h>
#include <host/session.h>
#include <host/world.h>

#include <optional>
#include <vector>

#include "player.h"

namespace lumivar {

class RunHints {
public:
    /// `times` are those of the frames to render, at least one. All must outlive this object. A
    /// quiet one says nothing and looks at nothing.
    RunHints(bool quiet, const host::Session& session, const host::Scene& scene,
             const std::vector<host::Time>& times);

    /// What can be said before the first frame. Throws `host::SceneError` for controls that do not
    /// fit.
    void before();
    /// Takes note of a frame, and whether it has any light.
    void note(bool lit);
    /// What can be said after the last frame. Reads the database if no frame had any light.
    void after(const std::optional<CatalogueUsed>& catalogue) const;

private:
    bool quiet_;
    const host::Session& session_;
    const host::Scene& scene_;
    const std::vector<host::Time>& times_;
    bool has_light_ = false;
};

/// Whether any colour channel of any pixel is not 0. Cheap, as it stops at the first one.
bool has_light(const host::World& world);

}  // namespace lumivar
