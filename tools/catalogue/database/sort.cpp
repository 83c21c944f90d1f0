#include "database/sort.h"

#include <libimgops/byte_order.h>

#include <cmath>
#include <limits>

#include "database/database_reader.h"
#include "database/database_writer.h"
#include "database/record_walk.h"
#include "database/sky_curve.h"

namespace lumivar {
namespace {

constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();

std::uint64_t order_key(const star& record, StarOrder order) {
    if (order == StarOrder::Brightness) {
        const auto luminance = static_cast<double>(lefloat_to_cpu(&record.luminance));
        return std::isnan(luminance) ? kLast : ~rising_key(luminance);
    }
    const double lon = ledouble_to_cpu(&record.lon);
    const double lat = ledouble_to_cpu(&record.lat);
    return std::isfinite(lon) && std::isfinite(lat) ? sky_curve_place(lon, lat) : kLast;
}

}  // namespace

std::uint64_t sort_database(const std::filesystem::path& input, const std::filesystem::path& output,
                            StarOrder order, const SortLimits& limits) {
    DatabaseReader reader(input);
    DatabaseWriter writer(output, reader.version());
    ExternalSort<star> sort(output, limits);
    for_each_record(reader,
                    [&](const star& record) { sort.add(order_key(record, order), record); });
    constexpr std::uint64_t kStarsBetweenShows = 4096;
    Progress progress(reader.stars(), "stars");
    star record;
    while (sort.next(record)) {
        writer.add_record(record);
        if (writer.stars() % kStarsBetweenShows == 0) {
            progress.update(writer.stars(), "written");
        }
    }
    writer.publish();
    return writer.stars();
}

}  // namespace lumivar
