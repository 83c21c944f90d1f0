// A camera move that goes from star to star.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "astronomy/star_names.h"

namespace lumivar {

struct TourStop {
    const NamedStar* star;
    double time;       ///< seconds of composition time, when the star is in the middle
    std::string said;  ///< as the user wrote it, for messages
};

struct StarTour {
    std::vector<TourStop> stops;
    double hold = 0.0;           ///< seconds that the camera rests at each star
    double vertical_fov = 30.0;  ///< degrees
    int width = 1920;            ///< pixels
    int height = 1080;           ///< pixels
    double frame_rate = 24.0;    ///< frames a second
};

/// "Rigel@2": the name and the time in seconds. Throws `UsageError`.
TourStop parse_tour_stop(const std::string& text);

/// Lines "TIME NAME"; empty lines and what follows # do not count. Throws `Failure`, which names
/// `source` and the line.
std::vector<TourStop> read_tour_stops(std::istream& input, const std::string& source);

/// The scene's text. Throws `UsageError` when times are negative or do not increase by more than
/// the rest, or a number is out of its range.
std::string tour_scene(const StarTour& tour);

}  // namespace lumivar
