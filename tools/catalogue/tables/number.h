// A number in a field of a catalogue.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
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

namespace detail {

/// Digits with a point in them, at most 15: what nearly all fields are. Both the digits and the
/// power of ten are exact in double precision, so that their quotient is the nearest number, as the
/// standard's parser would find it in three times the time. False for anything else.
inline bool parse_plain_decimal(const char* at, const char* end, double& value) {
    constexpr int kMostDigits = 15;
    constexpr double kPowersOfTen[kMostDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool negative = at != end && *at == '-';
    at += negative ? 1 : 0;
    std::uint64_t mantissa = 0;
    int digits = 0;
    int decimals = -1;  // behind the point, once there is one
    for (; at != end; ++at) {
        const auto digit = static_cast<unsigned char>(*at - '0');
        if (digit <= 9) {
            mantissa = 10 * mantissa + digit;
            ++digits;
            decimals += decimals >= 0 ? 1 : 0;
        } else if (*at == '.' && decimals < 0) {
            decimals = 0;
        } else {
            return false;
        }
    }
    if (digits == 0 || digits > kMostDigits) {
        return false;
    }
    const double magnitude = static_cast<double>(mantissa) / kPowersOfTen[std::max(decimals, 0)];
    value = negative ? -magnitude : magnitude;
    return true;
}

}  // namespace detail

/// `text`, without blanks round it, as a number: digits with a point, a sign of either kind and an
/// exponent, in any locale.
inline FieldNumber parse_number(std::string_view text) {
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (begin != end && *begin == '+' && text.size() > 1 && begin[1] != '-') {
        ++begin;  // the standard's parser knows no plus sign
    }
    double value = 0.0;
    if (detail::parse_plain_decimal(begin, end, value)) {
        return {FieldState::Given, value};
    }
    const std::from_chars_result result = std::from_chars(begin, end, value);
    if (result.ec == std::errc() && result.ptr == end && std::isfinite(value)) {
        return {FieldState::Given, value};
    }
    return {is_missing(text) ? FieldState::Missing : FieldState::Malformed, 0.0};
}

}  // namespace lumivar
