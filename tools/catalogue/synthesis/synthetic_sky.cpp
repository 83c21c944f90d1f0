#include "synthesis/synthetic_sky.h"

#include <cmath>

#include "astronomy/star_light.h"
#include "database/database_writer.h"
#include "progress.h"
#include "synthesis/ieee_angle.h"
#include "synthesis/random_stream.h"
#include "synthesis/star_population.h"

namespace lumivar {

SyntheticSky::SyntheticSky(const SynthOptions& options)
    : options_(options),
      milky_way_(options.seed),
      first_rank_(counts_.brighter_than(options.brightest)) {
    const auto stars = static_cast<double>(options.stars);
    const double ranks =
        options.faintest ? counts_.brighter_than(*options.faintest) - first_rank_ : stars;
    ranks_a_star_ = ranks / stars;
}

CatalogueStar SyntheticSky::next() {
    RandomStream random(options_.seed, made_);
    // Each star has its share of the curve to itself: the counts are right, and never by chance.
    const double rank = first_rank_ + (static_cast<double>(made_) + random.unit()) * ranks_a_star_;
    ++made_;
    const auto [luminance, magnitude] = counts_.at_rank(rank, bin_);
    const auto [x, y, z] = milky_way_.place_of_star(magnitude, random);
    const double colour_index = draw_colour_index(magnitude, random);
    CatalogueStar star;
    star.lon = ieee_direction_degrees(y, x);
    const double latitude = ieee_direction_degrees(z, std::sqrt(x * x + y * y));
    star.lat = latitude > 180.0 ? latitude - 360.0 : latitude;
    star.luminance = static_cast<float>(luminance);
    star.rgb = synthetic_colour(colour_index);
    if (options_.distances) {
        // Light falls with the square of the distance; the intrinsic one is that at 10 parsecs.
        star.distance =
            10.0 * std::sqrt(draw_intrinsic_luminance(magnitude, colour_index, random) / luminance);
    }
    return star;
}

SynthSummary write_synthetic_sky(const SynthOptions& options, const std::filesystem::path& output) {
    constexpr std::uint64_t kStarsBetweenShows = 4096;
    DatabaseWriter writer(output);
    SyntheticSky sky(options);
    Progress progress(options.stars, "stars");
    SynthSummary summary;
    for (std::uint64_t i = 0; i < options.stars; ++i) {
        const CatalogueStar star = sky.next();
        writer.add(star, 0);
        if (i == 0) {
            summary.brightest = magnitude_from_luminance(static_cast<double>(star.luminance));
        }
        if (i + 1 == options.stars) {
            summary.faintest = magnitude_from_luminance(static_cast<double>(star.luminance));
        }
        if (i % kStarsBetweenShows == 0) {
            progress.update(i);
        }
    }
    writer.publish();
    return summary;
}

}  // namespace lumivar
