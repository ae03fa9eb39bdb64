// The USB devices and interfaces of the system, as libusb knows them: plain data that owns what it needs of libusb, so that
// it may be kept for as long as its plug-in objects are. Nothing is opened to list them.
#pragma once

#include "platform/iokit/io_return.h"

#include <cstdint>
#include <libusb-1.0/libusb.h>
#include <memory>
#include <string>
#include <vector>

namespace platform {

/// Lives until the last device or object made from it is gone. libusb keeps a thread of its own as long as there is one, so
/// none is kept between uses.
using UsbContext = std::shared_ptr<libusb_context>;

struct UsbDevice {
    UsbContext context;
    std::shared_ptr<libusb_device> device; // declared behind its context: it must be released first
    libusb_device_descriptor descriptor;
    uint32_t locationID;
};

struct UsbEndpoint {
    uint8_t address, transferType;
    uint16_t maxPacketSize;
    uint8_t interval;

    bool isIn() const noexcept { return (address & LIBUSB_ENDPOINT_IN) != 0; }
    uint8_t number() const noexcept { return address & LIBUSB_ENDPOINT_ADDRESS_MASK; }
    bool isBulkOrInterrupt() const noexcept {
        return transferType == LIBUSB_TRANSFER_TYPE_BULK || transferType == LIBUSB_TRANSFER_TYPE_INTERRUPT;
    }
};

struct UsbAlternateSetting {
    uint8_t number;
    std::vector<UsbEndpoint> endpoints; // in the order of their descriptors
};

/// An interface of a device's active configuration.
struct UsbInterface {
    UsbDevice device;
    uint8_t configuration, number;
    bool isPrinter;                            // by its class, in its first setting
    std::vector<UsbAlternateSetting> settings; // at least one
};

struct UsbHandleCloser {
    void operator()(libusb_device_handle *handle) const noexcept { libusb_close(handle); }
};
using UsbHandle = std::unique_ptr<libusb_device_handle, UsbHandleCloser>;

// All of these throw std::bad_alloc.

/// Empty when libusb cannot start.
UsbContext makeUsbContext();

/// The devices in order of location ID. None is opened.
IOReturn listUsbDevices(const UsbContext &context, std::vector<UsbDevice> *devices);

/// The interfaces of the device's active configuration; none when it has no such configuration.
std::vector<UsbInterface> interfacesOf(const UsbDevice &device);

/// True when the kernel's printer driver is there to be bound to interfaces: neither left out nor unloaded.
bool hasPrinterDriver() noexcept;

/// The name of the kernel's driver on an interface; empty when there is none.
std::string kernelDriverOf(const UsbInterface &interface);

IOReturn openUsbDevice(const UsbDevice &device, UsbHandle *handle) noexcept;

} // namespace platform
