#include "database/info.h"

#include <base/string.h>
#include <libimgops/star_database_name.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>

#include "astronomy/star_light.h"
#include "counted.h"
#include "database/catalogue_star.h"
#include "database/database_faults.h"
#include "database/database_reader.h"
#include "database/record_walk.h"

namespace lumivar {
namespace {

/// A whole magnitude stored as a single-precision luminance comes back up to 7e-8 too small; it
/// must not fall into the bin below.
constexpr double kMagnitudeRounding = 1e-6;

void count_star(const CatalogueStar& star, CatalogueInfo& info) {
    ++info.stars;
    info.lon.add(star.lon);
    info.lat.add(star.lat);
    info.luminance.add(static_cast<double>(star.luminance));
    info.red.add(star.rgb[0]);
    info.green.add(star.rgb[1]);
    info.blue.add(star.rgb[2]);
    if (star.distance > 0.0) {
        info.distance.add(star.distance);
    }
    if (star.luminance > 0.0F && std::isfinite(star.luminance)) {
        const double magnitude = magnitude_from_luminance(static_cast<double>(star.luminance));
        info.magnitude.add(magnitude);
        ++info.histogram[static_cast<int>(std::floor(magnitude + kMagnitudeRounding))];
    }
}

constexpr int kDoubleDigits = std::numeric_limits<double>::digits10;
constexpr int kFloatDigits = std::numeric_limits<float>::digits10;

/// `digits`: what the field's type holds for certain.
void append_range(std::string& text, const char* name, const FieldRange& range, int digits,
                  const char* unit) {
    if (range.values == 0) {
        text += String::fmt("  %-10s -\n", name).c_str();
    } else {
        text += String::fmt("  %-10s %.*g to %.*g%s\n", name, digits, range.low, digits, range.high,
                            unit)
                    .c_str();
    }
}

nlohmann::ordered_json range_json(const FieldRange& range) {
    if (range.values == 0) {
        return nullptr;
    }
    return {{"low", range.low}, {"high", range.high}};
}

}  // namespace

void FieldRange::add(double value) {
    if (std::isfinite(value)) {
        low = std::min(low, value);
        high = std::max(high, value);
        ++values;
    }
}

CatalogueInfo examine_catalogue(const std::filesystem::path& path) {
    CatalogueInfo info;
    info.path = path.string();
    DatabaseReader database(path);
    info.version = database.version();
    info.bytes = database.bytes();
    info.warnings = file_faults(database);
    StarFaults faults(info.version);
    Progress progress(database.stars(), "stars");
    for_each_block(database, progress, 0, [&](std::span<const star> block) {
        faults.add(block);
        for (const star& record : block) {
            count_star(decode_star(record), info);
        }
    });
    if (info.stars == 0) {
        info.warnings.emplace_back("there are no stars: every frame stays black");
    }
    if (!is_star_database_name(path.filename().c_str())) {
        info.warnings.emplace_back(
            "the plug-in finds only files with \".stars\" in their name: rename it");
    }
    const std::vector<std::string> star_faults = faults.lines();
    info.warnings.insert(info.warnings.end(), star_faults.begin(), star_faults.end());
    return info;
}

std::string info_as_text(const CatalogueInfo& info) {
    std::string text = info.path + "\n";
    text += String::fmt("  version    %d (distances are %s)\n", info.version,
                        info.version == 2 ? "used" : "not used")
                .c_str();
    text += String::fmt("  stars      %llu in %llu bytes\n",
                        static_cast<unsigned long long>(info.stars),
                        static_cast<unsigned long long>(info.bytes))
                .c_str();
    append_range(text, "lon", info.lon, kDoubleDigits, " degrees");
    append_range(text, "lat", info.lat, kDoubleDigits, " degrees");
    append_range(text, "luminance", info.luminance, kFloatDigits, "");
    append_range(text, "magnitude", info.magnitude, kFloatDigits, "");
    append_range(text, "red", info.red, kFloatDigits, "");
    append_range(text, "green", info.green, kFloatDigits, "");
    append_range(text, "blue", info.blue, kFloatDigits, "");
    append_range(text, "distance", info.distance, kDoubleDigits, " parsecs");
    text += "  unknown    " + counted(info.stars - info.distance.values, "star", "stars") +
            " without a distance\n";
    std::uint64_t most = 1;
    for (const auto& [magnitude, stars] : info.histogram) {
        most = std::max(most, stars);
    }
    text += "  stars by magnitude\n";
    constexpr double kLongestBar = 50.0;
    for (const auto& [magnitude, stars] : info.histogram) {
        const auto bar = static_cast<std::size_t>(
            std::ceil(kLongestBar * static_cast<double>(stars) / static_cast<double>(most)));
        text += String::fmt("    %4d to %3d %8llu ", magnitude, magnitude + 1,
                            static_cast<unsigned long long>(stars))
                    .c_str();
        text += std::string(bar, '#') + "\n";
    }
    for (const std::string& warning : info.warnings) {
        text += "  warning: " + warning + "\n";
    }
    return text;
}

std::string info_as_json(const CatalogueInfo& info) {
    nlohmann::ordered_json json;
    json["path"] = info.path;
    json["version"] = info.version;
    json["bytes"] = info.bytes;
    json["stars"] = info.stars;
    json["lon"] = range_json(info.lon);
    json["lat"] = range_json(info.lat);
    json["luminance"] = range_json(info.luminance);
    json["magnitude"] = range_json(info.magnitude);
    json["red"] = range_json(info.red);
    json["green"] = range_json(info.green);
    json["blue"] = range_json(info.blue);
    json["distance"] = range_json(info.distance);
    json["without_distance"] = info.stars - info.distance.values;
    json["magnitudes"] = nlohmann::ordered_json::array();
    for (const auto& [magnitude, stars] : info.histogram) {
        json["magnitudes"].push_back({{"from", magnitude}, {"stars", stars}});
    }
    json["warnings"] = info.warnings;
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace lumivar
