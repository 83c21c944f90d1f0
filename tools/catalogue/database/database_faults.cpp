#include "database/database_faults.h"

#include <libimgops/byte_order.h>

#include <cmath>
#include <cstddef>
#include <limits>

#include "counted.h"
#include "database/record_walk.h"

namespace lumivar {
namespace {

bool is_outside(double value, double low, double high) {
    return std::isfinite(value) && (value < low || value > high);
}

/// Whether the star has any fault, in one expression without a branch: nearly all stars have none,
/// and all of a database is looked at before its first frame.
bool has_fault(const star& record, bool has_distances) {
    const double lon = ledouble_to_cpu(&record.lon);
    const double lat = ledouble_to_cpu(&record.lat);
    const float luminance = lefloat_to_cpu(&record.luminance);
    const double distance = ledouble_to_cpu(&record.distance);
    // Comparisons with what is not a number are false.
    const bool in_place = (lon >= 0.0) & (lon <= 360.0) & (lat >= -90.0) & (lat <= 90.0);
    const bool has_light = (luminance > 0.0F) & (luminance <= std::numeric_limits<float>::max());
    const bool has_depth =
        !has_distances | (std::abs(distance) <= std::numeric_limits<double>::max());
    return !(in_place & has_light & has_depth);
}

}  // namespace

std::vector<std::string> file_faults(const DatabaseReader& database) {
    std::vector<std::string> faults;
    if (database.bytes() < sizeof(star)) {
        faults.push_back("the header is cut short: " + std::to_string(database.bytes()) +
                         " bytes instead of " + std::to_string(sizeof(star)));
    } else if (database.trailing_bytes() != 0) {
        faults.push_back(std::to_string(database.trailing_bytes()) +
                         " trailing bytes are no whole record and never read");
    }
    if (database.stars() > kMostStars) {
        faults.push_back("there are " + std::to_string(database.stars()) +
                         " stars, more than a database can hold (" + std::to_string(kMostStars) +
                         ")");
    }
    return faults;
}

StarFaults::StarFaults(int version) : has_distances_(version != 1) {
    kinds_ = {{"a lon that is not a number or infinite",
               [](const CatalogueStar& star) { return !std::isfinite(star.lon); }},
              {"a lat that is not a number or infinite",
               [](const CatalogueStar& star) { return !std::isfinite(star.lat); }},
              {"a luminance that is not a number or infinite",
               [](const CatalogueStar& star) { return !std::isfinite(star.luminance); }},
              {"a lon outside 0 to 360 degrees",
               [](const CatalogueStar& star) { return is_outside(star.lon, 0.0, 360.0); }},
              {"a lat outside -90 to 90 degrees",
               [](const CatalogueStar& star) { return is_outside(star.lat, -90.0, 90.0); }},
              {"a luminance of 0 or below", [](const CatalogueStar& star) {
                   return std::isfinite(star.luminance) && star.luminance <= 0.0F;
               }}};
    if (has_distances_) {
        kinds_.insert(kinds_.begin() + 3,
                      {"a distance that is not a number or infinite",
                       [](const CatalogueStar& star) { return !std::isfinite(star.distance); }});
    }
}

void StarFaults::add(std::span<const star> records) {
    const bool has_distances = has_distances_;
    bool any = false;
    for (const star& record : records) {
        any |= has_fault(record, has_distances);
    }
    for (std::size_t i = 0; any && i < records.size(); ++i) {
        note(decode_star(records[i]), stars_ + i + 1);
    }
    stars_ += records.size();
}

void StarFaults::note(const CatalogueStar& star, std::uint64_t number) {
    for (Kind& kind : kinds_) {
        if (kind.is_met(star) && ++kind.stars == 1) {
            kind.first = number;
        }
    }
}

std::vector<std::string> StarFaults::lines() const {
    std::vector<std::string> lines;
    for (const Kind& kind : kinds_) {
        if (kind.stars > 0) {
            lines.push_back(counted(kind.stars, "star", "stars") + " with " + kind.what +
                            " (first: star " + std::to_string(kind.first) + ")");
        }
    }
    return lines;
}

std::vector<std::string> database_faults(const std::filesystem::path& path) {
    DatabaseReader database(path);
    std::vector<std::string> faults = file_faults(database);
    StarFaults stars(database.version());
    Progress progress(database.stars(), "stars");
    for_each_block(database, progress, 0, [&](std::span<const star> block) { stars.add(block); });
    const std::vector<std::string> more = stars.lines();
    faults.insert(faults.end(), more.begin(), more.end());
    return faults;
}

}  // namespace lumivar
