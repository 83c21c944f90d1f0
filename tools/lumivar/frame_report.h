// What a worker process says of a frame that it has settled.
#pragma once

#include <cstdint>
#include <string>

namespace lumivar {

struct FrameReport {
    bool kept = false;            ///< the picture was there already, and nothing was rendered
    double render_seconds = 0.0;  ///< in the plug-in
    double write_seconds = 0.0;   ///< from its pixels to the picture in its place
    int width = 0;                ///< pixels
    int height = 0;
    float brightest = 0.0F;   ///< of the frame's colour channels; 0 is a black frame
    std::string catalogue;    ///< empty: the effect used none
    std::uint64_t stars = 0;  ///< in the catalogue
};

/// One line.
std::string report_text(const FrameReport& report);
/// Reads it back. For texts of `report_text` alone.
FrameReport parse_report(const std::string& text);

}  // namespace lumivar
