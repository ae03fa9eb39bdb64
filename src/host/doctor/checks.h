// The checks of each kind of link; every one adds its findings to a report. They only read what kernel, udev and print
// system publish: to open a port would raise DTR, which a plotter may take for a start, so nothing is opened, claimed or
// set.
#pragma once

#include "host/devices/serial_ports.h"
#include "host/devices/usb_devices.h"
#include "host/doctor/link_report.h"
#include "host/doctor/system.h"

namespace host {

/// Checks a serial port: one that the system lists, or a path that was typed. The bus of one that is not listed is empty.
LinkReport checkPort(const System &system, const SerialPort &port);

/// Checks a USB plotter, or a device that the user takes for one.
LinkReport checkPlotter(const System &system, const UsbDevice &device);

/// True for a USB serial adapter for which the kernel has made no serial port.
bool isAdapterWithoutPort(const UsbDevice &device);

/// Tells why isAdapterWithoutPort() is true of the device.
LinkReport checkAdapter(const System &system, const UsbDevice &device);

/// Adds programs that take an adapter's port, or send to it, of their own accord: brltty and ModemManager.
void checkAdapterPrograms(const System &system, const SerialPort &port, LinkReport &report);

/// Adds who holds a port: consoles, logins, locks, programs that have it open. node: the status of the port's node.
void checkHolders(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report);

/// What concerns all links: what this user could not look at, and whether this is a container. Without findings when there
/// is no such thing.
LinkReport checkComputer(const System &system);

} // namespace host
