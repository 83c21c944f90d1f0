// The plug-in in the stand-in host, loaded with the catalogue that the user wants.
#pragma once

#include <host/scene.h>
#include <host/session.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plugin_place.h"

namespace lumivar {

/// What a star database says of itself, for summaries.
struct CatalogueUsed {
    std::string name;  ///< as the plug-in lists it
    std::filesystem::path path;
    int version = 0;
    std::uint64_t stars = 0;
};

class Player {
public:
    /// Loads the plug-in (see `find_plugin`). `catalogue`: empty leaves the choice to scene and
    /// plug-in; otherwise the name of a file beside the bundle, or the path of any star database (a
    /// name beside the bundle comes first; write ./NAME for a path). Throws `Failure` and the
    /// host's errors.
    Player(const std::string& plugin, const std::string& catalogue);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// Makes the scene choose the wanted catalogue, if one was named.
    void choose_catalogue(host::Scene& scene) const;
    /// Throws `Failure` when the plug-in cannot draw frames of this size.
    void require_drawable(const host::Scene& scene, const host::RenderOptions& options) const;
    /// Draws a frame. Throws `Failure` with the cause when it is too large for the plug-in or the
    /// plug-in did not draw it, and the host's errors.
    host::Frame render(const host::Scene& scene, host::Time time,
                       const host::RenderOptions& options);
    /// The database that a frame of the scene uses. Throws `Failure` when it cannot be read.
    std::optional<CatalogueUsed> catalogue_used(const host::Scene& scene, host::Time time) const;
    /// Those of several frames, each once.
    std::vector<CatalogueUsed> catalogues_used(const host::Scene& scene,
                                               const std::vector<host::Time>& times) const;

    const host::Session& session() const { return *session_; }
    /// The file of the plug-in's code, absolute.
    std::filesystem::path module_file() const;
    /// For a copy of the process that goes on with the loaded plug-in: what the plug-in did before
    /// is told by the process that loaded it.
    void forget();
    /// Ends the session; says on standard error what rules of the host the plug-in broke.
    void close();

private:
    std::unique_ptr<StagedPlugin> stage_;  ///< outlives the session
    std::filesystem::path bundle_;
    std::unique_ptr<host::Session> session_;
    std::string choice_;  ///< the wanted catalogue as the plug-in lists it; empty: none wanted
};

}  // namespace lumivar
