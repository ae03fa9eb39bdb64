// The checks of each kind of link: the obstacles that a print meets, too, and advice beyond them. They only read what
// kernel, udev and print system publish: to open a port would raise DTR, which a plotter may take for a start, so nothing is
// opened, claimed or set.
#pragma once

#include "host/devices/serial_ports.h"
#include "host/devices/usb_devices.h"
#include "host/doctor/print_queues.h"
#include "host/obstacles/link_report.h"
#include "host/obstacles/system.h"

namespace host {

/// What the doctor knows of the computer beyond what a print asks for. The print system may take seconds to answer.
struct Computer : System {
    using System::System;
    Fact<PrintQueues> queues{root, printQueues};
};

/// Checks a serial port: one that the system lists, or a path that was typed. The bus of one that is not listed is empty.
LinkReport checkPort(const Computer &system, const SerialPort &port);

/// Checks a USB plotter, or a device that the user takes for one.
LinkReport checkPlotter(const Computer &system, const UsbDevice &device);

/// True for a USB serial adapter for which the kernel has made no serial port.
bool isAdapterWithoutPort(const UsbDevice &device);

/// Tells why isAdapterWithoutPort() is true of the device.
LinkReport checkAdapter(const Computer &system, const UsbDevice &device);

/// Adds programs that take an adapter's port, or send to it, of their own accord: brltty and ModemManager.
void checkAdapterPrograms(const Computer &system, const SerialPort &port, LinkReport &report);

/// What concerns all links: what this user could not look at, and whether this is a container. Without findings when there
/// is no such thing.
LinkReport checkComputer(const Computer &system);

} // namespace host
