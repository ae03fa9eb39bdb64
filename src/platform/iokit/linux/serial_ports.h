// The serial ports of the system, as udev knows them. The nodes in /dev would not do: a board has nodes for more ports than
// it has hardware for.
#pragma once

#include "platform/iokit/io_return.h"

#include <libudev.h>
#include <string>
#include <vector>

namespace platform {

struct SerialPort {
    std::string name, path; ///< ttyUSB0, /dev/ttyUSB0
};

/// Ports with hardware behind them, in natural order (ttyUSB2 before ttyUSB10). Reads sysfs and opens no port. Throws
/// std::bad_alloc.
IOReturn listSerialPorts(udev *context, std::vector<SerialPort> *ports);

} // namespace platform
