// Looks at one link. Nothing is opened, claimed or set: the line stays as it is.
#pragma once

#include "host/devices/serial_ports.h"
#include "host/devices/usb_devices.h"
#include "host/doctor/link_report.h"
#include "host/doctor/system.h"

namespace host {

/// A serial port: one of the system's, or a path that was typed (whose bus is empty when the system does not list it).
LinkReport checkPort(const System &system, const SerialPort &port);

/// A USB plotter, or a device that is to be one.
LinkReport checkPlotter(const System &system, const UsbDevice &device);

/// True for a USB serial adapter of which the system has made no port.
bool isAdapterWithoutPort(const UsbDevice &device);

/// Such an adapter.
LinkReport checkAdapter(const System &system, const UsbDevice &device);

/// What keeps an adapter's port from being only the plotter's: brltty and the modem manager.
void checkAdapterPrograms(const System &system, const SerialPort &port, LinkReport &report);

/// Who holds a port: consoles, logins, locks, programs that have it open. The node is the port's.
void checkHolders(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report);

/// What could not be seen of any link, and what else concerns all; without findings when there is nothing.
LinkReport checkComputer(const System &system);

} // namespace host
