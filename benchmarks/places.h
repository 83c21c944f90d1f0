// Exact places of stars on the frame, as each path finds them.
#pragma once

#include <base/newmatrix.h>
#include <libimgops/draw_path.h>
#include <libimgops/records.h>

#include <vector>

namespace bench {

/// Stars all over the sky through the default camera. Both paths have the same code; the plain one
/// finds a star's direction for every camera sample, the fast one once.
class Places {
public:
    static constexpr int kSamples = 17;

    Places(int stars, op_stars_projection projection);
    /// Projects each star kSamples times.
    void project(DrawPath path) const;
    /// Whether both paths find the same bits.
    bool agree() const;
    double samples() const { return kSamples * static_cast<double>(stars_.size()); }

private:
    struct Star {
        double lon, lat, distance;
    };
    bool plainly(const Star& s, Vector2& place) const;
    VectorN<double, 4> direction(const Star& s) const;
    bool on_screen(const VectorN<double, 4>& direction, Vector2& place) const;

    std::vector<Star> stars_;
    StarRendererData data_;
    Matrix4<double> matrix_;
};

}  // namespace bench
