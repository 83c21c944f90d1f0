// The hints of one run of the command line, on standard error, each once.
#pragma once

#include <host/scene.h>
#include <host/session.h>
#include <host/world.h>

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
    /// Takes note of a frame, by the brightest of its colour channels.
    void note(float brightest);
    /// What can be said after the last frame. `catalogues` are those that the frames used; they are
    /// read if no frame had any light. Less than `least_visible` of the frames' light is black in
    /// the pictures.
    void after(const std::vector<CatalogueUsed>& catalogues, double least_visible) const;

private:
    bool quiet_;
    const host::Session& session_;
    const host::Scene& scene_;
    const std::vector<host::Time>& times_;
    float brightest_ = 0.0F;
};

/// The largest value of any colour channel of any pixel, 1 as white; 0 for a black frame. Not a
/// number counts as nothing.
float brightest_channel(const host::World& world);

}  // namespace lumivar
