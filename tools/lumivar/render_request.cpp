#include "render_request.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace {

template <class Number>
std::optional<Number> parse_whole(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

std::optional<double> parse_number(std::string_view text) {
    const std::optional<double> number = parse_whole<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<host::Colour> parse_colour(std::string_view text) {
    host::Colour colour;
    for (std::size_t channel = 0; channel < colour.channels.size(); ++channel) {
        const std::size_t comma = text.find(',');
        const bool last = channel + 1 == colour.channels.size();
        if (last != (comma == std::string_view::npos)) {
            return std::nullopt;
        }
        const std::optional<double> number = parse_number(text.substr(0, comma));
        if (!number) {
            return std::nullopt;
        }
        colour.channels[channel] = host::Track(*number);
        text.remove_prefix(last ? text.size() : comma + 1);
    }
    return colour;
}

/// Whether the value is written as a scene has it: keys, a list, a text in quotes or "#rrggbb".
bool is_written_as_in_a_scene(const std::string& text) { return text.find_first_of("{[\"#") == 0; }

host::ControlSetting parse_as_in_a_scene(const std::string& name, const std::string& text,
                                         const std::string& place) {
    const std::string json =
        text.front() == '#'
            ? nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
            : text;
    try {
        return host::parse_control(name, json, place);
    } catch (const host::SceneError& error) {
        throw UsageError(error.what());
    }
}

decltype(host::ControlSetting::value) parse_value(const std::string& text) {
    if (text == "on" || text == "true") {
        return host::Track(1.0);
    }
    if (text == "off" || text == "false") {
        return host::Track(0.0);
    }
    if (const std::optional<double> number = parse_number(text)) {
        return host::Track(*number);
    }
    if (const std::optional<host::Colour> colour = parse_colour(text)) {
        return *colour;
    }
    return text;
}

}  // namespace

std::pair<int, int> parse_size(const std::string& text) {
    const std::size_t cross = text.find('x');
    if (cross != std::string::npos) {
        const auto width = parse_whole<int>(std::string_view(text).substr(0, cross));
        const auto height = parse_whole<int>(std::string_view(text).substr(cross + 1));
        if (width && height && *width > 0 && *height > 0) {
            return {*width, *height};
        }
    }
    throw UsageError("--size \"" + text + "\": give width and height in pixels, such as 1920x1080");
}

host::ControlSetting parse_setting(const std::string& text) {
    const std::size_t equals = text.find('=');
    // As in a scene, blanks around a value do not count.
    const std::size_t first = text.find_first_not_of(" \t", equals + 1);
    if (equals == std::string::npos || equals == 0 || first == std::string::npos) {
        throw UsageError(
            "--set \"" + text +
            "\": give the control's name and its value, such as \"Star Brightness=8\"");
    }
    const std::string name = text.substr(0, equals);
    const std::string value = text.substr(first, text.find_last_not_of(" \t") - first + 1);
    const std::string place = "--set \"" + text + "\"";
    if (is_written_as_in_a_scene(value)) {
        return parse_as_in_a_scene(name, value, place);
    }
    return {name, place, parse_value(value)};
}

}  // namespace lumivar
