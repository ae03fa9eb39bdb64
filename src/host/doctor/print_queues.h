// The print system's queues, and the devices that they send to: a queue on the plotter's port opens it whenever something is
// printed. The file with their settings can be read by root alone; for all others lpstat is asked.
#pragma once

#include "host/devices/usb_devices.h"

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct PrintQueue {
    std::string name, uri; ///< any bytes
};

struct PrintQueues {
    std::vector<PrintQueue> queues;
    std::string source; ///< where they were read; empty when nowhere
    std::string unseen; ///< why they cannot be seen; empty when they were
};

/// The queues of the print system below a root. Its own file tells root; everybody else asks the print system on this
/// computer, which answers from what it remembers and touches no printer. Waits for it 5 seconds at most.
PrintQueues printQueues(const std::filesystem::path &root);

/// The queues in the text of printers.conf.
std::vector<PrintQueue> parsePrinters(const std::string &text);

/// The queues in the output of 'lpstat -v' in English.
std::vector<PrintQueue> parseLpstat(const std::string &text);

/// True when the queue sends to a port, by its path or another of its names.
bool sendsTo(const PrintQueue &queue, const std::vector<std::string> &paths);

/// True when the queue sends to the device: by serial number when both have one, otherwise by maker and name.
bool sendsTo(const PrintQueue &queue, const UsbDevice &device);

} // namespace host
