// Who has a port or a USB device open. "Busy" alone helps nobody, so messages name the program and its process. They are
// found in /proc, which shows other users' descriptors to root alone, and in the lock files by which older terminal programs
// claim a port.
#pragma once

#include "host/devices/usb_devices.h"

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace host {

struct Holder {
    pid_t pid = 0;
    std::string name;      ///< the program's; empty when the system does not tell
    bool isFarEnd = false; ///< of a pseudo-terminal: it plays the plotter, and is no rival when it has the near end open too
};

/// The processes other than this one that have the device open, as far as the system shows them to this user. device: what
/// stat() says of its node.
std::vector<Holder> holdersOf(const struct stat &device);

/// The processes other than this one that have the device's node or its printer's node (/dev/usb/lp0) open.
std::vector<Holder> holdersOf(const UsbDevice &device);

/// Those of them that have its printer's node open: they print through the kernel's driver.
std::vector<Holder> holdersOfPrinterNode(const UsbDevice &device);

/// "driver usblp, cu (process 1234)"; empty when nobody has it.
std::string usersText(const UsbDevice &device);

/// The process that a lock file (/var/lock/LCK..ttyUSB0) names for the port; pid 0 when there is none that still runs.
Holder uucpHolder(const std::string &port);

/// "cu (process 1234)".
std::string holderText(const Holder &holder);

} // namespace host
