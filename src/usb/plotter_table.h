// The table of USB plotters in the record: the scan that fills it, and the choice of one entry.
//
// A plotter is a device of the vendor and product that the host asks for; no models are listed here. The choice copies an
// entry into the fields that all else over USB goes by, above all the location.
#pragma once

#include <cstdint>

extern "C" {

/// Service 2: scan and choice. Returns the scan's status.
int32_t ORB_VectorixService2();
/// The scan, then the choice when it went well; otherwise entry 1 is emptied.
int32_t ORB_USB_initPlotterList();
/// Records up to six devices of ORB_USBidVendor and ORB_USBidProduct in the order of the registry. The table is never
/// cleared. Returns the result of the last IOKit step on the last device examined. ORB_errorID: 22007 when a plotter was
/// recorded, 28022, 22002, 22003, 28017, or 28015 (some device's plug-in could not be made).
int32_t ORB_USB_getPlotterList();
/// Copies the entry that ORB_USBplotterIndex names into the chosen plotter's four fields. ORB_errorID: 22007, or 22005.
void ORB_loadUSBDEVICE_0_values();
}
