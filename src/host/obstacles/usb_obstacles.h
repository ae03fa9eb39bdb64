// What stands in the way to a USB device. Looked at before the plug-in is called, which could only give a code: here is said
// who has the device, or which rule or group would give the right to it.
#pragma once

#include "host/devices/usb_devices.h"
#include "host/obstacles/link_report.h"
#include "host/obstacles/system.h"

namespace host {

/// Adds what stands in the way, and notes on who has the device as well.
void addUsbObstacles(const System &system, const UsbDevice &device, LinkReport &report);

/// Adds who has claimed the device, if anybody has. holders: who has it open.
void addClaims(const UsbDevice &device, const std::vector<Holder> &holders, LinkReport &report);

/// The udev rules' view of the device.
RuleDevice ruleDevice(const UsbDevice &device);

/// "permission denied; " and how to get the right to the device.
std::string permissionRefusal(const UsbDevice &device);

/// Throws Failure when this user may not print to the device, or when somebody else does: a program that has claimed it or
/// has its printer's node open, or a driver that the plug-in does not put aside.
void requireFree(const UsbDevice &device);

/// Lines for standard error on the driver and the programs that have the device as well but do not stand in the way; empty
/// for none.
std::string notesOf(const UsbDevice &device);

} // namespace host
