// From what was typed behind --usb to a record that names one plotter. The plug-in takes a model and an index into the table
// that it made; indexes change with what is plugged in, so people name the place instead, or nothing when there is but one
// plotter. Where more than one fits it is never guessed: a plot on the wrong plotter spoils its material.
#pragma once

#include "host/devices/usb_devices.h"

#include <orb/vectorix.h>
#include <string_view>

namespace host {

/// What was typed behind --usb. What is not given may be any; vendor and product are given together, a location only with
/// them.
struct UsbChoice {
    std::optional<uint16_t> vendor, product;
    std::optional<uint32_t> location;
};

/// The value of a hexadecimal number of at most so many digits, with 0x before it or without. None for any other text.
std::optional<uint32_t> parseHex(std::string_view text, size_t digits);

/// "", "V:P" or "V:P@LOCATION". Throws Failure (usage).
UsbChoice parseUsbChoice(std::string_view text);

/// The devices that fit the choice; when it names no model, those that may be plotters.
std::vector<UsbDevice> matchingUsbDevices(const std::vector<UsbDevice> &devices, const UsbChoice &choice);

/// The one device that fits. Throws Failure when there is none, or (usage, with a list) more than one.
UsbDevice chooseUsbDevice(const std::vector<UsbDevice> &devices, const UsbChoice &choice);

/// Asks the plug-in for the plotters of a model (service 2). The record as it came back, without strings: they are given
/// back. Throws Failure, also when there is no plotter.
ORB_ServiceRecord listPlotters(uint16_t vendor, uint16_t product);

/// A record for output over USB, with the plug-in's plotter table and the device's index in it. Throws Failure when the
/// device is not in the table.
ORB_ServiceRecord recordFor(const UsbDevice &device);

} // namespace host
