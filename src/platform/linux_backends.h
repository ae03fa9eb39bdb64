// The process's own backends, one for each kind of call (the registry's is in iokit/linux/linux_registry.h). They live as
// long as the process. Only backends.cpp asks for them: everybody else uses platform::backends().
#pragma once

#include "platform/backends.h"

namespace platform {

Terminal &linuxTerminal() noexcept;
Clock &linuxClock() noexcept;
Console &processConsole() noexcept;
FileStore &linuxFiles() noexcept;
CreationGate &openGate() noexcept;

} // namespace platform
