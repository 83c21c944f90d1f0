// Where the plug-in is, and which catalogue it shall see.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace lumivar {

/// The bundle that goes with this program: beside its bin/ folder as it is built
/// (../plugin/Lumivar.plugin) or installed (../lib/lumivar/Lumivar.plugin, ../lib/Lumivar.plugin).
/// `named`, if not empty, is taken instead. Links are followed, since the plug-in looks round the
/// place where it really stands; for a module within its bundle the bundle is given. Throws
/// `Failure`, which names the places looked at and, behind them, how to name another.
std::filesystem::path find_plugin(const std::string& named,
                                  const std::string& how = "name the bundle with --plugin");

/// The places that `find_plugin` looks at for a program file, in order.
std::vector<std::filesystem::path> plugin_places(const std::filesystem::path& program);

/// The plug-in lists the folder that holds its bundle. To show it a catalogue from elsewhere, and
/// only that one, a real copy of the bundle (a link would lead it back to the folder it was copied
/// from) stands in a temporary folder, and a link to the catalogue beside it. All of it goes with
/// the object, and at a signal.
class StagedPlugin {
public:
    /// Throws `Failure`.
    StagedPlugin(const std::filesystem::path& bundle, const std::filesystem::path& catalogue);
    ~StagedPlugin();
    StagedPlugin(const StagedPlugin&) = delete;
    StagedPlugin& operator=(const StagedPlugin&) = delete;

    const std::filesystem::path& bundle() const;

private:
    class Stage;
    std::unique_ptr<Stage> stage_;
};

/// The name of a staged catalogue: its own if the plug-in can list it under that, else
/// "catalogue.stars".
std::string staged_name(const std::filesystem::path& catalogue);

}  // namespace lumivar
