// Whether a USB device is free to be printed to: its node's permission, and who has it.
#pragma once

#include "host/devices/holders.h"
#include "host/devices/node_access.h"
#include "host/devices/usb_devices.h"

namespace host {

/// The processes, this one left out, that have the device's node or its printer's node open. Those that the system hides
/// from this user are missing.
std::vector<Holder> holdersOf(const UsbDevice &device);

/// Those of them that have its printer's node open: they print.
std::vector<Holder> holdersOfPrinterNode(const UsbDevice &device);

/// "driver usblp, cu (process 1234)"; empty when nobody has it.
std::string describeHolders(const UsbDevice &device);

/// How to get the right to a USB device, to stand behind a semicolon.
std::string permissionRemedy(const UsbDevice &device);

/// Throws Failure when this user may not print to the device, or when somebody else does: a program that has claimed it or
/// has its printer's node open, or a driver that the plug-in does not put aside.
void requireFree(const UsbDevice &device);

/// Lines on who else has the device open or bound, and does not stand in the way; empty for none.
std::string notesOf(const UsbDevice &device);

} // namespace host
