#include "import/row_light.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>

#include "astronomy/photometry.h"

namespace lumivar {
namespace {

// In single precision the luminances of these are normal numbers.
constexpr double kBrightest = -30.0;
constexpr double kFaintest = 90.0;
/// Brighter than any star of the night.
constexpr double kFaintestSun = -20.0;
constexpr double kLowestColour = -10.0;
constexpr double kHighestColour = 20.0;

constexpr const char* kMagnitudeRemedy = "; give a magnitude from -30 to 90";

bool is_colour(double value) { return value >= kLowestColour && value <= kHighestColour; }

/// The magnitude that a row has, in its own band, and the column that it comes from.
struct Band {
    Quantity quantity = Quantity::VMagnitude;
    FieldNumber magnitude;
};

/// The first that is not missing, the best one first.
Band band_of(const RowValues& row) {
    Band band;
    for (const Quantity quantity : {Quantity::VMagnitude, Quantity::TychoVt, Quantity::TychoBt,
                                    Quantity::GaiaG, Quantity::HipparcosMagnitude}) {
        if (band.magnitude.state == FieldState::Missing && row.has_column(quantity)) {
            band = {quantity, row.number(quantity)};
        }
    }
    return band;
}

/// BT-VT of a row whose magnitude is VT.
std::optional<RowFault> read_tycho_colour(const RowValues& row, const Band& band,
                                          std::optional<double>& result) {
    constexpr const char* kTychoRemedy = "; leave the field empty where BT is not known";
    FieldNumber colour;
    Quantity quantity = Quantity::TychoBt;
    if (band.quantity == Quantity::TychoVt) {
        const FieldNumber bt = row.number(Quantity::TychoBt);
        colour = {bt.state, bt.value - band.magnitude.value};
    } else if (band.quantity == Quantity::VMagnitude &&
               row.text(Quantity::MagnitudeSource) == "T") {
        quantity = Quantity::ColourIndex;
        colour = row.number(quantity);
    }
    if (colour.state == FieldState::Malformed) {
        return row.malformed(FaultKind::ColourMalformed, quantity, kTychoRemedy);
    }
    if (colour.state == FieldState::Given) {
        if (!is_colour(colour.value)) {
            return row.out_of_range(FaultKind::ColourOutOfRange, quantity, colour.value,
                                    kTychoRemedy);
        }
        result = colour.value;
    }
    return std::nullopt;
}

std::optional<RowFault> read_temperature(const RowValues& row, std::optional<double>& kelvin) {
    for (const Quantity quantity : {Quantity::Temperature, Quantity::ColourIndex, Quantity::BpRp}) {
        const FieldNumber number = row.number(quantity);
        if (number.state == FieldState::Missing) {
            continue;
        }
        const bool is_temperature = quantity == Quantity::Temperature;
        const char* remedy = is_temperature
                                 ? "; give kelvins above 0, or leave the field empty"
                                 : "; give a colour from -10 to 20, or leave the field empty";
        if (number.state == FieldState::Malformed) {
            return row.malformed(FaultKind::ColourMalformed, quantity, remedy);
        }
        if (is_temperature ? !(number.value > 0.0) : !is_colour(number.value)) {
            return row.out_of_range(FaultKind::ColourOutOfRange, quantity, number.value, remedy);
        }
        kelvin = is_temperature               ? number.value
                 : quantity == Quantity::BpRp ? temperature_from_bp_rp(number.value)
                                              : temperature_from_colour_index(number.value);
        return std::nullopt;
    }
    return std::nullopt;
}

/// Luminance and codes as a database stores them.
std::optional<RowFault> read_stored(const RowValues& row, const ImportOptions& options,
                                    RowLight& result) {
    const std::string_view text = row.text(Quantity::Luminance);
    const FieldNumber number = row.number(Quantity::Luminance);
    if (number.state == FieldState::Malformed) {
        return row.malformed(FaultKind::MagnitudeMalformed, Quantity::Luminance, "");
    }
    // Of a binary table; what single precision cannot hold is out of range.
    result.luminance =
        std::fabs(number.value) <= static_cast<double>(std::numeric_limits<float>::max())
            ? static_cast<float>(number.value)
            : 0.0F;
    if (!text.empty()) {
        // Read in single precision: by way of double a number could be rounded twice.
        std::from_chars(text.data(), text.data() + text.size(), result.luminance);
    }
    if (number.state == FieldState::Missing || !std::isfinite(result.luminance) ||
        result.luminance <= 0.0F) {
        return row.out_of_range(FaultKind::MagnitudeOutOfRange, Quantity::Luminance, number.value,
                                "; give a luminance above 0");
    }
    if (options.zero_point != 0.0) {
        result.luminance *= static_cast<float>(luminance_from_magnitude(-options.zero_point));
    }
    std::size_t channel = 0;
    for (const Quantity quantity : {Quantity::Red, Quantity::Green, Quantity::Blue}) {
        const FieldNumber code = row.number(quantity);
        if (code.state != FieldState::Given || !(code.value >= 0.0 && code.value <= 255.0) ||
            code.value != std::floor(code.value)) {
            return row.out_of_range(FaultKind::ColourOutOfRange, quantity, code.value,
                                    "; give a code from 0 to 255");
        }
        result.rgb[channel++] = static_cast<std::uint8_t>(code.value);
    }
    return std::nullopt;
}

}  // namespace

std::optional<RowFault> read_light(const RowValues& row, const ImportOptions& options,
                                   const StarColours& colours, RowLight& result) {
    result.without_colour = false;
    if (row.has_column(Quantity::Luminance)) {
        return read_stored(row, options, result);
    }
    const Band band = band_of(row);
    if (band.magnitude.state == FieldState::Missing) {
        return row.missing(FaultKind::MagnitudeMissing, band.quantity);
    }
    if (band.magnitude.state == FieldState::Malformed) {
        return row.malformed(FaultKind::MagnitudeMalformed, band.quantity, kMagnitudeRemedy);
    }
    double v = band.magnitude.value;  // also of a band that nothing more is known for
    std::optional<double> kelvin;
    std::optional<double> colour;
    if (std::optional<RowFault> fault = read_tycho_colour(row, band, colour)) {
        return fault;
    }
    if (colour) {
        const double bt = v + *colour;
        kelvin = temperature_from_colour_index(bv_from_tycho(bt, v));
        v = v_from_tycho(bt, v);
    } else if (std::optional<RowFault> fault = read_temperature(row, kelvin)) {
        return fault;
    }
    const FieldNumber bp_rp = row.number(Quantity::BpRp);
    if (band.quantity == Quantity::GaiaG && bp_rp.state == FieldState::Given) {
        v = v_from_gaia(v, bp_rp.value);
    }
    if (row.layout().has_sun && v < kFaintestSun) {
        return RowFault{FaultKind::TheSun, ""};
    }
    const double stored = v - options.zero_point;
    if (!(v >= kBrightest && v <= kFaintest && stored >= kBrightest && stored <= kFaintest)) {
        return row.out_of_range(FaultKind::MagnitudeOutOfRange, band.quantity, v, kMagnitudeRemedy);
    }
    result.luminance = static_cast<float>(luminance_from_magnitude(v, options.zero_point));
    result.without_colour = !kelvin;
    result.rgb =
        colours.code_at(kelvin ? *kelvin : temperature_from_colour_index(kNeutralColourIndex));
    return std::nullopt;
}

}  // namespace lumivar
