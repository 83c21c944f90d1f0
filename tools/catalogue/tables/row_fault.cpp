#include "tables/row_fault.h"

namespace lumivar {

const char* fault_text(FaultKind kind) {
    switch (kind) {
        case FaultKind::LineTooLong:
            return "a line of more than a megabyte";
        case FaultKind::QuoteOpen:
            return "a double quote that is not closed, or text behind it";
        case FaultKind::FieldCount:
            return "more or fewer fields than the table has columns";
        case FaultKind::PlaceMissing:
            return "no right ascension or declination";
        case FaultKind::PlaceMalformed:
            return "a right ascension or declination that is no angle";
        case FaultKind::PlaceOutOfRange:
            return "a right ascension or declination out of range";
        case FaultKind::MagnitudeMissing:
            return "no magnitude";
        case FaultKind::MagnitudeMalformed:
            return "a magnitude that is not a number";
        case FaultKind::MagnitudeOutOfRange:
            return "a magnitude out of range";
        case FaultKind::ColourMalformed:
            return "a colour that is not a number";
        case FaultKind::ColourOutOfRange:
            return "a colour out of range";
        case FaultKind::DistanceMalformed:
            return "a distance or parallax that is not a number";
        case FaultKind::DistanceOutOfRange:
            return "a distance out of range";
        case FaultKind::MotionMalformed:
            return "a motion or epoch that cannot be used";
        case FaultKind::NoStar:
            return "no star by the catalogue itself, an entry without a place";
        case FaultKind::TheSun:
            return "the Sun";
        case FaultKind::OtherTable:
            return "a row of another table in the file, which is none of stars";
    }
    return "";
}

}  // namespace lumivar
