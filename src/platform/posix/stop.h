// The stop request: how a host ends a call in progress.
#pragma once

namespace platform {

/// Brackets a call of the entry. A request lives from requestStop() to endCall().
void beginCall() noexcept;
void endCall() noexcept;

/// Requests a stop of the call in progress; without one it does nothing. Safe in a signal handler and from any thread: from
/// another thread it interrupts the calling thread's system call with a real-time signal that nobody else uses.
void requestStop() noexcept;

bool stopRequested() noexcept;

/// Readable (poll) from a stop request to the end of the call; -1 when the system had none to give.
int stopDescriptor() noexcept;

} // namespace platform
