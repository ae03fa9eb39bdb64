// The process's own backends, one per seam class. They live as long as the process.
#pragma once

#include "platform/backends.h"

namespace platform {

Terminal &linuxTerminal() noexcept;
Clock &linuxClock() noexcept;
Console &processConsole() noexcept;
FileStore &linuxFiles() noexcept;
CreationGate &openGate() noexcept;

} // namespace platform
