// IOKit return codes in words, on the console and in the record. The blanks and line ends of these texts differ from code to
// code, and hosts know them so: they are data in the .cpp file, not to be tidied.
#pragma once

#include <cstdint>

extern "C" {

/// Shows what a code means: one line on the console, one text in ORB_CFSTR_message. Returns the code when it is one of
/// IOKit's common codes or 22007, and kIOReturnNotResponding for every other, 0 included. Never changes ORB_errorID.
int32_t ORB_logIOError(int32_t code);
}
