// The print service.
#pragma once

#include <cstdint>

extern "C" {

/// Prints the job of ORB_JobFileRef and ORB_PlotFileInRef: opens the link, sends, closes. 0 when the close went well; the
/// job report tells what was sent.
int32_t ORB_VectorixService17();
}
