// Transfers and status requests on an open device. Transfers are libusb's asynchronous ones, waited for here, because its
// blocking calls cannot be ended by a stop.
#pragma once

#include "platform/iokit/linux/usb_bus.h"

namespace platform {

/// One bulk or interrupt transfer of size bytes to or from the endpoint; blocks until it is done, until the limit (in
/// milliseconds; 0 = none: kIOReturnNotResponding), or until a stop: kIOReturnAborted. *moved is how many bytes went, also
/// on failure.
IOReturn transfer(const UsbDevice &device, libusb_device_handle *handle, const UsbEndpoint &endpoint, void *bytes, int size,
                  unsigned limit, int *moved) noexcept;

/// kIOReturnSuccess, or kIOUSBPipeStalled when the device has halted the endpoint. kIOReturnUnsupported when it does not
/// answer the question. Blocks for a second at most.
IOReturn statusOf(libusb_device_handle *handle, const UsbEndpoint &endpoint) noexcept;

/// The code of a libusb call on an open device, with a second look at what may be a device that is gone. Blocks for a second
/// at most.
IOReturn codeOnDevice(libusb_device_handle *handle, int result) noexcept;

} // namespace platform
