// The stop request: how a host ends a call in progress.
#pragma once

namespace platform {

/// Brackets a call of the entry. A request lives from requestStop() to endCall().
void beginCall() noexcept;
void endCall() noexcept;

/// To be said on the calling thread ahead of a system call that may block: from the first time to the end of the call, a
/// stop interrupts what this thread waits for, again and again. Costs system calls the first time only.
void mayBlock() noexcept;

/// Requests a stop of the call in progress; without one it does nothing. Safe in a signal handler and from any thread.
void requestStop() noexcept;

bool stopRequested() noexcept;

} // namespace platform
