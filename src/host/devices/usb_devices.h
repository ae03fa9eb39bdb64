// The USB devices of the system, as sysfs shows them. The plug-in finds only plotters whose vendor and product it is given;
// the command has to find out first what is connected, and may tell names, drivers and holders besides. Location IDs are
// computed as the plug-in computes them, so that both mean the same device.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace host {

/// The kernel's driver for printers, which the plug-in puts aside for a job.
inline constexpr char kPrinterDriver[] = "usblp";

struct UsbDevice {
    uint16_t vendor = 0, product = 0;
    uint32_t location = 0;            ///< the plug-in's location ID
    std::string manufacturer, name;   ///< as the device says it: any bytes; may be empty
    std::string serialNumber;         ///< the same
    std::string node;                 ///< "/dev/bus/usb/001/004"
    std::filesystem::path folder;     ///< in sysfs
    std::string driver;               ///< of the first interface; usbfs for a program; empty for none
    std::optional<dev_t> printerNode; ///< of the kernel's printer driver on the first interface
    std::string interface;            ///< the first one, by its name in sysfs: "1-2.3:1.0"
    bool isPrinter = false;           ///< that interface is of the printer class
    bool isPlotter = false;           ///< may be one: a bulk out endpoint, and a printer interface or a known vendor

    /// True when a program has claimed the first interface.
    bool isClaimed() const { return driver == "usbfs"; }
    /// "0b75:0402@01080000", which --usb understands.
    std::string id() const;
    /// Manufacturer and name, safe to print.
    std::string title() const;
};

/// True for the vendors to whose devices the plug-in gives pipes or questions of their own.
bool isPlotterVendor(uint16_t vendor);

/// The location ID of a device by its name in sysfs: "usb1" is a bus, "1-2.3" port 3 of the hub at port 2 of bus 1. None
/// for another name.
std::optional<uint32_t> usbLocation(std::string_view name);

/// All devices in order of location, hubs among them. sysfs and dev are the roots to look below.
std::vector<UsbDevice> usbDevices(const std::filesystem::path &sysfs = "/sys", const std::filesystem::path &dev = "/dev");

} // namespace host
