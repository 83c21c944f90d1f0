#include "player.h"

#include <host/errors.h>
#include <host/module.h>
#include <libimgops/star_database_name.h>
#include <libimgops/star_input.h>

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <vector>

#include "database/star_file.h"
#include "diagnosis.h"
#include "failure.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

std::string one_line(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::unique_ptr<host::Session> load(const fs::path& bundle) {
    try {
        return std::make_unique<host::Session>(bundle);
    } catch (const host::EffectError& error) {
        throw Failure(one_line(explain_set_up(bundle, error)));
    }
}

std::string list_of(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

/// The plug-in joins the names with "|" to the list of choices: one that holds it makes two choices
/// of one database, and those after it lead to others than they name.
void require_countable_choices(const fs::path& folder) {
    for (const std::string& name : star_files_in(folder)) {
        if (name.find('|') != std::string::npos) {
            throw Failure("the star database " + (folder / name).string() +
                          " makes the plug-in's list of databases ambiguous, as its name holds "
                          "\"|\"; rename it, or name a database by its path with --catalogue");
        }
    }
}

}  // namespace

Player::Player(const std::string& plugin, const std::string& catalogue) {
    fs::path bundle = find_plugin(plugin);
    if (!catalogue.empty()) {
        const fs::path folder = host::plugin_folder(bundle);
        const bool is_name = catalogue.find('/') == std::string::npos;
        std::error_code error;
        if (is_name && is_star_database_name(catalogue.c_str()) &&
            fs::exists(fs::symlink_status(folder / catalogue, error))) {
            star_file_version(folder / catalogue);
            choice_ = catalogue;
        } else if (is_name && !fs::exists(fs::symlink_status(catalogue, error))) {
            throw Failure("there is no catalogue " + catalogue + ", neither beside the plug-in (" +
                          folder.string() + " has: " + list_of(star_files_in(folder)) +
                          ") nor as a file of its own");
        } else {
            star_file_version(catalogue);
            stage_ = std::make_unique<StagedPlugin>(bundle, catalogue);
            bundle = stage_->bundle();
            choice_ = staged_name(catalogue);
        }
    }
    session_ = load(bundle);
    bundle_ = bundle;
    require_countable_choices(session_->folder());
}

Player::~Player() = default;

void Player::choose_catalogue(host::Scene& scene) const {
    if (choice_.empty()) {
        return;
    }
    // The scene's own choice may not even be on the list any more.
    std::erase_if(scene.controls, [](const host::ControlSetting& setting) {
        return setting.name == kCatalogueControl;
    });
    scene.controls.push_back({kCatalogueControl, "--catalogue", choice_});
}

void Player::require_drawable(const host::Scene& scene, const host::RenderOptions& options) const {
    const int width = options.width != 0 ? options.width : scene.composition.width;
    const int height = options.height != 0 ? options.height : scene.composition.height;
    if (const auto refusal = refuse_size(width, height)) {
        throw Failure(*refusal);
    }
}

host::Frame Player::render(const host::Scene& scene, host::Time time,
                           const host::RenderOptions& options) {
    require_drawable(scene, options);
    host::Frame frame = session_->render(scene, time, options);
    if (!frame.drawn) {
        throw Failure(explain_frame(*session_, scene, frame));
    }
    return frame;
}

std::optional<CatalogueUsed> Player::catalogue_used(const host::Scene& scene,
                                                    host::Time time) const {
    const std::optional<fs::path> path = chosen_catalogue(*session_, scene, time);
    if (!path) {
        return std::nullopt;
    }
    CatalogueUsed used;
    used.name = path->filename().string();
    std::error_code error;
    used.path = fs::canonical(*path, error);
    used.version = star_file_version(*path);
    const std::uintmax_t records = fs::file_size(*path, error) / sizeof(star);
    used.stars = error || records == 0 ? 0 : records - 1;
    return used;
}

std::vector<CatalogueUsed> Player::catalogues_used(const host::Scene& scene,
                                                   const std::vector<host::Time>& times) const {
    std::vector<CatalogueUsed> all;
    for (const host::Time& time : times) {
        const std::optional<CatalogueUsed> used = catalogue_used(scene, time);
        if (used && std::none_of(all.begin(), all.end(), [&used](const CatalogueUsed& other) {
                return other.path == used->path;
            })) {
            all.push_back(*used);
        }
    }
    return all;
}

fs::path Player::module_file() const { return host::module_file(bundle_); }

void Player::forget() { session_->forget(); }

void Player::close() {
    session_->close();
    for (const host::Violation& violation : session_->violations()) {
        std::fprintf(stderr, "lumivar: warning: the plug-in broke a rule of its host: %s\n",
                     violation.text.c_str());
    }
}

}  // namespace lumivar
