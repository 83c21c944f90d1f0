#include "import/known_formats.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <utility>

#include "failure.h"
#include "import/column_names.h"
#include "tables/fields.h"

namespace lumivar {
namespace {

constexpr double kHipparcosEpoch = 1991.25;
constexpr double kGaiaEpoch = 2016.0;  // of the third release
/// HYG and AT-HYG write this for a distance that nobody knows.
constexpr double kHygUnknownParsecs = 100000.0;

struct FormatWord {
    const char* word;
    Format format;
};
constexpr std::array<FormatWord, 10> kFormats = {{
    {"auto", Format::Auto},
    {"hyg", Format::Hyg},
    {"athyg", Format::AtHyg},
    {"hipparcos", Format::Hipparcos},
    {"tycho2", Format::Tycho2},
    {"bsc5", Format::Bsc5},
    {"gaia", Format::Gaia},
    {"csv", Format::Csv},
    {"tsv", Format::Tsv},
    {"fits", Format::Fits},
}};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// Whether the text looks like the pattern: '9' stands for a digit, 'n' for a digit or a blank,
/// '+' for a sign, anything else for itself. The text may go on.
bool looks_like(std::string_view text, std::string_view pattern) {
    if (text.size() < pattern.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = text[i];
        const char wanted = pattern[i];
        const bool fits = wanted == '9'   ? is_digit(c)
                          : wanted == 'n' ? is_digit(c) || c == ' '
                          : wanted == '+' ? c == '+' || c == '-'
                                          : c == wanted;
        if (!fits) {
            return false;
        }
    }
    return true;
}

std::string_view first_line(std::string_view head) {
    std::string_view line = head.substr(0, head.find('\n'));
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

std::size_t fields_of(std::string_view line) {
    return static_cast<std::size_t>(std::count(line.begin(), line.end(), '|')) + 1;
}

struct NamedField {
    ColumnIndex column;
    const char* name;
    Quantity quantity;
    Unit unit;
};

/// A catalogue with bars between its fields, of which those named are used.
KnownText barred(const char* title, std::size_t columns, std::initializer_list<NamedField> used) {
    KnownText known;
    known.shape.separator = '|';
    known.shape.columns.resize(columns);
    known.layout.title = title;
    known.layout.is_published = true;
    for (const NamedField& field : used) {
        known.shape.columns[field.column].name = field.name;
        known.layout.set(field.quantity, field.column, field.unit);
    }
    return known;
}

constexpr std::size_t kHipparcosFields = 78;
constexpr std::size_t kTychoFields = 32;
constexpr std::size_t kTychoSupplementFields = 18;

// ESA, 1997, The Hipparcos and Tycho Catalogues, ESA SP-1200, vol. 1, sect. 2.1 (CDS I/239).
KnownText hipparcos() {
    KnownText known = barred("Hipparcos main catalogue", kHipparcosFields,
                             {{5, "Vmag", Quantity::VMagnitude, Unit::Magnitudes},
                              {8, "RAdeg", Quantity::RightAscension, Unit::Degrees},
                              {9, "DEdeg", Quantity::Declination, Unit::Degrees},
                              {11, "Plx", Quantity::Parallax, Unit::Milliarcseconds},
                              {12, "pmRA", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
                              {13, "pmDE", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
                              {37, "B-V", Quantity::ColourIndex, Unit::Magnitudes},
                              {44, "Hpmag", Quantity::HipparcosMagnitude, Unit::Magnitudes}});
    known.layout.epoch = kHipparcosEpoch;
    known.layout.has_entries_without_place = true;
    return known;
}

// E. Hog et al., 2000, A&A 355, L27 (CDS I/259).
KnownText tycho() {
    return barred("Tycho-2 catalogue", kTychoFields,
                  {{2, "RAmdeg", Quantity::RightAscension, Unit::Degrees},
                   {3, "DEmdeg", Quantity::Declination, Unit::Degrees},
                   {4, "pmRA", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
                   {5, "pmDE", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
                   {17, "BTmag", Quantity::TychoBt, Unit::Magnitudes},
                   {19, "VTmag", Quantity::TychoVt, Unit::Magnitudes},
                   {24, "RAdeg", Quantity::ObservedRightAscension, Unit::Degrees},
                   {25, "DEdeg", Quantity::ObservedDeclination, Unit::Degrees}});
}

KnownText tycho_supplement() {
    KnownText known = barred("Tycho-2 supplement", kTychoSupplementFields,
                             {{2, "RAdeg", Quantity::RightAscension, Unit::Degrees},
                              {3, "DEdeg", Quantity::Declination, Unit::Degrees},
                              {4, "pmRA", Quantity::ProperMotionRa, Unit::MilliarcsecondsPerYear},
                              {5, "pmDE", Quantity::ProperMotionDec, Unit::MilliarcsecondsPerYear},
                              {11, "BTmag", Quantity::TychoBt, Unit::Magnitudes},
                              {13, "VTmag", Quantity::TychoVt, Unit::Magnitudes}});
    known.layout.epoch = kHipparcosEpoch;
    return known;
}

// D. Hoffleit and W. H. Warren, 1991, The Bright Star Catalogue, 5th revised edition (CDS V/50).
KnownText bright_stars() {
    struct Field {
        const char* name;
        std::size_t first_byte;  // from 1, as the catalogue's description counts
        std::size_t last_byte;
        Quantity quantity;
        Unit unit;
    };
    static constexpr Field kFields[] = {
        {"RAh", 76, 77, Quantity::RaHours, Unit::None},
        {"RAm", 78, 79, Quantity::RaMinutes, Unit::None},
        {"RAs", 80, 83, Quantity::RaSeconds, Unit::None},
        {"DE-", 84, 84, Quantity::DecSign, Unit::None},
        {"DEd", 85, 86, Quantity::DecDegrees, Unit::None},
        {"DEm", 87, 88, Quantity::DecMinutes, Unit::None},
        {"DEs", 89, 90, Quantity::DecSeconds, Unit::None},
        {"Vmag", 103, 107, Quantity::VMagnitude, Unit::Magnitudes},
        {"B-V", 110, 114, Quantity::ColourIndex, Unit::Magnitudes},
        {"pmRA", 149, 154, Quantity::ProperMotionRa, Unit::ArcsecondsPerYear},
        {"pmDE", 155, 160, Quantity::ProperMotionDec, Unit::ArcsecondsPerYear},
        {"Parallax", 162, 166, Quantity::Parallax, Unit::Arcseconds},
    };
    KnownText known;
    known.layout.title = "Bright Star Catalogue";
    known.layout.is_published = true;
    known.layout.has_entries_without_place = true;
    for (const Field& field : kFields) {
        known.layout.set(field.quantity, known.shape.columns.size(), field.unit);
        known.shape.columns.push_back({field.name, ""});
        known.shape.ranges.push_back(
            {field.first_byte - 1, field.last_byte - field.first_byte + 1});
    }
    return known;
}

/// The first lines are as the Bright Star Catalogue writes them: a number, a name, and from byte 76
/// a place to the tenth of a second and to the second of arc, or blanks for it.
bool begins_bright_stars(std::string_view head) {
    constexpr std::size_t kPlace = 75;
    constexpr std::size_t kLongest = 198;
    constexpr std::string_view kPlacePattern = "999999.9+999999";
    int with_place = 0;
    for (int i = 0; i < 20 && !head.empty(); ++i) {
        const std::string_view line = first_line(head);
        if (line.size() > kLongest || !looks_like(line, "nnn9")) {
            // The look ahead may end within a line.
            return with_place > 0 && head.find('\n') == std::string_view::npos;
        }
        if (line.size() > kPlace && looks_like(line.substr(kPlace), kPlacePattern)) {
            ++with_place;
        } else if (!field_at(line, {kPlace, kPlacePattern.size()}).empty()) {
            return false;
        }
        head.remove_prefix(std::min(head.find('\n'), head.size() - 1) + 1);
    }
    return with_place > 0;
}

Layout dump_layout(const Table& table, const std::string& file) {
    Layout layout;
    layout.title = "table of a star database";
    layout.without_depth = has_columns(table, {"distance_unused"});
    const std::pair<const char*, std::pair<Quantity, Unit>> columns[] = {
        {"lon_deg", {Quantity::RightAscension, Unit::Degrees}},
        {"lat_deg", {Quantity::Declination, Unit::Degrees}},
        {"luminance", {Quantity::Luminance, Unit::None}},
        {"r", {Quantity::Red, Unit::None}},
        {"g", {Quantity::Green, Unit::None}},
        {"b", {Quantity::Blue, Unit::None}},
        {layout.without_depth ? "distance_unused" : "distance_pc",
         {Quantity::Distance, Unit::Parsecs}},
    };
    for (const auto& [name, what] : columns) {
        layout.set(what.first, *find_column(table, name, file), what.second);
    }
    return layout;
}

void require(bool found, const std::string& file, const char* what) {
    if (!found) {
        throw Failure(file + ": is not a " + what +
                      "; leave --format away to have it recognised, or name the columns with "
                      "--columns ra=NAME,dec=NAME,mag=NAME");
    }
}

}  // namespace

std::vector<std::string> format_words() {
    std::vector<std::string> words;
    words.reserve(kFormats.size());
    for (const FormatWord& known : kFormats) {
        words.emplace_back(known.word);
    }
    return words;
}

std::optional<Format> format_of(std::string_view word) {
    const auto* const found =
        std::find_if(kFormats.begin(), kFormats.end(),
                     [&](const FormatWord& known) { return word == known.word; });
    return found == kFormats.end() ? std::nullopt : std::optional(found->format);
}

std::optional<KnownText> recognise_text(std::string_view head, Format format) {
    const std::string_view line = first_line(head);
    const bool any = format == Format::Auto;
    if ((any || format == Format::Hipparcos) && looks_like(line, "H|") &&
        fields_of(line) == kHipparcosFields) {
        return hipparcos();
    }
    if ((any || format == Format::Tycho2) && looks_like(line, "9999 99999 9|")) {
        if (fields_of(line) == kTychoFields) {
            return tycho();
        }
        if (fields_of(line) == kTychoSupplementFields) {
            return tycho_supplement();
        }
    }
    if ((any || format == Format::Bsc5) && begins_bright_stars(head)) {
        return bright_stars();
    }
    return std::nullopt;
}

Layout recognise_columns(const Table& table, Format format, const std::string& file) {
    const bool any = format == Format::Auto;
    if ((any || format == Format::Csv || format == Format::Tsv) &&
        has_columns(table, {"lon_deg", "lat_deg", "luminance", "r", "g", "b"}) &&
        (has_columns(table, {"distance_pc"}) || has_columns(table, {"distance_unused"}))) {
        return dump_layout(table, file);
    }
    Layout layout = layout_by_names(table, file);
    const bool is_athyg =
        has_columns(table, {"ra", "dec", "dist", "mag", "ci", "pos_src", "mag_src"});
    // Also cut down to the columns that count. Degrees would be told by rows out of range.
    const bool is_hyg = !is_athyg && has_columns(table, {"ra", "dec", "dist", "mag", "ci"});
    const bool is_hyg_2 =
        has_columns(table, {"starid", "ra", "dec", "distance", "mag", "colorindex"});
    const bool is_gaia =
        layout.has(Quantity::GaiaG) && (has_columns(table, {"ra", "dec", "phot_g_mean_mag"}) ||
                                        has_columns(table, {"ra_icrs", "de_icrs", "gmag"}));
    if (format == Format::AtHyg) {
        require(is_athyg, file, "table of the AT-HYG catalogue");
    } else if (format == Format::Hyg) {
        require(is_hyg || is_hyg_2, file, "table of the HYG catalogue");
    } else if (format == Format::Gaia) {
        require(is_gaia, file, "table of the Gaia catalogue");
    }
    if ((any || format == Format::Hyg || format == Format::AtHyg) &&
        (is_hyg || is_hyg_2 || is_athyg)) {
        layout.title = is_athyg ? "AT-HYG catalogue" : "HYG catalogue";
        layout.is_published = true;
        layout.set(Quantity::RightAscension, *find_column(table, "ra", file), Unit::Hours);
        layout.set(Quantity::Declination, *find_column(table, "dec", file), Unit::Degrees);
        layout.set(Quantity::Distance, *find_column(table, is_hyg_2 ? "distance" : "dist", file),
                   Unit::Parsecs);
        if (is_athyg) {
            layout.set(Quantity::MagnitudeSource, *find_column(table, "mag_src", file), Unit::None);
        }
        layout.degrees_by_habit = false;
        layout.epoch = 2000.0;
        layout.unknown_distance = kHygUnknownParsecs;
        layout.has_sun = true;
        return layout;
    }
    if (is_gaia) {
        layout.title = "Gaia catalogue";
        layout.is_published = true;
        layout.degrees_by_habit = false;
        // Beside its own places VizieR computes some of J2000.
        const std::string& place =
            table.columns()[layout.use(Quantity::RightAscension)->column].name;
        if (place.front() != '_') {
            layout.epoch = kGaiaEpoch;
        }
    }
    return layout;
}

}  // namespace lumivar
