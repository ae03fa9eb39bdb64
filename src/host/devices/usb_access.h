// Whether a USB device is free to be printed to. Looked at before the plug-in is called, which could only give a code: here
// the message says who has the device, or which rule or group would give the right to it.
#pragma once

#include "host/devices/holders.h"
#include "host/devices/node_access.h"
#include "host/devices/usb_devices.h"

namespace host {

/// The processes other than this one that have the device's node or its printer's node (/dev/usb/lp0) open, as far as the
/// system shows them to this user.
std::vector<Holder> holdersOf(const UsbDevice &device);

/// Those of them that have its printer's node open: they print through the kernel's driver.
std::vector<Holder> holdersOfPrinterNode(const UsbDevice &device);

/// "driver usblp, cu (process 1234)"; empty when nobody has it.
std::string usersText(const UsbDevice &device);

/// How to get the right to a USB device, worded to follow a semicolon.
std::string permissionRemedy(const UsbDevice &device);

/// Throws Failure when this user may not print to the device, or when somebody else does: a program that has claimed it or
/// has its printer's node open, or a driver that the plug-in does not put aside.
void requireFree(const UsbDevice &device);

/// Lines for standard error on the driver and the programs that have the device as well but do not stand in the way; empty
/// for none.
std::string notesOf(const UsbDevice &device);

} // namespace host
