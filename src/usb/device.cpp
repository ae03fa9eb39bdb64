#include "usb/device.h"

#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "record/service_search.h"
#include "record/state.h"
#include "usb/plotter_table.h"

namespace {

constexpr int kOpenRetries = 60;

/// Opens the device; the first failure is retried at once.
IOReturn openDevice(IOUSBDeviceInterface245 &device) {
    IOReturn result = device.USBDeviceOpen();
    for (int retry = 0; result != kIOReturnSuccess && retry < kOpenRetries && !platform::stopRequested(); ++retry) {
        result = device.USBDeviceOpen();
        if (result == kIOReturnSuccess) break;
        posix::sleep(1);
        if (result != kIOReturnExclusiveAccess) break;
        posix::puts("=>reported exclusiveopen : sleep 1 sec");
    }
    return result;
}

/// Sets all configurations in turn; the device stays in the last one that could be set.
void configure(IOUSBDeviceInterface245 &device) {
    uint8_t count = 0;
    if (device.GetNumberOfConfigurations(&count) != kIOReturnSuccess) return;
    for (uint8_t i = 0; i < count; ++i) {
        IOUSBConfigurationDescriptorPtr descriptor = nullptr;
        if (device.GetConfigurationDescriptorPtr(i, &descriptor) != kIOReturnSuccess || !descriptor) continue;
        IOReturn result = device.SetConfiguration(descriptor->bConfigurationValue);
        posix::sleep(1);
        if (result == kIOReturnSuccess) device.GetConfigurationDescriptorPtr(i, &descriptor);
    }
}

} // namespace

extern "C" int32_t ORB_VectorixService8() {
    ORB_ServiceRecord &record = answer();
    record.ORB_lastService = 2;
    if (int32_t status = ORB_VectorixService2(); status != kIOReturnSuccess) {
        record.ORB_interfaceOpen = 0;
        record.ORB_deviceCount = 0;
        return status;
    }
    int32_t status = ORB_USB_getCustomergORB_deviceInterface();
    if (status != kIOReturnSuccess || record.ORB_errorID != kORB_NoError) {
        posix::printf("[ORB_VectorixService8] ORB_USB_getCustomergORB_deviceInterface returns an error %d\n", status);
        posix::printf("[ORB_VectorixService8] & ORB_error ID %d\n", record.ORB_errorID);
    }
    return status;
}

extern "C" int32_t ORB_USB_getCustomergORB_deviceInterface() {
    ORB_ServiceRecord &record = answer();
    record.ORB_errorID = kORB_ErrorNoPlotter;
    record.ORB_deviceCount = 0;
    int32_t status = kIOReturnSuccess;
    ServiceSearch search;
    if (!search.begin("IOUSBDevice", &status)) return status;
    while (IOObject service = search.next()) {
        auto device = queryServiceAs<IOUSBDeviceInterface245>(service, kIOUSBDeviceUserClientTypeID,
                                                              kIOUSBDeviceInterfaceID245, kORB_ErrorPlugIn, &status);
        if (!device) continue;
        uint32_t location = 0;
        if (status = device->GetLocationID(&location); status != kIOReturnSuccess) continue;
        if (location != record.ORB_USBlocationID) continue;

        record.ORB_errorID = kORB_ErrorDeviceNotOpened;
        record.ORB_USBdeviceOpen = 0;
        if (status = openDevice(*device.get()); status != kIOReturnSuccess) continue;
        record.ORB_USBdeviceOpen = 1;
        record.ORB_errorID = kORB_NoError;
        configure(*device.get());
        device->USBDeviceClose();
        record.ORB_USBdeviceOpen = 0;
        record.ORB_errorID = kORB_NoError;
        return kIOReturnSuccess;
    }
    return status;
}
