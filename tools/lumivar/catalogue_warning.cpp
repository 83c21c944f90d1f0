#include "catalogue_warning.h"

#include <filesystem>
#include <optional>
#include <set>
#include <system_error>

#include "database/database_faults.h"
#include "diagnosis.h"
#include "failure.h"

namespace lumivar {
namespace {

std::vector<std::string> faults_if_readable(const std::filesystem::path& database) {
    try {
        return database_faults(database);
    } catch (const Failure&) {
        return {};
    }
}

}  // namespace

std::vector<std::string> catalogue_warnings(const host::Session& session, const host::Scene& scene,
                                            const std::vector<host::Time>& times) {
    std::set<std::filesystem::path> databases;
    for (const host::Time& time : times) {
        if (const auto chosen = chosen_catalogue(session, scene, time)) {
            // A database that is named by its path stands under a link in a temporary folder.
            std::error_code error;
            const std::filesystem::path real = std::filesystem::canonical(*chosen, error);
            databases.insert(error ? *chosen : real);
        }
    }
    std::vector<std::string> warnings;
    for (const std::filesystem::path& database : databases) {
        const std::vector<std::string> faults = faults_if_readable(database);
        if (!faults.empty()) {
            std::string warning = database.string() + " is faulty: " + faults.front();
            if (faults.size() > 1) {
                warning += ", and more";
            }
            warnings.push_back(warning + "; see lumivar catalog verify " + database.string());
        }
    }
    return warnings;
}

}  // namespace lumivar
