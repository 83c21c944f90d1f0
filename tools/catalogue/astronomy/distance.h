// From a parallax to a distance.
#pragma once

namespace lumivar {

/// The distance that a star database stores for a star whose distance is not known.
inline constexpr double kUnknownDistance = -1.0;

/// 1000 / `mas` parsecs for a parallax in milliarcseconds; `kUnknownDistance` for one that is not
/// above `floor_mas` (which counts as 0 where it is below 0), or not a number.
///
/// The catalogue's parallax is taken as it stands, its zero point too. A parallax near the error of
/// its measurement says next to nothing of the distance, and its inverse is too large on average: a
/// floor of some times that error leaves such stars without a distance.
double distance_from_parallax(double mas, double floor_mas = 0.0);

}  // namespace lumivar
