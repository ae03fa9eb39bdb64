// The serial ports of the system, as udev and sysfs show them. The plug-in lists ports too, but its record has six slots,
// for names and paths alone; people tell adapters apart by maker and stable name. TerminalFacts stands between udev and the
// choice of what is a port, so that the choice can be tested without devices.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace host {

/// A device above a port, from the nearest outwards.
struct PortParent {
    std::string subsystem, driver;  ///< empty for none
    std::string vendor, product;    ///< four hexadecimal digits each; of a USB device alone
    std::string manufacturer, text; ///< as a USB device says it: any bytes; may be empty
};

/// What udev tells of one terminal device.
struct TerminalFacts {
    std::string name;                ///< "ttyUSB0"
    std::string node;                ///< "/dev/ttyUSB0"
    std::string links;               ///< paths with blanks between them
    std::optional<std::string> type; ///< the sysfs attribute "type", which only ports with a UART have
    std::vector<PortParent> parents;
    std::set<std::string> modemMarks; ///< as in SerialPort
};

struct SerialPort {
    std::string name, path;
    std::string stableName;                ///< below /dev/serial/by-id; empty for none
    std::string bus;                       ///< "usb", "pnp", …
    std::string vendor, product;           ///< of a USB device
    std::string manufacturer, productText; ///< the same: any bytes
    std::string driver;                    ///< empty for none
    std::set<std::string> modemMarks;      ///< "ID_MM_CANDIDATE", …: set in udev's database, for it or a device above it

    /// "0403:6001 FT232R USB UART", or the bus; safe to print.
    std::string hardware() const;
};

/// The port that a terminal device is; none when it is no serial port with hardware.
std::optional<SerialPort> portOf(const TerminalFacts &facts);

/// All ports in natural order. None is opened. Throws Failure when the system does not tell.
std::vector<SerialPort> serialPorts();

/// What the system knows of the port that a path leads to; the path and a name at least. Its path is the one given, its bus
/// empty when it is no serial port with hardware. Neither opens the port nor asks for the others.
SerialPort portAt(const std::string &path);

/// True for a slot of the kernel's behind which no chip was found: there is a node, but no port.
bool isEmptySlot(dev_t terminal, const std::filesystem::path &sysfs = "/sys");

} // namespace host
