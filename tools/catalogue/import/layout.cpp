#include "import/layout.h"

#include <algorithm>
#include <utility>

#include "tables/fields.h"

namespace lumivar {
namespace {

struct QuantityText {
    Quantity quantity;
    const char* text;
};

constexpr std::array<QuantityText, kQuantities> kQuantityTexts = {{
    {Quantity::RightAscension, "right ascension"},
    {Quantity::Declination, "declination"},
    {Quantity::RaHours, "right ascension's hours"},
    {Quantity::RaMinutes, "its minutes"},
    {Quantity::RaSeconds, "its seconds"},
    {Quantity::DecSign, "declination's sign"},
    {Quantity::DecDegrees, "its degrees"},
    {Quantity::DecMinutes, "its minutes"},
    {Quantity::DecSeconds, "its seconds"},
    {Quantity::ObservedRightAscension, "observed right ascension"},
    {Quantity::ObservedDeclination, "observed declination"},
    {Quantity::ProperMotionRa, "proper motion in right ascension"},
    {Quantity::ProperMotionDec, "proper motion in declination"},
    {Quantity::RadialVelocity, "radial velocity"},
    {Quantity::Epoch, "epoch"},
    {Quantity::Parallax, "parallax"},
    {Quantity::Distance, "distance"},
    {Quantity::VMagnitude, "magnitude V"},
    {Quantity::HipparcosMagnitude, "magnitude Hp where V is missing"},
    {Quantity::TychoBt, "magnitude BT"},
    {Quantity::TychoVt, "magnitude VT"},
    {Quantity::GaiaG, "magnitude G"},
    {Quantity::ColourIndex, "colour B-V"},
    {Quantity::BpRp, "colour BP-RP"},
    {Quantity::Temperature, "temperature"},
    {Quantity::MagnitudeSource, "source of the magnitude"},
    {Quantity::Luminance, "luminance"},
    {Quantity::Red, "red"},
    {Quantity::Green, "green"},
    {Quantity::Blue, "blue"},
}};

std::string short_column_text(const Table& table, ColumnIndex column) {
    const std::string& name = table.columns()[column].name;
    return name.empty() ? "column " + std::to_string(column + 1) : shown_field(name);
}

}  // namespace

std::string missing_quantities(const Layout& layout) {
    const auto has_all = [&](auto... quantities) { return (layout.has(quantities) && ...); };
    std::string missing;
    const auto miss = [&](const char* what) {
        missing += missing.empty() ? "" : ", ";
        missing += what;
    };
    const bool in_parts = has_all(Quantity::RaHours, Quantity::RaMinutes, Quantity::RaSeconds,
                                  Quantity::DecDegrees, Quantity::DecMinutes, Quantity::DecSeconds);
    if (!layout.has(Quantity::RightAscension) && !in_parts) {
        miss("right ascension");
    }
    if (!layout.has(Quantity::Declination) && !in_parts) {
        miss("declination");
    }
    if (!layout.has(Quantity::VMagnitude) && !layout.has(Quantity::TychoVt) &&
        !layout.has(Quantity::TychoBt) && !layout.has(Quantity::GaiaG) &&
        !layout.has(Quantity::HipparcosMagnitude) && !layout.has(Quantity::Luminance)) {
        miss("magnitude");
    }
    return missing;
}

std::string describe_layout(const Layout& layout, const Table& table) {
    std::string text = layout.title;
    const char* between = ": ";
    for (const auto& [quantity, what] : kQuantityTexts) {
        const std::optional<ColumnUse>& use = layout.use(quantity);
        if (!use) {
            continue;
        }
        text += between;
        text += what;
        text += " from ";
        text += short_column_text(table, use->column);
        if (use->unit != Unit::None) {
            text += " (";
            text += unit_text(use->unit);
            text += ")";
        }
        between = ", ";
    }
    return text;
}

}  // namespace lumivar
