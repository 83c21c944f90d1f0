// Why a row of a catalogue becomes no star.
#pragma once

#include <string>

namespace lumivar {

enum class FaultKind {
    // The row is none.
    LineTooLong,
    QuoteOpen,
    FieldCount,
    // The row's values are no star's.
    PlaceMissing,
    PlaceMalformed,
    PlaceOutOfRange,
    MagnitudeMissing,
    MagnitudeMalformed,
    MagnitudeOutOfRange,
    ColourMalformed,
    ColourOutOfRange,
    DistanceMalformed,
    DistanceOutOfRange,
    MotionMalformed,
    // The catalogue itself says that there is nothing to draw.
    NoStar,
    TheSun,
    OtherTable,
};
inline constexpr int kFaultKinds = static_cast<int>(FaultKind::OtherTable) + 1;

struct RowFault {
    FaultKind kind = FaultKind::FieldCount;
    std::string detail;  ///< which column holds what, for a message; may be empty
};

/// "a magnitude that is not a number": for the accounts.
const char* fault_text(FaultKind kind);

/// Whether the row is as the catalogue means it to be, though no star of ours: nobody has to mend
/// it.
inline bool is_expected(FaultKind kind) {
    return kind == FaultKind::NoStar || kind == FaultKind::TheSun || kind == FaultKind::OtherTable;
}

}  // namespace lumivar
