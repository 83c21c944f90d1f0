// Seeded skies for the benchmarks, as the effect reads them: files of star records.
#pragma once

#include <base/scoped_ptr.h>
#include <libimgops/star_input.h>

#include <string>
#include <vector>

namespace bench {

/// Stars per magnitude grow by 10^0.45, as on the real sky down to magnitude 10 or so, and end at
/// magnitude 11.7: 17 % are above the effect's default threshold, which is magnitude 10.
inline constexpr double kCountSlope = 0.45;
inline constexpr double kFaintestMagnitude = 11.7;
/// What the default threshold lets through.
inline constexpr double kThresholdMagnitude = 10.0;

/// `count` stars all over the sky down to magnitude `faintest`, in no order, with the colours of
/// black bodies and distances from 3 to 1000.
std::vector<star> whole_sky(u32 count, double faintest = kFaintestMagnitude);
/// `count` stars of magnitude 12 to 13: all below the default threshold.
std::vector<star> faint_sky(u32 count);
/// `count` stars above the default threshold that the default camera has ahead of it, but surely
/// not on its frame of 16 : 9; or more than 5 degrees behind it.
std::vector<star> off_frame_sky(u32 count);
std::vector<star> behind_sky(u32 count);
/// `count` stars of one luminance, evenly spread over the default camera's frame of 16 : 9.
std::vector<star> framed_sky(u32 count, float luminance);
/// The stars of the catalogue that ships, `data/hip.csv`: their places and magnitudes.
std::vector<star> shipped_sky();

/// A star file of its own in the folder for temporary files, removed at the end; opened as the
/// effect opens it.
class SkyFile {
public:
    explicit SkyFile(const std::vector<star>& stars);
    SkyFile(const SkyFile&) = delete;
    SkyFile& operator=(const SkyFile&) = delete;
    ~SkyFile();

    /// Rewound. Open until `close`.
    StarInput& input();
    void close();
    u32 stars() const { return stars_; }
    double bytes() const;
    /// Closes the file and asks the system to forget its pages. Returns whether it did: not every
    /// file system obeys.
    bool drop_from_page_cache();

private:
    std::string path_;
    u32 stars_;
    scoped_ptr<StarInput> input_;
};

}  // namespace bench
