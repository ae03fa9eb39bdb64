#include "usb/plotter_table.h"

#include "platform/corefoundation/corefoundation.h"
#include "record/service_search.h"
#include "record/state.h"

namespace {

constexpr int32_t kTableSize = 6;

/// Entry 1 .. 6.
ORB_USBplotterEntry &entry(int32_t number) { return answer().ORB_USBplotterTable[number - 1]; }

bool isEmpty(int32_t number) { return entry(number).idVendor == 0; }

bool hasProperty(const IOObject &device, const char *key) {
    return bool(CFRef(IORegistryEntryCreateCFProperty(device.get(), key)));
}

/// Records the device if it is a plotter of the model asked for. False when the scan ends here.
bool examine(const IOObject &device, int32_t *status) {
    ORB_ServiceRecord &record = answer();
    auto interface = queryServiceAs<IOUSBDeviceInterface>(device, kIOUSBDeviceUserClientTypeID, kIOUSBDeviceInterfaceID,
                                                          kORB_ErrorPlugIn, status);
    if (!interface) return true;
    if (!hasProperty(device, "idVendor") || !hasProperty(device, "idProduct")) return false;
    uint16_t vendor = 0;
    uint16_t product = 0;
    if (*status = interface->GetDeviceVendor(&vendor); *status != kIOReturnSuccess) return true;
    if (*status = interface->GetDeviceProduct(&product); *status != kIOReturnSuccess) return true;
    if (vendor != record.ORB_USBidVendor || product != record.ORB_USBidProduct) return true;
    uint8_t configurations = 0;
    uint32_t location = 0;
    if (*status = interface->GetNumberOfConfigurations(&configurations); *status != kIOReturnSuccess) return true;
    if (*status = interface->GetLocationID(&location); *status != kIOReturnSuccess) return true;

    ORB_USBplotterEntry &found = entry(++record.ORB_deviceCount);
    found.idVendor = vendor;
    found.idProduct = product;
    found.locationID = location;
    found.numConfigurations = configurations;
    if (record.ORB_deviceCount == 1) record.ORB_errorID = kORB_NoError;
    *status = kIOReturnSuccess;
    return true;
}

} // namespace

extern "C" int32_t ORB_VectorixService2() {
    answer().ORB_lastService = 2;
    return ORB_USB_initPlotterList();
}

extern "C" int32_t ORB_USB_initPlotterList() {
    answer().ORB_errorID = kORB_NoError;
    int32_t status = ORB_USB_getPlotterList();
    if (status != kIOReturnSuccess || answer().ORB_errorID != kORB_NoError) {
        entry(1).idVendor = 0;
        return status;
    }
    ORB_loadUSBDEVICE_0_values();
    return status;
}

extern "C" int32_t ORB_USB_getPlotterList() {
    ORB_ServiceRecord &record = answer();
    record.ORB_errorID = kORB_ErrorNoPlotter;
    record.ORB_deviceCount = 0;
    int32_t status = kIOReturnSuccess;
    ServiceSearch search;
    if (!search.begin("IOUSBDevice", &status)) return status;
    while (record.ORB_deviceCount < kTableSize) {
        IOObject device = search.next();
        if (!device || !examine(device, &status)) break;
    }
    return status;
}

extern "C" void ORB_loadUSBDEVICE_0_values() {
    ORB_ServiceRecord &record = answer();
    if (isEmpty(1)) {
        record.ORB_errorID = kORB_ErrorTableEmpty;
        return;
    }
    record.ORB_errorID = kORB_NoError;
    int32_t index = record.ORB_USBplotterIndex;
    if (index >= 2 && isEmpty(index < kTableSize ? index : kTableSize)) index = record.ORB_USBplotterIndex = 1;
    const ORB_USBplotterEntry &chosen = entry(index >= 2 && index <= kTableSize ? index : 1);
    if (chosen.idVendor == 0) return;
    record.ORB_USBidVendor = chosen.idVendor;
    record.ORB_USBidProduct = chosen.idProduct;
    record.ORB_USBnumConfigurations = chosen.numConfigurations;
    record.ORB_USBlocationID = chosen.locationID;
}
