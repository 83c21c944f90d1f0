#include "halo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace lumivar {
namespace {

/// Samples around the frame in a halved image, so that what the edges of the frame are enlarged
/// from is there too.
constexpr std::ptrdiff_t kMargin = 4;
/// Samples beyond so many sigmas are left out: they hold less than a hundred-thousandth.
constexpr double kReach = 4.5;
/// A Gaussian is drawn in the smallest image in which it is still so many samples wide: narrower
/// ones are not round.
constexpr double kNarrowest = 1.5;

/// One channel. Has samples from `first` on in both directions; there is no light beyond.
struct Plane {
    std::ptrdiff_t first = 0;
    std::ptrdiff_t width = 0;
    std::ptrdiff_t height = 0;
    std::vector<float> samples;

    Plane(std::ptrdiff_t first_, std::ptrdiff_t width_, std::ptrdiff_t height_)
        : first(first_),
          width(width_),
          height(height_),
          samples(static_cast<std::size_t>(width_ * height_)) {}
    float* row(std::ptrdiff_t y) { return samples.data() + y * width; }
    const float* row(std::ptrdiff_t y) const { return samples.data() + y * width; }
};

bool is_in(std::ptrdiff_t place, std::ptrdiff_t count) { return place >= 0 && place < count; }

/// A sample of the coarser image is six of the finer, weighed 1, 5, 10, 10, 5, 1.
float weighed(float a, float b, float c, float d, float e, float f) {
    return 0.03125F * (a + f) + 0.15625F * (b + e) + 0.3125F * (c + d);
}

void halve_row(const Plane& fine, const float* in, const Plane& coarse, float* out) {
    for (std::ptrdiff_t x = 0; x < coarse.width; ++x) {
        const std::ptrdiff_t at = 2 * (x + coarse.first) - fine.first - 2;
        if (at >= 0 && at + 5 < fine.width) {
            const float* const from = in + at;
            out[x] = weighed(from[0], from[1], from[2], from[3], from[4], from[5]);
            continue;
        }
        const auto sample = [&](std::ptrdiff_t i) {
            return is_in(at + i, fine.width) ? in[at + i] : 0.0F;
        };
        out[x] = weighed(sample(0), sample(1), sample(2), sample(3), sample(4), sample(5));
    }
}

Plane halved(const Plane& fine, std::ptrdiff_t frame_width, std::ptrdiff_t frame_height) {
    Plane coarse(-kMargin, (frame_width + 1) / 2 + 2 * kMargin,
                 (frame_height + 1) / 2 + 2 * kMargin);
    const std::vector<float> dark(static_cast<std::size_t>(fine.width));
    std::vector<float> row(static_cast<std::size_t>(fine.width));
    for (std::ptrdiff_t y = 0; y < coarse.height; ++y) {
        const std::ptrdiff_t at = 2 * (y + coarse.first) - fine.first - 2;
        std::array<const float*, 6> rows{};
        for (std::ptrdiff_t i = 0; i < 6; ++i) {
            rows[static_cast<std::size_t>(i)] =
                is_in(at + i, fine.height) ? fine.row(at + i) : dark.data();
        }
        const auto [a, b, c, d, e, f] = rows;
        for (std::ptrdiff_t x = 0; x < fine.width; ++x) {
            row[static_cast<std::size_t>(x)] = weighed(a[x], b[x], c[x], d[x], e[x], f[x]);
        }
        halve_row(fine, row.data(), coarse, coarse.row(y));
    }
    return coarse;
}

/// A sample of the finer image is three of the coarser, by the same weights: 10 of the one that it
/// lies in, 5 of the one that it is near to, 1 of the other beside it.
struct Around {
    std::ptrdiff_t own;
    std::ptrdiff_t near;
    std::ptrdiff_t far;
};

Around around(std::ptrdiff_t place, const Plane& fine, const Plane& coarse) {
    const std::ptrdiff_t at = place + fine.first;
    const std::ptrdiff_t own = (at >= 0 ? at : at - 1) / 2 - coarse.first;
    const std::ptrdiff_t side = (at & 1) != 0 ? 1 : -1;
    return {own, own + side, own - side};
}

float weighed(float own, float near, float far) {
    return 0.625F * own + 0.3125F * near + 0.0625F * far;
}

/// Adds the enlarged image.
void add_enlarged(const Plane& coarse, Plane& fine) {
    std::vector<float> row(static_cast<std::size_t>(coarse.width));
    std::vector<Around> columns;
    columns.reserve(static_cast<std::size_t>(fine.width));
    for (std::ptrdiff_t x = 0; x < fine.width; ++x) {
        columns.push_back(around(x, fine, coarse));
    }
    for (std::ptrdiff_t y = 0; y < fine.height; ++y) {
        const Around rows = around(y, fine, coarse);
        const float* const own = coarse.row(rows.own);
        const float* const near = coarse.row(rows.near);
        const float* const far = coarse.row(rows.far);
        for (std::ptrdiff_t x = 0; x < coarse.width; ++x) {
            row[static_cast<std::size_t>(x)] = weighed(own[x], near[x], far[x]);
        }
        float* const out = fine.row(y);
        for (std::ptrdiff_t x = 0; x < fine.width; ++x) {
            const Around& column = columns[static_cast<std::size_t>(x)];
            out[x] += weighed(row[static_cast<std::size_t>(column.own)],
                              row[static_cast<std::size_t>(column.near)],
                              row[static_cast<std::size_t>(column.far)]);
        }
    }
}

/// The weights of a Gaussian at 0, 1, 2, ... samples; all together, both sides, they are `sum`.
std::vector<float> gaussian(double sigma, double sum) {
    const auto reach = static_cast<int>(std::ceil(kReach * sigma));
    std::vector<double> weights;
    double total = 0.0;
    for (int i = 0; i <= reach; ++i) {
        weights.push_back(i == 0 ? 1.0 : std::exp(-0.5 * (i / sigma) * (i / sigma)));
        total += (i == 0 ? 1.0 : 2.0) * weights.back();
    }
    std::vector<float> rounded;
    rounded.reserve(weights.size());
    for (const double weight : weights) {
        rounded.push_back(static_cast<float>(weight / total * sum));
    }
    return rounded;
}

/// to[i] += the weighted sum of `centre[i]` and its neighbours, for all `i` below `count`;
/// `before(n)` and `after(n)` point to the n-th neighbours of the first. Some samples at a time, so
/// that their sums stay in registers.
template <class Before, class After>
void add_weighted(const std::vector<float>& weights, const float* centre, Before before,
                  After after, std::ptrdiff_t count, float* to) {
    constexpr std::ptrdiff_t kTogether = 16;
    const auto reach = static_cast<std::ptrdiff_t>(weights.size()) - 1;
    std::ptrdiff_t x = 0;
    for (; x + kTogether <= count; x += kTogether) {
        std::array<float, kTogether> sums;
        for (std::ptrdiff_t i = 0; i < kTogether; ++i) {
            sums[static_cast<std::size_t>(i)] = weights[0] * centre[x + i];
        }
        for (std::ptrdiff_t n = 1; n <= reach; ++n) {
            const float weight = weights[static_cast<std::size_t>(n)];
            const float* const a = before(n) + x;
            const float* const b = after(n) + x;
            for (std::ptrdiff_t i = 0; i < kTogether; ++i) {
                sums[static_cast<std::size_t>(i)] += weight * (a[i] + b[i]);
            }
        }
        for (std::ptrdiff_t i = 0; i < kTogether; ++i) {
            to[x + i] += sums[static_cast<std::size_t>(i)];
        }
    }
    for (; x < count; ++x) {
        float sum = weights[0] * centre[x];
        for (std::ptrdiff_t n = 1; n <= reach; ++n) {
            sum += weights[static_cast<std::size_t>(n)] * (before(n)[x] + after(n)[x]);
        }
        to[x] += sum;
    }
}

/// Adds the plane, spread by a Gaussian of `sigma` samples, times `share`.
void add_spread(const Plane& source, double sigma, double share, Plane& out) {
    const std::vector<float> across = gaussian(sigma, 1.0);
    const std::vector<float> down = gaussian(sigma, share);
    const auto reach = static_cast<std::ptrdiff_t>(across.size()) - 1;
    // Row by row, with dark on both sides.
    Plane spread(source.first, source.width, source.height);
    std::vector<float> padded(static_cast<std::size_t>(source.width + 2 * reach));
    for (std::ptrdiff_t y = 0; y < source.height; ++y) {
        std::copy_n(source.row(y), source.width, padded.begin() + reach);
        const float* const middle = padded.data() + reach;
        add_weighted(
            across, middle, [=](std::ptrdiff_t n) { return middle - n; },
            [=](std::ptrdiff_t n) { return middle + n; }, source.width, spread.row(y));
    }
    const std::vector<float> dark(static_cast<std::size_t>(source.width));
    const auto row_or_dark = [&](std::ptrdiff_t y) {
        return y >= 0 && y < source.height ? std::as_const(spread).row(y) : dark.data();
    };
    for (std::ptrdiff_t y = 0; y < source.height; ++y) {
        add_weighted(
            down, row_or_dark(y), [&](std::ptrdiff_t n) { return row_or_dark(y - n); },
            [&](std::ptrdiff_t n) { return row_or_dark(y + n); }, source.width, out.row(y));
    }
}

/// A Gaussian, and the image in which it is drawn: halved so many times.
struct Placed {
    std::size_t halvings = 0;
    double sigma = 0.0;  ///< in samples of that image
    double share = 0.0;
};

Placed place(const HaloPart& part, int frame_width, double strength) {
    const double sigma = part.sigma * frame_width / 1920.0;
    Placed placed{0, sigma, part.share * strength};
    double scale = 1.0;
    while (sigma / (2.0 * scale) >= kNarrowest) {
        scale *= 2.0;
        ++placed.halvings;
    }
    // Halving with those weights adds a variance of 5/4 of a sample, enlarging as much, and each
    // further halving four times as much as the one before: 5 (4^n - 1) / 6 in all.
    placed.sigma = std::sqrt((sigma * sigma - 5.0 / 6.0 * (scale * scale - 1.0)) / (scale * scale));
    return placed;
}

/// The halo of one channel's light.
Plane halo_of(Plane light, const std::vector<Placed>& parts) {
    const std::size_t levels =
        std::max_element(parts.begin(), parts.end(), [](const Placed& a, const Placed& b) {
            return a.halvings < b.halvings;
        })->halvings;
    std::vector<Plane> images;
    images.push_back(std::move(light));
    std::ptrdiff_t width = images[0].width;
    std::ptrdiff_t height = images[0].height;
    for (std::size_t level = 0; level < levels; ++level) {
        images.push_back(halved(images.back(), width, height));
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    for (std::size_t level = levels;; --level) {
        Plane& image = images[level];
        Plane glow(image.first, image.width, image.height);
        for (const Placed& part : parts) {
            if (part.halvings == level) {
                add_spread(image, part.sigma, part.share, glow);
            }
        }
        if (level < levels) {
            add_enlarged(images[level + 1], glow);
        }
        image = std::move(glow);
        if (level == 0) {
            return std::move(images[0]);
        }
    }
}

}  // namespace

void add_halo(LinearImage& image, double strength) {
    if (strength == 0.0 || image.samples.empty()) {
        return;
    }
    std::vector<Placed> parts;
    double given_away = 0.0;
    for (const HaloPart& part : kHaloParts) {
        parts.push_back(place(part, image.width, strength));
        given_away += parts.back().share;
    }
    const auto stays = static_cast<float>(std::max(0.0, 1.0 - given_away));
    for (std::size_t channel = 0; channel < 3; ++channel) {
        Plane light(0, image.width, image.height);
        bool dark = true;
        for (std::size_t i = 0; i < light.samples.size(); ++i) {
            const float sample = image.samples[3 * i + channel];
            light.samples[i] = std::isfinite(sample) ? sample : 0.0F;
            dark = dark && light.samples[i] == 0.0F;
        }
        if (dark) {
            continue;
        }
        const Plane halo = halo_of(std::move(light), parts);
        for (std::size_t i = 0; i < halo.samples.size(); ++i) {
            float& sample = image.samples[3 * i + channel];
            if (std::isfinite(sample)) {
                sample = stays * sample + halo.samples[i];
            }
        }
    }
}

}  // namespace lumivar
