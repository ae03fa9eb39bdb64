// The USB link: writes ORB_writeBuffer on the out pipe, closes the interface. The counterpart of serial/link.h; what opens
// the interface is in usb/interface.h, for a query needs that as well.
#pragma once

#include "record/state.h"

#include <cstdint>

namespace usb {

/// Writes the NUL-terminated text of ORB_writeBuffer on the out pipe in one transfer, with no second attempt.
LinkWrite writeOnce();

} // namespace usb

extern "C" {

/// Writes the NUL-terminated text of ORB_writeBuffer in one transfer; at most six attempts, without pauses. Returns 0, or
/// what ORB_logIOError gave for the last failure, with ORB_errorID 29008; how much was taken is in
/// gORB_FoundationStruct.lastWrite.
int32_t ORB_USBwritePlotter();
/// Closes and releases the interface when ORB_interfaceOpen is 1. Returns 0; ORB_errorID is not touched.
int32_t ORB_USBclose_Plotterinterface();
int32_t ORB_VectorixService9();  ///< writes, then closes; returns the close's 0
int32_t ORB_VectorixService10(); ///< turns 29005 into 22007, closes
}
