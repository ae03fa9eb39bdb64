// The serial descriptors that the plug-in has opened.
//
// Opening a port overwrites ORB_portFD, whatever it held. So all descriptors are noted here, and at the end of a call that
// opened a device its other descriptors are closed: else they would leak, and hold the port against other programs.
#pragma once

#include <cstdint>

namespace serial {

/// Opens gORB_bsdPath and notes the descriptor. -1 with errno on failure. A descriptor beyond the 16 bits of ORB_portFD, or
/// one that there is no memory to note, is closed again: EMFILE, ENOMEM.
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
