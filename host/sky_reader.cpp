#include "sky_reader.h"

#include <host/length_units.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "track_reader.h"

namespace host {

namespace {

NumberRule sky_rule(const std::string& name) {
    if (name == "dec") {
        return number_from(-90, 90);
    }
    return name == "distance" ? number_above_0() : any_number();
}

/// That all keys of `look_at` give the members of the first: one that a single key leaves out would
/// be taken as 0 there, and the camera would swing.
void expect_same_members(const std::vector<KeyNode>& keys,
                         std::initializer_list<const char*> names) {
    for (const KeyNode& key : keys) {
        for (const std::string name : names) {
            if (key.value.has(name) != keys.front().value.has(name)) {
                key.value.fail("the same members as in the first key",
                               (key.value.has(name) ? "\"" : "no \"") + name + '"');
            }
        }
    }
}

/// The member `name` of each key.
Track track_of_member(const std::vector<KeyNode>& keys, const std::string& name) {
    std::vector<Track::Key> numbers;
    for (const KeyNode& key : keys) {
        const double number =
            key.value.has(name) ? read_number(key.value[name], sky_rule(name)) : 0.0;
        numbers.push_back({key.time, number, key.interpolation});
    }
    return Track(std::move(numbers));
}

void expect_star_alone(const JsonNode& node) { node.expect_members({"star", "roll"}); }

}  // namespace

double read_length_unit(const JsonNode& node) {
    if (node.is_string()) {
        if (const auto parsecs = parsecs_in(node.string())) {
            return *parsecs;
        }
    }
    node.fail("\"pc\", \"ly\", \"au\", \"km\" or \"m\"");
}

StarPlace SkyReader::read_star(const JsonNode& name) const {
    if (!name.is_string()) {
        name.fail("the name of a star");
    }
    if (!stars_) {
        name.fail("\"ra\" and \"dec\" instead, as no stars are known by name here");
    }
    const StarAnswer answer = stars_(name.string());
    if (!answer.place) {
        name.fail(
            "the name of a star",
            name.text() + (answer.nearest ? "; did you mean \"" + *answer.nearest + "\"?" : ""));
    }
    return *answer.place;
}

/// Of length 1.
std::array<double, 3> SkyReader::direction_of(const JsonNode& node) const {
    if (node.has("toward")) {
        for (const char* member : {"ra", "dec"}) {
            if (node.has(member)) {
                node[member].fail("either \"toward\" or \"ra\" and \"dec\", not both");
            }
        }
        const StarPlace star = read_star(node["toward"]);
        return world_point({star.ra, star.dec, std::nullopt});
    }
    for (const char* member : {"ra", "dec"}) {
        if (!node.has(member)) {
            node.fail("\"toward\" a star, or \"ra\" and \"dec\"",
                      "no \"" + std::string(member) + '"');
        }
    }
    return world_point({read_number(node["ra"], sky_rule("ra")),
                        read_number(node["dec"], sky_rule("dec")), std::nullopt});
}

/// The position of one key, in parsecs.
std::array<double, 3> SkyReader::read_point(const JsonNode& node) const {
    std::array<double, 3> point{};
    if (!node.is_object()) {
        if (!node.is_array() || node.size() != point.size()) {
            node.fail("an array of 3 numbers");
        }
        for (std::size_t i = 0; i < point.size(); ++i) {
            point[i] = read_number(node[i], any_number()) * unit_;
        }
        return point;
    }
    node.expect_members({"toward", "ra", "dec", "distance"});
    point = direction_of(node);
    if (!node.has("distance")) {
        node.fail("a \"distance\" from the Sun");
    }
    const double distance = read_number(node["distance"], any_number()) * unit_;
    for (double& number : point) {
        number *= distance;
    }
    return point;
}

std::array<Track, 3> SkyReader::read_position(const JsonNode& node) const {
    std::array<Track, 3> position;
    if (!node.is_object()) {
        position = read_track_array<3>(node, {any_number()});
        std::transform(position.begin(), position.end(), position.begin(),
                       [this](const Track& track) { return track.scaled(unit_); });
        return position;
    }
    if (!node.has("keys")) {
        node.expect_members({"keys", "toward", "ra", "dec", "distance"});
        const std::array<double, 3> direction = direction_of(node);
        if (!node.has("distance")) {
            node.fail("a \"distance\" from the Sun");
        }
        const Track distance = read_track(node["distance"], any_number()).scaled(unit_);
        std::transform(direction.begin(), direction.end(), position.begin(),
                       [&distance](double number) { return distance.scaled(number); });
        return position;
    }
    const std::vector<KeyNode> keys = read_keys(node);
    std::vector<std::vector<double>> points;
    for (const KeyNode& key : keys) {
        const std::array<double, 3> point = read_point(key.value);
        points.emplace_back(point.begin(), point.end());
    }
    std::vector<Track> tracks = split_keys(keys, points);
    std::move(tracks.begin(), tracks.end(), position.begin());
    return position;
}

/// What one key looks at, beside keys that name stars.
SkyPlace SkyReader::read_aim(const JsonNode& node) const {
    if (node.has("star")) {
        expect_star_alone(node);
        const StarPlace star = read_star(node["star"]);
        return {star.ra, star.dec, star.distance};
    }
    node.expect_members({"star", "ra", "dec", "distance", "roll"});
    for (const char* member : {"ra", "dec"}) {
        if (!node.has(member)) {
            node.fail("a \"star\", or \"ra\" and \"dec\"", "no \"" + std::string(member) + '"');
        }
    }
    SkyPlace place = {read_number(node["ra"], sky_rule("ra")),
                      read_number(node["dec"], sky_rule("dec")), std::nullopt};
    if (node.has("distance")) {
        place.distance = read_number(node["distance"], sky_rule("distance")) * unit_;
    }
    return place;
}

/// Angles, each with keys of its own.
std::shared_ptr<const Camera> SkyReader::read_angles(const JsonNode& node,
                                                     std::array<Track, 3> position,
                                                     Lens lens) const {
    node.expect_members({"ra", "dec", "distance", "roll", "star", "keys"});
    const auto track = [&node](const char* name) {
        return node.has(name) ? read_track(node[name], sky_rule(name)) : Track();
    };
    std::optional<Track> distance;
    if (node.has("distance")) {
        distance = track("distance").scaled(unit_);
    }
    return look_at_camera(std::move(position), track("ra"), track("dec"), std::move(distance),
                          track("roll"), std::move(lens));
}

std::shared_ptr<const Camera> SkyReader::read_look_at(const JsonNode& node,
                                                      std::array<Track, 3> position,
                                                      Lens lens) const {
    node.expect_object();
    if (node.has("star")) {
        const SkyPlace place = read_aim(node);
        Track roll = node.has("roll") ? read_track(node["roll"], sky_rule("roll")) : Track();
        return aimed_camera(std::move(position), {{0.0, place}}, std::move(roll), std::move(lens));
    }
    if (!node.has("keys")) {
        return read_angles(node, std::move(position), std::move(lens));
    }
    const std::vector<KeyNode> keys = read_keys(node);
    for (const KeyNode& key : keys) {
        key.value.expect_object();
    }
    const bool names_stars = std::any_of(keys.begin(), keys.end(),
                                         [](const KeyNode& key) { return key.value.has("star"); });
    if (names_stars) {
        std::vector<AimKey> aims;
        aims.reserve(keys.size());
        for (const KeyNode& key : keys) {
            aims.push_back({key.time, read_aim(key.value), key.interpolation});
        }
        expect_same_members(keys, {"roll"});
        return aimed_camera(std::move(position), std::move(aims), track_of_member(keys, "roll"),
                            std::move(lens));
    }
    for (const KeyNode& key : keys) {
        key.value.expect_members({"ra", "dec", "distance", "roll", "star"});
    }
    expect_same_members(keys, {"ra", "dec", "roll", "distance"});
    std::optional<Track> distance;
    if (keys.front().value.has("distance")) {
        distance = track_of_member(keys, "distance").scaled(unit_);
    }
    return look_at_camera(std::move(position), track_of_member(keys, "ra"),
                          track_of_member(keys, "dec"), std::move(distance),
                          track_of_member(keys, "roll"), std::move(lens));
}

}  // namespace host
