// The chosen plotter's USB device: opened, configured and closed again.
//
// A device has interfaces only in a configuration. It is put into one before each print, and then let go of: transfers go
// over the interface (usb/interface.h), which is opened by itself.
#pragma once

#include <cstdint>

extern "C" {

/// Service 8: service 2, then the preparation of the chosen device. Returns its status.
int32_t ORB_VectorixService8();
/// Opens the device at ORB_USBlocationID (retries while another holds it: up to 60, one second apart), sets each of its
/// configurations in turn (one second each), closes it. ORB_errorID: 22007, 28022 (no such device), 28004 (not opened),
/// 28015, 22002, 22003, 28017.
int32_t ORB_USB_getCustomergORB_deviceInterface();
}
