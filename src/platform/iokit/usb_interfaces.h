// The USB device and interface objects that IOKit's plug-ins hand out, as abstract classes under IOKit's method names.
//
// The plug-in talks to USB in these terms: pipe references, alternate settings, IOReturn codes. What fulfils them is libusb
// (iokit/linux/) or, in tests, data.
#pragma once

#include "platform/iokit/io_return.h"

#include <array>
#include <cstdint>

/// A UUID by its bytes, as CFUUIDGetUUIDBytes gives them.
using UUIDBytes = std::array<uint8_t, 16>;

// Published constants, by value.
inline constexpr UUIDBytes kIOUSBDeviceUserClientTypeID = {0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4,
                                                           0xA5, 0x4F, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
inline constexpr UUIDBytes kIOUSBInterfaceUserClientTypeID = {0x2D, 0x97, 0x86, 0xC6, 0x9E, 0xF3, 0x11, 0xD4,
                                                              0xAD, 0x51, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
inline constexpr UUIDBytes kIOCFPlugInInterfaceID = {0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4,
                                                     0x91, 0xD4, 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F};
inline constexpr UUIDBytes kIOUSBDeviceInterfaceID = {0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4,
                                                      0x8B, 0x45, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
inline constexpr UUIDBytes kIOUSBDeviceInterfaceID245 = {0xFE, 0x2F, 0xD5, 0x2F, 0x3B, 0x5A, 0x47, 0x3B,
                                                         0x97, 0x7B, 0xAD, 0x99, 0x00, 0x1E, 0xB3, 0xED};
inline constexpr UUIDBytes kIOUSBInterfaceInterfaceID245 = {0x64, 0xBA, 0xBD, 0xD2, 0x0F, 0x6B, 0x4B, 0x4F,
                                                            0x8E, 0x3E, 0xDC, 0x36, 0x04, 0x69, 0x87, 0xAD};

/// The head of a standard USB configuration descriptor (USB 2.0, table 9-10).
struct IOUSBConfigurationDescriptor {
    uint8_t bLength, bDescriptorType;
    uint8_t wTotalLength[2];
    uint8_t bNumInterfaces, bConfigurationValue, iConfiguration, bmAttributes, MaxPower;
};
using IOUSBConfigurationDescriptorPtr = const IOUSBConfigurationDescriptor *;

/// What all objects of a plug-in have. Release ends the caller's use of the object.
class IOUnknown {
public:
    virtual uint32_t Release() = 0;

protected:
    virtual ~IOUnknown() = default;
};

/// What the scan asks of a device. None of these blocks or needs the device to be open.
class IOUSBDeviceInterface : public IOUnknown {
public:
    virtual IOReturn GetDeviceVendor(uint16_t *vendor) = 0;
    virtual IOReturn GetDeviceProduct(uint16_t *product) = 0;
    virtual IOReturn GetNumberOfConfigurations(uint8_t *count) = 0;
    virtual IOReturn GetLocationID(uint32_t *locationID) = 0;
};

class IOUSBDeviceInterface245 : public IOUSBDeviceInterface {
public:
    /// kIOReturnExclusiveAccess when somebody else holds the device, kIOReturnNotPermitted without the right to it.
    virtual IOReturn USBDeviceOpen() = 0;
    virtual IOReturn USBDeviceClose() = 0;
    /// The descriptor belongs to the object and lives as long as it.
    virtual IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) = 0;
    virtual IOReturn SetConfiguration(uint8_t value) = 0;
};

/// An interface of a device's active configuration. Pipe references count from 1, in the order of the endpoints of the
/// current alternate setting; one that is none gives kIOUSBUnknownPipeErr. Before USBInterfaceOpen pipe calls give
/// kIOReturnNotOpen.
class IOUSBInterfaceInterface245 : public IOUnknown {
public:
    virtual IOReturn USBInterfaceOpen() = 0;
    virtual IOReturn USBInterfaceClose() = 0;
    virtual IOReturn GetLocationID(uint32_t *locationID) = 0;
    virtual IOReturn SetAlternateInterface(uint8_t alternateSetting) = 0;
    virtual IOReturn GetNumEndpoints(uint8_t *count) = 0;
    /// direction: 0 out, 1 in, 2 none, 3 any. transferType: 0 control, 1 isochronous, 2 bulk, 3 interrupt, 255 any.
    virtual IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                                       uint16_t *maxPacketSize, uint8_t *interval) = 0;
    /// kIOReturnSuccess, kIOUSBPipeStalled, kIOReturnNoDevice, kIOReturnNotOpen.
    virtual IOReturn GetPipeStatus(uint8_t pipe) = 0;
    virtual IOReturn ClearPipeStallBothEnds(uint8_t pipe) = 0;
    /// One transfer of the whole text; blocks for as long as the plotter takes, until a stop (kIOReturnAborted). *taken,
    /// when given, is how many bytes the device took, also on failure.
    virtual IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken = nullptr) = 0;
    /// One transfer into buffer; *size is its room before and the bytes read after. Waits at most 1 second for the first
    /// byte: kIOReturnNotResponding.
    virtual IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) = 0;
};

/// What IOCreatePlugInInterfaceForService makes. QueryInterface stores a new reference to an IOUSBDeviceInterface,
/// IOUSBDeviceInterface245 or IOUSBInterfaceInterface245; 0 for success.
class IOCFPlugInInterface {
public:
    virtual ~IOCFPlugInInterface() = default;
    virtual int32_t QueryInterface(const UUIDBytes &interfaceID, IOUnknown **interface) = 0;
};
