// Any field as a number, against the C library's reading of what is spelt as one.
#include "tables/number.h"

#include <cctype>

#include "harness.h"

namespace {

/// Digits with one point at most, one digit at least; a sign; an exponent.
bool is_spelt_as_number(const std::string& text) {
    std::size_t at = 0;
    const auto sign = [&] { at += at < text.size() && (text[at] == '+' || text[at] == '-'); };
    const auto digits = [&] {
        const std::size_t from = at;
        while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0) {
            ++at;
        }
        return at - from;
    };
    sign();
    std::size_t count = digits();
    if (at < text.size() && text[at] == '.') {
        ++at;
        count += digits();
    }
    if (count == 0) {
        return false;
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        sign();
        if (digits() == 0) {
            return false;
        }
    }
    return at == text.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = text_of(data, size);
    const lumivar::FieldNumber number = lumivar::parse_number(text);
    if (number.state != lumivar::FieldState::Given) {
        require(number.value == 0.0, "a field without a number has one");
        const double value = is_spelt_as_number(text) ? std::strtod(text.c_str(), nullptr) : NAN;
        // Beyond what a number can hold, or too small to be told from 0.
        require(!std::isfinite(value) || std::fabs(value) < 1e-307, "a number is refused");
        return 0;
    }
    require(is_spelt_as_number(text), "what is no number is taken for one");
    require(number.value == std::strtod(text.c_str(), nullptr), "a number is another one");
    require(!lumivar::is_missing(text), "a number is taken for a missing one");
    return 0;
}
