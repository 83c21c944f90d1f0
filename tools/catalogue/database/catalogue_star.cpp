#include "database/catalogue_star.h"

#include <libimgops/byte_order.h>

#include <cstring>

namespace lumivar {

star encode_header(int version) {
    star record = {};
    std::memcpy(&record, version == 1 ? kStarHeaderWord1 : kStarHeaderWord2, kStarHeaderWordBytes);
    return record;
}

star encode_star(const CatalogueStar& star) {
    ::star record = {};
    cpu_to_ledouble(star.lon, &record.lon);
    cpu_to_ledouble(star.lat, &record.lat);
    cpu_to_lefloat(star.luminance, &record.luminance);
    record.r = star.rgb[0];
    record.g = star.rgb[1];
    record.b = star.rgb[2];
    cpu_to_ledouble(star.distance, &record.distance);
    return record;
}

CatalogueStar decode_star(const star& record) {
    CatalogueStar star;
    star.lon = ledouble_to_cpu(&record.lon);
    star.lat = ledouble_to_cpu(&record.lat);
    star.luminance = lefloat_to_cpu(&record.luminance);
    star.rgb = {record.r, record.g, record.b};
    star.distance = ledouble_to_cpu(&record.distance);
    return star;
}

}  // namespace lumivar
