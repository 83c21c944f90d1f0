// Places in the sky and in space, as a scene writes them: what a camera looks at and where it
// stands.
#pragma once

#include <host/camera.h>
#include <host/scene.h>

#include <array>
#include <memory>

#include "json_node.h"

namespace host {

/// "pc", "ly" or "au": its length in parsecs, which are the world's unit.
double read_length_unit(const JsonNode& node);

/// Reads what stands among the stars. Refers to the resolver, which must outlive it.
class SkyReader {
public:
    /// `unit`: the length in parsecs of the unit that the scene writes lengths in.
    SkyReader(double unit, const StarResolver& stars) : unit_(unit), stars_(stars) {}

    /// In parsecs: three numbers, or a place by its direction and distance, over time.
    std::array<Track, 3> read_position(const JsonNode& node) const;

    /// A camera at `position` (parsecs) that looks at a star, a place or a direction, over time.
    std::shared_ptr<const Camera> read_look_at(const JsonNode& node, std::array<Track, 3> position,
                                               Lens lens) const;

private:
    StarPlace read_star(const JsonNode& name) const;
    std::array<double, 3> direction_of(const JsonNode& node) const;
    std::array<double, 3> read_point(const JsonNode& node) const;
    SkyPlace read_aim(const JsonNode& node) const;
    std::shared_ptr<const Camera> read_angles(const JsonNode& node, std::array<Track, 3> position,
                                              Lens lens) const;

    double unit_;
    const StarResolver& stars_;
};

}  // namespace host
