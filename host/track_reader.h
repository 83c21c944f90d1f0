// Numbers over time, as a scene writes them.
#pragma once

#include <host/scene.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "json_node.h"

namespace host {

/// Which numbers a place takes: `holds` decides, `expected` says it in messages, as "a number from
/// 0 to 720".
struct NumberRule {
    std::string expected;
    std::function<bool(double)> holds;
};

NumberRule any_number();
/// Both ends belong to the range.
NumberRule number_from(int low, int high);
NumberRule number_above_0();

struct KeyNode {
    double time;
    JsonNode value;
    Interpolation interpolation;  ///< from here to the next key
};

/// The keys of `{"keys": [{"time": s, "value": v}, ...]}`; at least one, times strictly increasing.
/// A key may have its own "interpolation"; one beside "keys" is for those that have none. The
/// values are unchecked.
std::vector<KeyNode> read_keys(const JsonNode& node);

/// A plain number.
double read_number(const JsonNode& node, const NumberRule& rule);
/// A number or keys.
Track read_track(const JsonNode& node, const NumberRule& rule);
/// A number, or keys that all have the same value: for what does not change over time.
double read_constant(const JsonNode& node, const NumberRule& rule);

/// One track for each element; `values` has the elements of each key.
std::vector<Track> split_keys(const std::vector<KeyNode>& keys,
                              const std::vector<std::vector<double>>& values);

/// An array of numbers or keys, or keys whose values are arrays of numbers; fills `out`. `rules`
/// holds one rule for all elements or one for each.
void read_tracks(const JsonNode& node, const std::vector<NumberRule>& rules, Track* out,
                 std::size_t count);

template <std::size_t N>
std::array<Track, N> read_track_array(const JsonNode& node, const std::vector<NumberRule>& rules) {
    std::array<Track, N> tracks;
    read_tracks(node, rules, tracks.data(), N);
    return tracks;
}

}  // namespace host
