#include "track_reader.h"

#include <cstddef>
#include <utility>

namespace host {

namespace {

const std::string kOrKeys = " or {\"keys\": [...]}";

/// The member "interpolation" of `node`, or `unsaid`.
Interpolation read_interpolation(const JsonNode& node, Interpolation unsaid) {
    if (!node.has("interpolation")) {
        return unsaid;
    }
    const JsonNode word = node["interpolation"];
    for (const auto& [name, meant] : {std::pair{"linear", Interpolation::Linear},
                                      {"smooth", Interpolation::Smooth},
                                      {"hold", Interpolation::Hold}}) {
        if (word.is_string() && word.string() == name) {
            return meant;
        }
    }
    word.fail("\"linear\", \"smooth\" or \"hold\"");
}

}  // namespace

NumberRule any_number() {
    return {"a number", [](double) { return true; }};
}

NumberRule number_from(int low, int high) {
    return {"a number from " + std::to_string(low) + " to " + std::to_string(high),
            [low, high](double x) { return x >= low && x <= high; }};
}

NumberRule number_above_0() {
    return {"a number above 0", [](double x) { return x > 0.0; }};
}

std::vector<KeyNode> read_keys(const JsonNode& node) {
    node.expect_members({"keys", "interpolation"});
    if (!node.has("keys")) {
        node.fail("\"keys\"");
    }
    const JsonNode list = node["keys"];
    if (!list.is_array() || list.size() == 0) {
        list.fail("a list of keys, each {\"time\": seconds, \"value\": ...}");
    }
    const Interpolation unsaid = read_interpolation(node, Interpolation::Linear);
    std::vector<KeyNode> keys;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const JsonNode key = list[i];
        key.expect_members({"time", "value", "interpolation"});
        for (const char* member : {"time", "value"}) {
            if (!key.has(member)) {
                key.fail("\"time\" and \"value\"", "no \"" + std::string(member) + '"');
            }
        }
        const double time = read_number(key["time"], {"a time in seconds", any_number().holds});
        if (!keys.empty() && !(time > keys.back().time)) {
            key["time"].fail("a time after that of the key before, " + list[i - 1]["time"].text());
        }
        keys.push_back({time, key["value"], read_interpolation(key, unsaid)});
    }
    return keys;
}

double read_number(const JsonNode& node, const NumberRule& rule) {
    if (!node.is_number() || !rule.holds(node.number())) {
        node.fail(rule.expected);
    }
    return node.number();
}

Track read_track(const JsonNode& node, const NumberRule& rule) {
    if (!node.is_object()) {
        return read_number(
            node, {node.is_number() ? rule.expected : rule.expected + kOrKeys, rule.holds});
    }
    std::vector<Track::Key> keys;
    for (const KeyNode& key : read_keys(node)) {
        keys.push_back({key.time, read_number(key.value, rule), key.interpolation});
    }
    return Track(std::move(keys));
}

double read_constant(const JsonNode& node, const NumberRule& rule) {
    if (!node.is_object()) {
        return read_number(node, rule);
    }
    const std::vector<KeyNode> keys = read_keys(node);
    const double first = read_number(keys.front().value, rule);
    for (const KeyNode& key : keys) {
        if (read_number(key.value, rule) != first) {
            key.value.fail("the first key's value, " + keys.front().value.text() +
                           ", since this does not change over time");
        }
    }
    return first;
}

std::vector<Track> split_keys(const std::vector<KeyNode>& keys,
                              const std::vector<std::vector<double>>& values) {
    std::vector<Track> tracks;
    for (std::size_t element = 0; element < values.front().size(); ++element) {
        std::vector<Track::Key> column;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            column.push_back({keys[i].time, values[i][element], keys[i].interpolation});
        }
        tracks.emplace_back(std::move(column));
    }
    return tracks;
}

void read_tracks(const JsonNode& node, const std::vector<NumberRule>& rules, Track* out,
                 std::size_t count) {
    const auto rule = [&rules](std::size_t i) -> const NumberRule& {
        return rules.size() == 1 ? rules.front() : rules[i];
    };
    const std::string expected = "an array of " + std::to_string(count) + " numbers";
    if (!node.is_object()) {
        if (!node.is_array() || node.size() != count) {
            node.fail(node.is_array() ? expected : expected + kOrKeys);
        }
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = read_track(node[i], rule(i));
        }
        return;
    }
    const std::vector<KeyNode> keys = read_keys(node);
    std::vector<std::vector<double>> values;
    for (const KeyNode& key : keys) {
        if (!key.value.is_array() || key.value.size() != count) {
            key.value.fail(expected);
        }
        std::vector<double>& numbers = values.emplace_back();
        for (std::size_t i = 0; i < count; ++i) {
            numbers.push_back(read_number(key.value[i], rule(i)));
        }
    }
    std::vector<Track> tracks = split_keys(keys, values);
    std::move(tracks.begin(), tracks.end(), out);
}

}  // namespace host
