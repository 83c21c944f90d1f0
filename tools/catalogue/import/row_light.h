// How bright the star of a row is, and of which colour.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "astronomy/star_light.h"
#include "import/import_options.h"
#include "import/row_values.h"

namespace lumivar {

struct RowLight {
    float luminance = 0.0F;
    std::array<std::uint8_t, 3> rgb{};  ///< sRGB codes
    bool without_colour = false;        ///< given `kNeutralColourIndex`
};

/// Fills `result`. Returns why it cannot, or nothing.
std::optional<RowFault> read_light(const RowValues& row, const ImportOptions& options,
                                   const StarColours& colours, RowLight& result);

}  // namespace lumivar
