// The headers of a FITS file, looked at before the library that reads its tables.
#pragma once

#include <string>

namespace lumivar {

/// Reads the headers of `path` up to that of the first table. Throws `Failure`, naming the file
/// (`name`) and the card, where one is not as the FITS standard (version 4.0, section 4) has it: a
/// required card is missing, out of its order or out of range, or comes twice; a card has
/// characters that may not be there, or a value without quotes that is none.
///
/// The library trusts all of these, and ends the program or asks for all memory otherwise.
void check_fits_headers(const std::string& path, const std::string& name);

}  // namespace lumivar
