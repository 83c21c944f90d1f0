#include "astronomy/sexagesimal.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <initializer_list>
#include <system_error>

namespace lumivar {
namespace {

/// Takes a text apart from its front.
class SexagesimalText {
public:
    explicit SexagesimalText(std::string_view text) : rest_(text) {}

    bool at_end() const { return rest_.empty(); }
    bool at_digit() const { return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9'; }

    /// True if there was a blank.
    bool skip_blanks() {
        const std::size_t before = rest_.size();
        while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t')) {
            rest_.remove_prefix(1);
        }
        return rest_.size() != before;
    }
    /// Passes over the first of the marks that comes next; true if one did.
    bool skip_any(std::initializer_list<std::string_view> marks) {
        for (const std::string_view mark : marks) {
            if (rest_.substr(0, mark.size()) == mark) {
                rest_.remove_prefix(mark.size());
                return true;
            }
        }
        return false;
    }
    /// Digits, perhaps with decimals, which `whole` tells of.
    bool number(double& value, bool& whole) {
        if (!at_digit()) {
            return false;  // what reads numbers would take "inf" and a second sign
        }
        const char* const end = rest_.data() + rest_.size();
        const auto [stop, error] =
            std::from_chars(rest_.data(), end, value, std::chars_format::fixed);
        if (error != std::errc()) {
            return false;
        }
        const auto length = static_cast<std::size_t>(stop - rest_.data());
        whole = rest_.substr(0, length).find('.') == std::string_view::npos;
        rest_.remove_prefix(length);
        return true;
    }

private:
    std::string_view rest_;
};

using Marks = std::initializer_list<std::string_view>;

/// Two or three numbers with a blank or a colon between them, or each with its mark behind it.
bool parse_parts(SexagesimalText& text, Marks unit_marks, std::array<double, 3>& parts) {
    const Marks minute_marks = {"m", "M", "'", "\u2032"};
    const Marks second_marks = {"s", "S", "\"", "\u2033", "''"};
    const std::array<Marks, 3> marks = {unit_marks, minute_marks, second_marks};
    parts = {};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        bool whole = true;
        if (!text.number(parts[i], whole)) {
            return false;
        }
        const bool blank = text.skip_blanks();
        const bool colon = text.skip_any({":"});
        const bool mark = !colon && text.skip_any(marks[i]);
        text.skip_blanks();
        if (text.at_end()) {
            return i > 0 && !colon;
        }
        if (!whole || !(blank || colon || mark)) {
            return false;
        }
    }
    return false;  // something follows the seconds
}

bool in_range(const std::array<double, 3>& parts) {
    // Not "below 60" for seconds: see the header.
    return parts[1] < 60.0 && parts[2] <= 60.0;
}

}  // namespace

double from_sexagesimal(bool negative, double units, double minutes, double seconds) {
    const double value = (units * 3600.0 + minutes * 60.0 + seconds) / 3600.0;
    return negative ? -value : value;
}

bool parse_hours(std::string_view text, double& degrees) {
    SexagesimalText rest(text);
    rest.skip_blanks();
    rest.skip_any({"+"});
    std::array<double, 3> parts{};
    if (!parse_parts(rest, {"h", "H"}, parts) || !in_range(parts)) {
        return false;
    }
    // 24 hours are 360 degrees, so that an hour's 3600 seconds are 15 degrees.
    const double found = (parts[0] * 3600.0 + parts[1] * 60.0 + parts[2]) / 240.0;
    if (!(found <= 360.0)) {
        return false;
    }
    degrees = found < 360.0 ? found : 0.0;
    return true;
}

bool parse_degrees(std::string_view text, double& degrees) {
    SexagesimalText rest(text);
    rest.skip_blanks();
    const bool negative = rest.skip_any({"-", "\u2212"});
    if (!negative) {
        rest.skip_any({"+"});
    }
    std::array<double, 3> parts{};
    if (!parse_parts(rest, {"d", "D", "\u00b0"}, parts) || !in_range(parts)) {
        return false;
    }
    const double found = from_sexagesimal(negative, parts[0], parts[1], parts[2]);
    if (!(found >= -360.0 && found <= 360.0)) {
        return false;
    }
    degrees = found;
    return true;
}

}  // namespace lumivar
