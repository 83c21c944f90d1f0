#include "database/filter.h"

#include <bit>
#include <cmath>

#include "astronomy/place.h"
#include "astronomy/separation.h"
#include "astronomy/star_light.h"
#include "database/database_reader.h"
#include "database/database_writer.h"
#include "database/record_walk.h"
#include "database/scrambled_bits.h"

namespace lumivar {

bool is_in_cone(const CatalogueStar& star, const Cone& cone) {
    // Cheap, and true of most stars where it counts.
    if (!(std::abs(star.lat - cone.declination) <= cone.radius)) {
        return false;
    }
    // So little more that a star on the edge is not put outside by rounding.
    constexpr double kRounding = 1.0 + 1e-12;
    return separation_measure(star.lat, cone.declination, star.lon - cone.right_ascension) <=
           separation_measure(cone.radius) * kRounding;
}

bool is_in_box(const CatalogueStar& star, const Box& box) {
    if (!(star.lat >= box.declination_from && star.lat <= box.declination_to) ||
        !std::isfinite(star.lon)) {
        return false;
    }
    double width = box.right_ascension_to - box.right_ascension_from;
    if (width < 0.0) {
        width += 360.0;
    }
    return width >= 360.0 || turned_into_circle(star.lon - box.right_ascension_from) <= width;
}

bool is_in_sample(const CatalogueStar& star, double share) {
    std::uint64_t bits = scrambled_bits(std::bit_cast<std::uint64_t>(star.lon));
    bits = scrambled_bits(bits ^ std::bit_cast<std::uint64_t>(star.lat));
    bits = scrambled_bits(bits ^ std::bit_cast<std::uint32_t>(star.luminance));
    // The upper 53 bits are all that a double holds.
    return static_cast<double>(bits >> 11U) * 0x1p-53 < share;
}

FilterSummary filter_database(const std::filesystem::path& input,
                              const std::filesystem::path& output, const FilterRules& rules) {
    DatabaseReader reader(input);
    DatabaseWriter writer(output, reader.version());
    FilterSummary summary;
    // In the precision of the file, so that a star of exactly this magnitude stays.
    const auto lowest_luminance =
        static_cast<float>(luminance_from_magnitude(rules.faintest.value_or(0.0)));
    for_each_record(reader, [&](const star& record) {
        const CatalogueStar star = decode_star(record);
        ++summary.read;
        if (rules.faintest && !(star.luminance >= lowest_luminance)) {
            ++summary.too_faint;
        } else if (rules.cone && !is_in_cone(star, *rules.cone)) {
            ++summary.outside_cone;
        } else if (rules.box && !is_in_box(star, *rules.box)) {
            ++summary.outside_box;
        } else if (rules.sample && !is_in_sample(star, *rules.sample)) {
            ++summary.not_sampled;
        } else {
            writer.add_record(record);
        }
    });
    summary.written = writer.stars();
    writer.publish();
    return summary;
}

}  // namespace lumivar
