#include "view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace lumivar {

void expose(LinearImage& image, double stops) {
    if (stops == 0.0) {
        return;
    }
    const auto factor = static_cast<float>(std::exp2(stops));
    for (float& sample : image.samples) {
        sample *= factor;
    }
}

double film_response(double exposure) { return -std::expm1(-exposure); }

void view_as_photo(LinearImage& image) {
    for (std::size_t i = 0; i < image.samples.size(); i += 3) {
        float* const pixel = &image.samples[i];
        float largest = 0.0F;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            // Not so for what is not a number.
            pixel[channel] = pixel[channel] > 0.0F ? pixel[channel] : 0.0F;
            largest = std::max(largest, pixel[channel]);
        }
        if (largest == 0.0F) {
            continue;
        }
        if (std::isinf(largest)) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                pixel[channel] = std::isinf(pixel[channel]) ? 1.0F : 0.0F;
            }
            continue;
        }
        const double exposure = static_cast<double>(largest);
        const double scale = film_response(exposure) / exposure;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            pixel[channel] = static_cast<float>(static_cast<double>(pixel[channel]) * scale);
        }
    }
}

}  // namespace lumivar
