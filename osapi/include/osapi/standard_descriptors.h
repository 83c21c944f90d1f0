// The three descriptors that a program expects to find open.
#pragma once

namespace OSAPI {

/// Takes the places of those of the descriptors 0, 1 and 2 that are closed, so that nothing that
/// the program opens gets such a number and with it what is meant for a standard stream. Reading
/// from standard input and writing to the others go on failing as they do where these are closed,
/// and programs executed from here find them closed. For the start of a program, before it has
/// opened anything or has threads. Does not throw: without "/dev/null" they stay closed.
void hold_standard_descriptors();

}  // namespace OSAPI
