// The serial descriptors that the plug-in has opened. The open sequence forgets a port that is still open; at the end of a
// call that opened a port, what was forgotten on the same device is closed, so that nothing leaks and the port is not held.
#pragma once

#include <cstdint>

namespace serial {

/// Opens gORB_bsdPath and notes the descriptor. -1 with errno on failure; a descriptor that the 16 bits of ORB_portFD cannot
/// hold, or that cannot be noted, is closed, and the open has failed with EMFILE or ENOMEM.
int openPort(int flags) noexcept;
/// Closes what openPort gave, or what the record holds. After a stop the queued output is discarded first: the system would
/// wait for it, for as long as the plotter holds the line. Not on a pseudo-terminal, which waits for nothing, and whose far
/// end has the bytes already. Returns how many were thrown away, INT64_MAX when that cannot be known.
int64_t closePort(int fd) noexcept;

/// Called at the start and at the end of a call of the entry. The end closes, when a port was opened in this call, the
/// plug-in's other descriptors on the same device, but never descriptor 0 and never keptFD, which the returned record holds.
void beginCall() noexcept;
void endCall(int keptFD) noexcept;

} // namespace serial
