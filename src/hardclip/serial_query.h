// The hard-clip query over a serial line.
//
// The query alone opens the link as well, for hosts may call it by itself, and then also over USB. So service 7 opens the
// port twice; the first descriptor is closed when the call of the entry ends (serial/open_ports.h).
#pragma once

#include <cstdint>

extern "C" {

/// Service 7: opens the port, asks, waits for the reply (about 14 seconds when none comes), closes the port. The values are
/// in ORB_HARDC_1 .. 4; what was said and heard, and the identifier before the close set it, is in the query report.
int32_t ORB_VectorixService7();
/// The query alone. ORB_errorID: 22007, 25002, 27005, 29002.
int32_t ORB_SerialreadHardClip();
}
