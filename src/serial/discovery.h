// The list of the system's RS-232 serial ports, in the three lists of six that the record has room for.
//
// It comes from the registry alone: opening a port to look at it raises DTR, which a plotter may take for a start.
#pragma once

#include <cstdint>

extern "C" {

/// Service 3: lists the ports.
int32_t ORB_VectorixService3();
/// Fills the three port lists in the order of the registry; six slots, of which the last takes the sixth and the seventh
/// port. Old strings of a slot are released. Opens no port. Returns 0, or the IOKit code of a registry that failed.
/// ORB_errorID: 22007, 23005 (no port), 23009 (a path beyond 39 characters), 22002, 22003, 28017.
int32_t ORB_SerialgetServices();
}
