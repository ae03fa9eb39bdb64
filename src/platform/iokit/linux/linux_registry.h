// The registry of this system: serial ports by udev, USB by libusb. It looks anew at each search and keeps no list in
// between, so that what was plugged in or out since is seen.
#pragma once

#include "platform/iokit/registry.h"

namespace platform {

/// Without udev there is no port; where only libusb cannot start, the matching of USB services fails and serial ports are
/// still found (kIOReturnNoResources both). Lives as long as the process. What comes from it is used by one thread at a
/// time.
IORegistry &linuxRegistry() noexcept;

/// Ports, iterators, services, plug-ins, device and interface objects that were handed out and not yet released.
unsigned liveRegistryObjects() noexcept;

} // namespace platform
