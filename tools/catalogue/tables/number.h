// A number in a field of a catalogue.
#pragma once

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace lumivar {

/// What a field holds. Catalogues write unknown values in many ways.
enum class FieldState {
    Given,
    Missing,    ///< empty, or one of the words for it: null, nan, NULL, NaN, --, \N
    Malformed,  ///< something else than a number, or an infinite one
};

struct FieldNumber {
    FieldState state = FieldState::Missing;
    double value = 0.0;  ///< of a given field, finite
};

/// Whether `text`, without blanks round it, stands for an unknown value.
bool is_missing(std::string_view text);

/// `text`, without blanks round it, as a number: digits with a point, a sign of either kind and an
/// exponent, in any locale.
inline FieldNumber parse_number(std::string_view text) {
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (begin != end && *begin == '+' && text.size() > 1 && begin[1] != '-') {
        ++begin;  // the standard's parser knows no plus sign
    }
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(begin, end, value);
    if (result.ec == std::errc() && result.ptr == end && std::isfinite(value)) {
        return {FieldState::Given, value};
    }
    return {is_missing(text) ? FieldState::Missing : FieldState::Malformed, 0.0};
}

}  // namespace lumivar
