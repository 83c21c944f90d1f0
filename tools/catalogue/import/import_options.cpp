#include "import/import_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

#include "failure.h"
#include "import/column_names.h"
#include "tables/fields.h"

namespace lumivar {
namespace {

struct ColumnWord {
    const char* word;
    Quantity quantity;
    Unit usual;
};

constexpr std::array<ColumnWord, 22> kWords = {{
    {"ra", Quantity::RightAscension, Unit::Degrees},
    {"dec", Quantity::Declination, Unit::Degrees},
    {"rah", Quantity::RaHours, Unit::None},
    {"ram", Quantity::RaMinutes, Unit::None},
    {"ras", Quantity::RaSeconds, Unit::None},
    {"design", Quantity::DecSign, Unit::None},
    {"ded", Quantity::DecDegrees, Unit::None},
    {"dem", Quantity::DecMinutes, Unit::None},
    {"des", Quantity::DecSeconds, Unit::None},
    {"mag", Quantity::VMagnitude, Unit::Magnitudes},
    {"g", Quantity::GaiaG, Unit::Magnitudes},
    {"bt", Quantity::TychoBt, Unit::Magnitudes},
    {"vt", Quantity::TychoVt, Unit::Magnitudes},
    {"bv", Quantity::ColourIndex, Unit::Magnitudes},
    {"bprp", Quantity::BpRp, Unit::Magnitudes},
    {"teff", Quantity::Temperature, Unit::Kelvins},
    {"distance", Quantity::Distance, Unit::Parsecs},
    {"parallax", Quantity::Parallax, Unit::Milliarcseconds},
    {"pmra", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
    {"pmdec", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
    {"rv", Quantity::RadialVelocity, Unit::KilometresPerSecond},
    {"epoch", Quantity::Epoch, Unit::Years},
}};

const ColumnWord& word_of(Quantity quantity) {
    return *std::find_if(kWords.begin(), kWords.end(),
                         [&](const ColumnWord& known) { return known.quantity == quantity; });
}

/// Quantities of which a star has one: naming one of them drops the others.
using Alternatives = std::vector<Quantity>;

void clear_alternatives(Layout& layout, Quantity chosen) {
    static const std::array<Alternatives, 3> kGroups = {{
        {Quantity::ColourIndex, Quantity::BpRp, Quantity::Temperature},
        {Quantity::Distance, Quantity::Parallax},
        {Quantity::VMagnitude, Quantity::HipparcosMagnitude, Quantity::TychoBt, Quantity::TychoVt,
         Quantity::GaiaG, Quantity::MagnitudeSource, Quantity::Luminance},
    }};
    // BT and VT go together.
    const bool is_tycho = chosen == Quantity::TychoBt || chosen == Quantity::TychoVt;
    for (const Alternatives& group : kGroups) {
        if (std::find(group.begin(), group.end(), chosen) == group.end()) {
            continue;
        }
        for (const Quantity other : group) {
            const bool goes_along =
                is_tycho && (other == Quantity::TychoBt || other == Quantity::TychoVt);
            if (!goes_along) {
                layout.clear(other);
            }
        }
    }
    if (chosen == Quantity::RaHours || chosen == Quantity::DecDegrees) {
        layout.clear(Quantity::RightAscension);
        layout.clear(Quantity::Declination);
    }
    if (chosen == Quantity::RightAscension) {
        layout.degrees_by_habit = true;
    }
}

std::optional<ColumnIndex> number_of(std::string_view text, std::size_t columns) {
    std::size_t number = 0;
    const std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number == 0 ||
        number > columns) {
        return std::nullopt;
    }
    return number - 1;
}

}  // namespace

std::vector<NamedColumn> parse_columns(const std::string& text) {
    std::vector<NamedColumn> columns;
    std::string_view rest = text;
    for (;;) {
        const std::string_view item = trimmed(rest.substr(0, rest.find(',')));
        const std::size_t equals = item.find('=');
        const std::string_view word = trimmed(item.substr(0, equals));
        const auto* const known =
            std::find_if(kWords.begin(), kWords.end(),
                         [&](const ColumnWord& candidate) { return word == candidate.word; });
        if (equals == std::string_view::npos || known == kWords.end() ||
            trimmed(item.substr(equals + 1)).empty()) {
            throw UsageError("--columns: \"" + shown_field(item) +
                             "\" is not WORD=COLUMN; the words are " + kColumnWords);
        }
        if (std::any_of(columns.begin(), columns.end(), [&](const NamedColumn& named) {
                return named.quantity == known->quantity;
            })) {
            throw UsageError("--columns: \"" + std::string(word) + "\" is named twice");
        }
        columns.push_back({known->quantity, std::string(trimmed(item.substr(equals + 1)))});
        if (rest.find(',') == std::string_view::npos) {
            return columns;
        }
        rest.remove_prefix(rest.find(',') + 1);
    }
}

void choose_columns(Layout& layout, const Table& table, const std::vector<NamedColumn>& columns,
                    const std::string& file) {
    std::vector<std::pair<ColumnIndex, const char*>> taken;
    for (const NamedColumn& named : columns) {
        const ColumnWord& word = word_of(named.quantity);
        const std::string choice =
            file + ": --columns " + word.word + "=" + shown_field(named.name) + ": ";
        std::optional<ColumnIndex> column =
            table.has_names() ? find_column(table, named.name, file) : std::nullopt;
        if (!column) {
            column = number_of(named.name, table.columns().size());
        }
        if (!column) {
            throw Failure(choice + "there is no such column; it has " + column_list(table));
        }
        for (const auto& [other, other_word] : taken) {
            if (other == *column) {
                throw Failure(choice + "that column is " + other_word + " already");
            }
        }
        taken.emplace_back(*column, word.word);
        const std::optional<Unit> given = unit_of(table.columns()[*column].unit);
        if (given && !unit_fits(named.quantity, *given)) {
            throw Failure(choice + "the file says that it is in " + unit_text(*given) +
                          ", which is no unit of that");
        }
        clear_alternatives(layout, named.quantity);
        layout.set(named.quantity, *column, given ? *given : word.usual);
    }
}

}  // namespace lumivar
