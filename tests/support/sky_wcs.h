// Where a public library of sky projections (WCSLIB) says that a star lands on the frame.
#pragma once

#include <memory>
#include <optional>

namespace support {

/// The projections by their names in the FITS standard.
enum class SkyProjection {
    Tan,  ///< gnomonic: radius focal x tan(angle)
    Sin,  ///< orthographic: radius sin(angle)
    Arc   ///< azimuthal equidistant: radius angle / 90 degrees
};

/// A frame that looks at (`ra`, `dec`), with the picture's up at position angle `roll` (from north
/// towards east); degrees. With roll 0 north is up and east to the left. Radii are in half frame
/// heights; `focal`, in the same unit, matters to `Tan` only.
struct SkyView {
    double ra = 0;
    double dec = 0;
    double roll = 0;
    int width = 0;
    int height = 0;
    SkyProjection projection = SkyProjection::Tan;
    double focal = 1;
};

/// A pixel position as the effect counts: pixel centres are integers, y runs downwards, and the
/// look-at point is at (width / 2, height / 2).
struct SkyPixel {
    double x = 0;
    double y = 0;
};

class SkyWcs {
public:
    /// Throws `std::runtime_error` when the library refuses the view.
    explicit SkyWcs(const SkyView& view);
    ~SkyWcs();
    SkyWcs(const SkyWcs&) = delete;
    SkyWcs& operator=(const SkyWcs&) = delete;

    /// Where (`ra`, `dec`), in degrees, lands, on or off the frame; none for the hemisphere behind.
    std::optional<SkyPixel> pixel(double ra, double dec) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace support
