#include "golden_stars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace golden {

namespace {

constexpr double faintest = 4.0;

/// From bluish white to orange, evenly over B-V from -0.3 to 2: for the pictures, not for science.
std::array<std::uint8_t, 3> srgb(double colour_index) {
    const double red = std::clamp((colour_index + 0.3) / 2.3, 0.0, 1.0);
    const auto code = [red](double blue_end, double red_end) {
        return static_cast<std::uint8_t>(std::lround(blue_end + (red_end - blue_end) * red));
    };
    return {code(150, 255), code(175, 150), code(255, 90)};
}

}  // namespace

std::vector<reference::Star> load_stars(const std::string& table) {
    std::ifstream in(table);
    std::string line;
    std::getline(in, line);
    std::vector<reference::Star> stars;
    while (std::getline(in, line)) {
        std::array<std::string, 5> fields;  // ra_deg, dec_deg, vmag, bv, distance_pc
        std::istringstream columns(line);
        for (std::string& field : fields) {
            std::getline(columns, field, ',');
        }
        const double magnitude = std::stod(fields[2]);
        if (magnitude > faintest) {
            continue;
        }
        reference::Star star;
        star.lon = std::stod(fields[0]);
        star.lat = std::stod(fields[1]);
        star.luminance = static_cast<float>(std::pow(10, -0.4 * magnitude));
        star.srgb = srgb(fields[3].empty() ? 0.6 : std::stod(fields[3]));
        star.distance = fields[4].empty() ? -1 : std::stod(fields[4]);
        stars.push_back(star);
    }
    if (stars.empty()) {
        throw std::runtime_error("no bright stars in " + table);
    }
    return stars;
}

std::vector<support::CatalogueStar> catalogue_stars(const std::vector<reference::Star>& stars) {
    std::vector<support::CatalogueStar> result;
    result.reserve(stars.size());
    for (const reference::Star& star : stars) {
        result.push_back({star.lon, star.lat, star.luminance, star.srgb[0], star.srgb[1],
                          star.srgb[2], star.distance});
    }
    return result;
}

}  // namespace golden
