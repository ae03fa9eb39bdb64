// The objects of devices and interfaces that plug-ins hand out. Made by functions, so that the classes, and what they need
// of libusb, stay in their own files.
#pragma once

#include "platform/iokit/linux/usb_bus.h"
#include "platform/iokit/usb_interfaces.h"

namespace platform {

/// The caller releases what it gets. Both throw std::bad_alloc.
IOUSBDeviceInterface245 *makeUsbDeviceObject(const UsbDevice &device);
IOUSBInterfaceInterface245 *makeUsbInterfaceObject(const UsbInterface &interface);

} // namespace platform
