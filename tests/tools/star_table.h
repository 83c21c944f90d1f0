// Small star databases for the tests.
#pragma once

#include <string>

#include "database/catalogue_star.h"

inline std::string bytes_of(const star& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

/// A white star of the given place and luminance, as a record.
inline std::string white_star(double lon, double lat, float luminance) {
    lumivar::CatalogueStar star;
    star.lon = lon;
    star.lat = lat;
    star.luminance = luminance;
    return bytes_of(lumivar::encode_star(star));
}

/// A database of one white star at right ascension 90, declination 0.
inline std::string one_star_database() {
    return bytes_of(lumivar::encode_header()) + white_star(90.0, 0.0, 0.25F);
}
