// The stop request: how a host ends a call in progress.
//
// A plotter may hold a line for hours, and a write to it then blocks in the system, where no flag is looked at: a stop must
// wake the thread as well. How it does that without a thread of its own, and what it borrows from the host, is in stop.cpp.
#pragma once

namespace platform {

/// Brackets a call of the entry. A request lives from requestStop() to endCall().
void beginCall() noexcept;
void endCall() noexcept;

/// Must be called on the calling thread before a system call that may block. From the first such call to the end of the call
/// of the entry, a stop interrupts that thread's system calls, one after the other, with EINTR. Makes system calls only the
/// first time, or once a stop was requested.
void mayBlock() noexcept;

/// Requests a stop of the call in progress; without one it does nothing. Safe in a signal handler and from any thread.
void requestStop() noexcept;

bool stopRequested() noexcept;

} // namespace platform
