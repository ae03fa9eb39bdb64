// The hard-clip query over USB.
//
// It tries longer than the serial one: each pass waits a second more than the one before, up to about a minute when nothing
// comes. A request that could not be sent does not end it; the query report tells of it when no reply came either.
#pragma once

#include <cstdint>

extern "C" {

/// Service 11: opens the plotter's interface, asks, reads in passes with growing pauses, closes the interface. The values
/// are in ORB_HARDC_1 .. 4; what was said and heard is in the query report. Returns 0.
int32_t ORB_VectorixService11();
/// The query alone. ORB_errorID: 22007, 29002, 29006, 29008, 27004, -536870195, or what the interface lookup left.
int32_t ORB_USBreadHardClip();
}
