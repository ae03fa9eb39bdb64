// The USB plotter that a print is for: from what was typed to the plug-in's record.
#pragma once

#include "host/devices/usb_devices.h"

#include <orb/vectorix.h>
#include <string_view>

namespace host {

/// What was typed behind --usb; what is none is any.
struct UsbChoice {
    std::optional<uint16_t> vendor, product;
    std::optional<uint32_t> location;
};

/// A hexadecimal number of at most that many digits, 0x before it or not. None when the text is no such number.
std::optional<uint32_t> parseHex(std::string_view text, size_t digits);

/// "", "V:P" or "V:P@LOCATION". Throws Failure (usage).
UsbChoice parseUsbChoice(std::string_view text);

/// The devices that may be meant: of all when the choice names a model, otherwise of those that may be plotters.
std::vector<UsbDevice> matchingUsbDevices(const std::vector<UsbDevice> &devices, const UsbChoice &choice);

/// The one device that is meant. Throws Failure when there is none, or more than one.
UsbDevice chooseUsbDevice(const std::vector<UsbDevice> &devices, const UsbChoice &choice);

/// Asks the plug-in for the plotters of a model (service 2); the record as it came back. Throws Failure, also when there is
/// none.
ORB_ServiceRecord listPlotters(uint16_t vendor, uint16_t product);

/// A record in which the plug-in's plotter table is filled and the device's entry is chosen. Throws Failure when it is not
/// in the table.
ORB_ServiceRecord recordFor(const UsbDevice &device);

} // namespace host
