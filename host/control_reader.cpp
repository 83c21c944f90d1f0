#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <variant>

#include "scene_readers.h"
#include "track_reader.h"

namespace host {

namespace {

const std::string kColour = "a colour ([red, green, blue] from 0 to 255, or \"#rrggbb\")";

NumberRule channel() { return number_from(0, 255); }

bool is_colour(const JsonNode& node) {
    return node.is_array() || (node.is_string() && node.string().starts_with('#'));
}

int hex_digit(char c) {
    const std::string digits = "0123456789abcdef0123456789ABCDEF";
    const std::size_t at = digits.find(c);
    return at == std::string::npos ? -1 : static_cast<int>(at % 16);
}

/// "#rrggbb".
std::vector<double> read_hex_colour(const JsonNode& node) {
    const std::string& text = node.string();
    if (text.size() != 7 ||
        !std::all_of(text.begin() + 1, text.end(), [](char c) { return hex_digit(c) >= 0; })) {
        node.fail(kColour);
    }
    std::vector<double> channels;
    for (std::size_t i = 1; i < text.size(); i += 2) {
        channels.push_back(16.0 * hex_digit(text[i]) + hex_digit(text[i + 1]));
    }
    return channels;
}

/// A colour without keys.
std::vector<double> read_plain_colour(const JsonNode& node) {
    if (node.is_string() && is_colour(node)) {
        return read_hex_colour(node);
    }
    if (!node.is_array() || node.size() != 3) {
        node.fail(kColour);
    }
    std::vector<double> channels;
    for (std::size_t i = 0; i < 3; ++i) {
        channels.push_back(read_number(node[i], channel()));
    }
    return channels;
}

Colour read_keyed_colour(const std::vector<KeyNode>& keys) {
    std::vector<std::vector<double>> values;
    values.reserve(keys.size());
    for (const KeyNode& key : keys) {
        values.push_back(read_plain_colour(key.value));
    }
    Colour colour;
    std::vector<Track> channels = split_keys(keys, values);
    std::move(channels.begin(), channels.end(), colour.channels.begin());
    return colour;
}

/// A number, or true and false as 1 and 0.
double read_switch_or_number(const JsonNode& node) {
    if (node.is_boolean()) {
        return node.boolean() ? 1.0 : 0.0;
    }
    return read_number(node, {"a number, or true or false", any_number().holds});
}

}  // namespace

std::variant<Track, std::string, Colour> read_control_value(const JsonNode& node) {
    if (node.is_number() || node.is_boolean()) {
        return Track(read_switch_or_number(node));
    }
    if (node.is_string() && !is_colour(node)) {
        if (node.string().empty()) {
            node.fail("the name of a choice");
        }
        return node.string();
    }
    if (node.is_string()) {
        const std::vector<double> channels = read_hex_colour(node);
        return Colour{{channels[0], channels[1], channels[2]}};
    }
    if (node.is_array()) {
        if (node.size() != 3) {
            node.fail(kColour);
        }
        return Colour{read_track_array<3>(node, {channel()})};
    }
    if (!node.is_object()) {
        node.fail("a number, true or false, the name of a choice, " + kColour +
                  ", or {\"keys\": [...]}");
    }
    const std::vector<KeyNode> keys = read_keys(node);
    if (is_colour(keys.front().value)) {
        return read_keyed_colour(keys);
    }
    std::vector<Track::Key> numbers;
    numbers.reserve(keys.size());
    for (const KeyNode& key : keys) {
        numbers.push_back({key.time, read_switch_or_number(key.value), key.interpolation});
    }
    return Track(std::move(numbers));
}

std::vector<ControlSetting> read_controls(const JsonNode& node) {
    node.expect_object();
    std::vector<ControlSetting> controls;
    for (const std::string& name : node.members()) {
        const JsonNode control = node[name];
        controls.push_back({name, control.place(), read_control_value(control)});
    }
    return controls;
}

}  // namespace host
