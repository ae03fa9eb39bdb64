// The print service: makes the link ready, has the job sent, and ends it. The links differ in this: a serial port is opened
// and closed here; over USB the device is prepared here, and the sender opens and closes its interface.
#pragma once

#include <cstdint>

extern "C" {

/// Prints the job of ORB_JobFileRef and ORB_PlotFileInRef: opens the link, sends, closes. 0 when the close went well; the
/// job report tells what was sent.
int32_t ORB_VectorixService17();
}
