#include "usb/interface.h"

#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "record/service_search.h"
#include "record/state.h"
#include "usb/no_interface.h"

#include <limits>

// Never destroyed: at the end of the process the system takes the interface back, whatever is gone already.
IOReference<IOUSBInterfaceInterface245> &gORB_interfaceInterface = *new IOReference<IOUSBInterfaceInterface245>;

namespace usb {

namespace {

constexpr int kOpenRetries = 20;
constexpr uint16_t kVendorWithAlternateSetting = 0x0B75;

bool giveUp(int32_t result, int32_t *status) {
    gORB_interfaceInterface.reset();
    answer().ORB_interfaceOpen = 0;
    *status = result;
    return false;
}

/// A first failure is retried at once, further ones after a second each.
IOReturn openWithRetries(const OpenManner &manner) {
    IOReturn result = gORB_interfaceInterface->USBInterfaceOpen();
    if (result == kIOReturnSuccess && manner.opened) posix::puts(manner.opened);
    if (result == kIOReturnExclusiveAccess && !manner.waitsForOthers) return result;
    for (int left = kOpenRetries; result != kIOReturnSuccess && left > 0 && !platform::stopRequested(); --left) {
        result = gORB_interfaceInterface->USBInterfaceOpen();
        if (result != kIOReturnSuccess) posix::sleep(1);
    }
    return result;
}

} // namespace

IOUSBInterfaceInterface245 &plotterInterface() noexcept {
    static NoInterface none;
    return gORB_interfaceInterface ? *gORB_interfaceInterface.get() : none;
}

bool openInterface(const OpenManner &manner, int32_t *status) {
    ORB_ServiceRecord &record = answer();
    if (record.ORB_interfaceOpen != 0) {
        if (manner.alreadyOpen) posix::puts(manner.alreadyOpen);
    } else {
        gORB_interfaceInterface.reset();
        int32_t found = ORB_USB_getCustomergORB_interfaceInterface();
        if (found != kIOReturnSuccess || !gORB_interfaceInterface || record.ORB_errorID != kORB_NoError) {
            return giveUp(found, status);
        }
        record.ORB_interfaceOpen = 0;
        if (IOReturn result = openWithRetries(manner); result != kIOReturnSuccess) {
            record.ORB_errorID = kORB_ErrorInterfaceNotOpened;
            return giveUp(result, status);
        }
        record.ORB_interfaceOpen = 1;
        record.ORB_errorID = kORB_NoError;
    }
    if (manner.choosesAlternateSetting && record.ORB_USBidVendor == kVendorWithAlternateSetting) {
        plotterInterface().SetAlternateInterface(1);
    }
    *status = kIOReturnSuccess;
    return true;
}

} // namespace usb

extern "C" int32_t ORB_USB_getCustomergORB_interfaceInterface() {
    ORB_ServiceRecord &record = answer();
    int32_t status = kIOReturnSuccess;
    ServiceSearch search;
    if (!search.begin("IOUSBInterface", &status)) return status;
    while (IOObject service = search.next()) {
        record.ORB_errorID = kORB_ErrorInterfaceNotFound;
        gORB_interfaceInterface = queryServiceAs<IOUSBInterfaceInterface245>(
            service, kIOUSBInterfaceUserClientTypeID, kIOUSBInterfaceInterfaceID245, kORB_ErrorInterfaceNotFound, &status);
        if (!gORB_interfaceInterface) continue;
        uint32_t location = 0;
        status = gORB_interfaceInterface->GetLocationID(&location);
        if (status == kIOReturnSuccess && location == record.ORB_USBlocationID) {
            record.ORB_errorID = kORB_NoError;
            break;
        }
        gORB_interfaceInterface.reset();
    }
    return status;
}

extern "C" int32_t ORB_USBloadORB_pipe_inANDout() {
    ORB_ServiceRecord &record = answer();
    if (record.ORB_OutputMethode != kORB_OSX_METHOD_USB) return 0;
    constexpr int32_t kFirst = std::numeric_limits<int32_t>::min();
    constexpr int32_t kLast = std::numeric_limits<int32_t>::max();
    constexpr struct {
        uint16_t vendor;
        int32_t firstPlotter, lastPlotter;
        uint8_t out, in;
    } kPipes[] = {
        {0x0B75, 20595, 20597, 1, 2},     {0x0B75, kFirst, kLast, 2, 2}, {0x427E, kFirst, kLast, 2, 0x81},
        {0x428D, kFirst, kLast, 2, 0x81}, {0x099F, kFirst, kLast, 2, 1}, {0x0C30, kFirst, kLast, 2, 1},
    };
    record.ORB_USB_PIPEOUT = 1;
    record.ORB_USB_PIPEIN = 2;
    for (const auto &row : kPipes) {
        if (row.vendor != record.ORB_USBidVendor) continue;
        if (record.ORB_PlotterID < row.firstPlotter || record.ORB_PlotterID > row.lastPlotter) continue;
        record.ORB_USB_PIPEOUT = row.out;
        record.ORB_USB_PIPEIN = row.in;
        break;
    }
    return 0;
}

extern "C" int32_t ORB_USB_initInterfaceList() {
    answer().ORB_errorID = kORB_NoError;
    answer().ORB_deviceCount = 0;
    answer().ORB_interfaceOpen = 0;
    return 0;
}

extern "C" int32_t ORB_VectorixService12() {
    answer().ORB_lastService = 12;
    return ORB_USB_initInterfaceList();
}
