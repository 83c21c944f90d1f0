#include "plugin_place.h"

#include <libimgops/star_database_name.h>
#include <osapi/program.h>

#include <system_error>

#include "database/star_file.h"
#include "failure.h"
#include "working_folder.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

constexpr const char* kBundleName = "Lumivar.plugin";

/// Without links, and the bundle for a module within one.
fs::path real_place(const fs::path& plugin) {
    std::error_code error;
    const fs::path real = fs::canonical(plugin, error);
    if (error) {
        throw Failure("there is no plug-in " + plugin.string());
    }
    const fs::path contents = real.parent_path().parent_path();
    const bool in_bundle = real.parent_path().filename() == "MacOS" &&
                           contents.filename() == "Contents" &&
                           contents.parent_path().stem() == real.filename();
    return in_bundle && fs::is_regular_file(real, error) ? contents.parent_path() : real;
}

std::string copy_complaint(const fs::path& bundle, const fs::path& place) {
    return "cannot copy the plug-in " + bundle.string() + " to the folder for temporary files " +
           place.string() + " (TMPDIR)";
}

fs::path temporary_place() {
    std::error_code error;
    fs::path place = fs::temp_directory_path(error);
    if (error) {
        throw Failure("there is no folder for temporary files where TMPDIR says: " +
                      error.message() + "; set TMPDIR to one");
    }
    return place;
}

}  // namespace

std::vector<fs::path> plugin_places(const fs::path& program) {
    const fs::path root = program.parent_path().parent_path();
    return {root / "plugin" / kBundleName, root / "lib" / "lumivar" / kBundleName,
            root / "lib" / kBundleName};
}

fs::path find_plugin(const std::string& named, const std::string& how) {
    if (!named.empty()) {
        return real_place(named);
    }
    std::error_code error;
    std::string looked_at;
    for (const fs::path& place : plugin_places(OSAPI::program_path().c_str())) {
        if (fs::is_directory(place, error)) {
            return real_place(place);
        }
        looked_at += (looked_at.empty() ? "" : ", ") + place.string();
    }
    throw Failure("cannot find the plug-in; it is in none of " + looked_at + "; " + how);
}

std::string staged_name(const fs::path& catalogue) {
    std::string name = catalogue.filename().string();
    // The plug-in joins the names with "|".
    const bool listable =
        is_star_database_name(name.c_str()) && name.find('|') == std::string::npos;
    return listable ? name : "catalogue.stars";
}

class StagedPlugin::Stage {
public:
    Stage(const fs::path& bundle, const fs::path& catalogue, const fs::path& place)
        : folder_(place, copy_complaint(bundle, place)) {
        // "Lumivar.plugin/" and "Lumivar.plugin" are the same bundle.
        const fs::path name =
            bundle.has_filename() ? bundle.filename() : bundle.parent_path().filename();
        bundle_ = folder_.make_folder(name);
        try {
            for (const auto& entry : fs::recursive_directory_iterator(
                     bundle, fs::directory_options::follow_directory_symlink)) {
                const fs::path within = name / entry.path().lexically_relative(bundle);
                if (entry.is_directory()) {
                    folder_.make_folder(within);
                } else {
                    fs::copy_file(entry.path(), folder_.file(within));
                }
            }
            fs::create_symlink(fs::absolute(catalogue), folder_.file(staged_name(catalogue)));
        } catch (const fs::filesystem_error& error) {
            throw Failure(copy_complaint(bundle, place) + ": " + error.code().message());
        }
    }

    const fs::path& bundle() const { return bundle_; }

private:
    WorkingFolder folder_;
    fs::path bundle_;
};

StagedPlugin::StagedPlugin(const fs::path& bundle, const fs::path& catalogue)
    : stage_(std::make_unique<Stage>(bundle, catalogue, temporary_place())) {}

StagedPlugin::~StagedPlugin() = default;

const fs::path& StagedPlugin::bundle() const { return stage_->bundle(); }

}  // namespace lumivar
