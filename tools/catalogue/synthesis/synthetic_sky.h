// A sky that was never observed, for tests, benchmarks and art: as many stars as one likes, with
// the counts, the colours and the Milky Way that a real sky has, on the average.
//
// The same options give the same bytes on every machine: its random numbers are integers, and what
// becomes of them is made of additions, multiplications, divisions and square roots alone, which
// IEEE 754 fixes to the last bit. No function of the mathematics library decides a byte, as those
// differ from system to system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "database/catalogue_star.h"
#include "synthesis/milky_way.h"
#include "synthesis/star_counts.h"

namespace lumivar {

inline constexpr std::uint64_t kMostSyntheticStars = 1'000'000'000;

struct SynthOptions {
    std::uint64_t stars = 1'000'000;  ///< 1 to `kMostSyntheticStars`
    std::uint64_t seed = 1;
    double brightest = -1.5;  ///< magnitude, from `StarCounts::kBrightest`
    /// Magnitude, up to `StarCounts::kFaintest`. Nothing: as faint as that many of the sky's
    /// brightest stars go, 11.2 for a million.
    std::optional<double> faintest;
    bool distances = false;  ///< otherwise unknown, -1
};

/// Makes the stars one after the other, the brightest first.
class SyntheticSky {
public:
    explicit SyntheticSky(const SynthOptions& options);

    /// The next star; to be called `stars` times at most.
    CatalogueStar next();

private:
    SynthOptions options_;
    StarCounts counts_;
    MilkyWay milky_way_;
    double first_rank_;
    double ranks_a_star_;
    std::uint64_t made_ = 0;
    std::size_t bin_ = 0;
};

/// The ends of what was written.
struct SynthSummary {
    double brightest = 0.0;  ///< magnitudes
    double faintest = 0.0;
};

/// Writes such a sky to `output`. Throws `Failure`.
SynthSummary write_synthetic_sky(const SynthOptions& options, const std::filesystem::path& output);

}  // namespace lumivar
