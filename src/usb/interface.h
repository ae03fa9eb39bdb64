// The plotter's USB interface: its lookup, its pipes, and the procedure that opens it before a transfer.
//
// A print and a query open it alike, by the location that the plotter table left in the record. It is global because the
// operations on it are exported and take no arguments.
#pragma once

#include "platform/iokit/registry.h"

#include <cstdint>

/// The chosen plotter's interface, NULL when there is none; an open one that is dropped or replaced is closed and released.
extern IOReference<IOUSBInterfaceInterface245> &gORB_interfaceInterface;

namespace usb {

/// The interface; without one, an interface that answers kIOReturnNotOpen to everything.
IOUSBInterfaceInterface245 &plotterInterface() noexcept;

/// What differs between the callers of openInterface.
struct OpenManner {
    const char *alreadyOpen = nullptr;   ///< console lines; nullptr for none
    const char *opened = nullptr;        ///< when the first call opened it
    bool waitsForOthers = false;         ///< exclusive access is retried as any failure is
    bool choosesAlternateSetting = true; ///< setting 1 for vendor 0x0B75
};

/// Makes sure that the plotter's interface is open: looks it up and opens it (exclusive access fails at once; another
/// failure is retried up to 20 times, one second apart) unless ORB_interfaceOpen says that it is open, then selects its
/// alternate setting. False when the caller is to stop: with *status as its result, and 29002, or what the lookup left, in
/// ORB_errorID.
bool openInterface(const OpenManner &manner, int32_t *status);

} // namespace usb

extern "C" {

/// Finds the interface at ORB_USBlocationID and keeps its reference in gORB_interfaceInterface, not opened. ORB_errorID:
/// 22007, 28002, 22002, 22003, 28017; unchanged when there is no interface at all.
int32_t ORB_USB_getCustomergORB_interfaceInterface();
/// Chooses both pipes by vendor, when the output is USB. Returns 0.
int32_t ORB_USBloadORB_pipe_inANDout();
/// ORB_interfaceOpen := 0, without closing anything. Returns 0.
int32_t ORB_USB_initInterfaceList();
int32_t ORB_VectorixService12();
}
