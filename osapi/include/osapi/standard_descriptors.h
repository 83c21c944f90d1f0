// The three descriptors that a program expects to find open.
#pragma once

namespace OSAPI {

/// Opens "/dev/null" under each of the numbers 0, 1 and 2 that is closed. Otherwise a file that the
/// program opens later could get such a number, and with it what is written to a standard stream.
/// Reading from standard input and writing to the others still fail as with closed descriptors, and
/// programs executed from here find them closed. For the start of a program, before it has opened
/// anything or has threads. Does not throw: without "/dev/null" they stay closed.
void hold_standard_descriptors();

}  // namespace OSAPI
